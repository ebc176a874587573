// A static element: a line of text and/or a picture, neither focusable nor clickable.
// The text is the element's own (setText); the font defaults to the standard font.
#pragma once

#include <vector>

#include "canvas.h"
#include "element.h"
#include "pictlist.h"

// A text as it fits in w pixels in the canvas's text font: whole, or its start and end
// around "…", as much of both as fits (the start has the odd unit; a surrogate pair is
// never split). UTF-16 units.
std::vector<unsigned short> elideMiddle(cCanvas& canvas, const char* text, int w);

class cStaticChild : public cChildElement {
public:
  static constexpr unsigned kDefaultColour = 0xFF000000; // the theme's text colour

  void setTextColour(unsigned colour);
  // Null: the standard font. The font is a shared object; the element does not own it.
  void setFont(cFontObject* font);
  void setAlign(cCanvas::eTextAlign align);
  // Room left of the picture and text.
  void setMargin(int left);
  // A text wider than the element keeps its start and its end and loses its middle to
  // "…" (a path's folder and file name both stay), instead of its end.
  void setElideMiddle(bool on);
  // The picture stands centred in the element when there is no text, else at its left
  // with the text after it.
  cChildPicture& picture() { return myPicture; }
  // What the text and picture need, measured with the element's font.
  bool wantedSize(sSize& size);

  void onPaint(cCanvas* canvas) override;

private:
  cFontObject* font();

  unsigned myColour = kDefaultColour;
  cFontObject* myFont = nullptr;
  cCanvas::eTextAlign myAlign = cCanvas::taLeft;
  int myMargin = 0;
  bool myElideMiddle = false;
  cChildPicture myPicture;
};
