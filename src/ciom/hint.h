// A tooltip: a small popup window below an element showing its hint text.
#pragma once

#include <memory>

#include "element.h"

class cHintMaster : public cChildElement {
public:
  // A colour argument meaning the theme's tooltip colour.
  static constexpr unsigned kThemeColour = 0xFF000000;
  static constexpr int kBackgroundColour = 11, kTextColour = 13; // theme colour numbers

  // Shows text (lines at line feeds) at pos on the desktop, or just below element when pos
  // is null. False, showing nothing, without an element, text or standard font, for a text
  // of no width, or when no popup can be made. Showing again replaces the popup.
  bool show(cChildElement* element, const char* text, const sPoint* pos, unsigned background,
            unsigned textColour);
  void hide();
  // Takes over the popup window (null closes the current one).
  void set(cWindowHolder* window);
  // Copies text up to its first line feed into out; returns what follows the line feed,
  // or null after the last line.
  static const char* line(const char* text, _guardchar<char>& out);

  unsigned background() const { return myBackground; }
  unsigned textColour() const { return myTextColour; }
  int lineHeight() const { return myLineHeight; }

  void onPaint(cCanvas* canvas) override;

private:
  unsigned myBackground = 0, myTextColour = 0;
  int myLineHeight = 0;
  std::unique_ptr<cWindowHolder> myWindow;
};
