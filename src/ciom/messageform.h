// The standard message boxes: a heading line with an icon, further lines of text, and
// one (Ok) or two (Yes, No) buttons, run as a modal dialog over a parent element.
#pragma once

#include <memory>
#include <vector>

#include "customform.h"
#include "static.h"
#include "toolbar.h"

class cMessageForm : public cCustomForm {
public:
  enum eIconKind { ikInfo = 0, ikQuestion = 1, ikWarning = 2, ikError = 3 };
  enum eButtonSet { bsOk = 0, bsYesNo = 1 };
  static constexpr int kIconWidth = 33, kIconHeight = 29, kHeadingX = 42;

  // One line of the message with the element that shows it.
  struct cStrTokenItem {
    _guardchar<char> line;
    std::unique_ptr<cStaticChild> element;
  };

  // A null caption takes the box's own from the "ciom::messages" section.
  static void infobox(cChildElement* parent, const char* text, const char* caption);
  static void warningbox(cChildElement* parent, const char* text, const char* caption);
  static void errorbox(cChildElement* parent, const char* text, const char* caption);
  // True when the question was answered Yes.
  static bool confirmbox(cChildElement* parent, const char* text, const char* caption);
  static bool warnconfirmbox(cChildElement* parent, const char* text, const char* caption);
  // Runs the box over parent; true when it ended with a non-zero result. False at once,
  // showing nothing, for a null parent or text.
  static bool doDialog(cChildElement* parent, const char* text, const char* caption,
                       int captionStringNo, int iconKind, int buttonSet);
  // The client size for the widest line and the tallest line of so many lines.
  static sSize clientSize(int widest, int lineHeight, int lines);

  cMessageForm(const char* text, int iconKind, int buttonSet);

  // Measures the lines as they will be drawn; false when the parent cannot measure text.
  bool measure(cChildElement* parent);
  int widest() const { return myWidest; }
  int lineHeight() const { return myLineHeight; }
  size_t lineCount() const { return myLines.size(); }

  const char* wantLangResource() override { return "ciom::messages"; }
  void onConstruct() override;
  bool onAfterConstruct() override;
  bool onFormAccept() override;
  bool onFormCancel() override;

private:
  cStaticChild myIcon;
  std::vector<cStrTokenItem> myLines;
  int myIconKind = ikInfo, myButtonSet = bsOk;
  int myWidest = 0, myLineHeight = 0;
};
