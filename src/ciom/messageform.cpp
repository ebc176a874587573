#include "messageform.h"

#include <algorithm>
#include <cmath>

#include "ciom/themeimages.h"
#include "hint.h"
#include "langfile.h"
#include "theme.h"

namespace {

// The heading is bold in the text's ink: the theme's grey for it reads as disabled.
constexpr int kTextColour = 13;
constexpr int kHeadingExtra = 37; // the icon's room before the heading
constexpr int kIconX = 5;
constexpr int kBodyX = 5, kBodyTop = 33; // the lines below the heading start under the icon
constexpr double kLineSpacing = 1.5;

int spaced(int lineHeight, size_t lines) {
  return static_cast<int>(std::trunc(lineHeight * static_cast<double>(lines) * kLineSpacing));
}

} // namespace

sSize cMessageForm::clientSize(int widest, int lineHeight, int lines) {
  if (lines <= 0) return {widest + 30, 105};
  return {widest + 30, spaced(lineHeight, static_cast<size_t>(lines)) + 115};
}

cMessageForm::cMessageForm(const char* text, int iconKind, int buttonSet)
    : myIconKind(std::clamp(iconKind, 0, 3)), myButtonSet(buttonSet == bsYesNo ? bsYesNo : bsOk) {
  if (!text || !*text) return;
  for (const char* rest = text; rest;) {
    cStrTokenItem item;
    rest = cHintMaster::line(rest, item.line);
    myLines.push_back(std::move(item));
  }
}

bool cMessageForm::measure(cChildElement* parent) {
  myWidest = myLineHeight = 0;
  if (!parent) return false;
  for (size_t i = 0; i < myLines.size(); ++i) {
    sSize size;
    cFontObject* font = i == 0 ? parent->stdFontBold() : parent->stdFont();
    if (!font || !parent->sizeOf(myLines[i].line.c_str(), size, font)) return false;
    myWidest = std::max(myWidest, size.width + (i == 0 ? kHeadingExtra : 0));
    myLineHeight = std::max(myLineHeight, size.height);
  }
  return true;
}

void cMessageForm::onConstruct() {
  cCustomForm::onConstruct();
  cPanelChild* panel = clientArea();
  const cCITheme& theme = cCITheme::theme();

  myIcon.setTransparent(true);
  myIcon.picture().refImage(theme.getPict(tiIconInfo + myIconKind));
  panel->attach(&myIcon, kIconX, 0, kIconWidth, kIconHeight);

  const int h = std::max(myLineHeight, 1);
  for (size_t i = 0; i < myLines.size(); ++i) {
    cStrTokenItem& item = myLines[i];
    item.element = std::make_unique<cStaticChild>();
    cStaticChild* e = item.element.get();
    e->setTransparent(true);
    e->setText(item.line.c_str(), item.line.length(), false);
    if (i == 0) {
      e->setFont(stdFontBold());
      e->setTextColour(theme.getColor(kTextColour));
      panel->anchor(e, kHeadingX, (kIconHeight - h) / 2, ~kHeadingX, h);
    } else {
      e->setTextColour(theme.getColor(kTextColour));
      panel->anchor(e, kBodyX, kBodyTop + spaced(h, i - 1), ~kBodyX, h);
    }
  }

  if (myButtonSet == bsYesNo)
    addDialogButtons(string(1), string(2));
  else
    addDialogButtons(string(0), nullptr);
}

bool cMessageForm::onAfterConstruct() {
  if (cButtonChild* accept = dialogButton(kAcceptButton)) accept->focus();
  return true;
}

bool cMessageForm::onFormAccept() {
  // Enter on a focused No answers No.
  const cButtonChild* no = dialogButton(kCancelButton);
  end_modal(no && no->hasFocus() ? 0 : 1);
  return true;
}

bool cMessageForm::onFormCancel() {
  end_modal(0); // a box with OK alone closes on Escape too
  return true;
}

bool cMessageForm::doDialog(cChildElement* parent, const char* text, const char* caption,
                            int captionStringNo, int iconKind, int buttonSet) {
  if (!parent || !text) return false;
  cMessageForm form(text, iconKind, buttonSet);
  if (!form.measure(parent)) return false;
  if (!caption) {
    const cCiomLangData* section = parent->requestNamedLangResource("ciom::messages");
    caption = section ? section->string(captionStringNo) : nullptr;
  }
  sSize size = clientSize(form.widest(), form.lineHeight(), static_cast<int>(form.lineCount()));
  // A message too long for the screen is cut; the buttons stay at the bottom.
  if (sSize desktop; parent->desktopSize(desktop)) {
    size.width = std::min(size.width, desktop.width);
    size.height = std::min(size.height, desktop.height);
  }
  // -1 means the dialog could not run: that is no answer, not a Yes.
  return form.modal(caption ? caption : "", size.width, size.height, parent, false) > 0;
}

void cMessageForm::infobox(cChildElement* parent, const char* text, const char* caption) {
  doDialog(parent, text, caption, 3, ikInfo, bsOk);
}

void cMessageForm::warningbox(cChildElement* parent, const char* text, const char* caption) {
  doDialog(parent, text, caption, 4, ikWarning, bsOk);
}

void cMessageForm::errorbox(cChildElement* parent, const char* text, const char* caption) {
  doDialog(parent, text, caption, 5, ikError, bsOk);
}

bool cMessageForm::confirmbox(cChildElement* parent, const char* text, const char* caption) {
  return doDialog(parent, text, caption, 6, ikQuestion, bsYesNo);
}

bool cMessageForm::warnconfirmbox(cChildElement* parent, const char* text, const char* caption) {
  return doDialog(parent, text, caption, 6, ikWarning, bsYesNo);
}
