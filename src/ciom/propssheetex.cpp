#include "propssheetex.h"

#include <algorithm>
#include <cstring>

#include "theme.h"

namespace {

constexpr int kGround = 0, kTitleInk = 13, kTextInk = 6, kFrame = 47;
constexpr int kInitialHeight = 60; // the panel's height until its text asks for another

std::string cut(const char* text, long long length) {
  if (!text) return {};
  const size_t n = length < 0 ? std::strlen(text) : static_cast<size_t>(length);
  return std::string(text, strnlen(text, n));
}

} // namespace

// --- the description panel ---------------------------------------------------------------

cPropDispAreaChild::cPropDispAreaChild() {
  const cCITheme& theme = cCITheme::theme();
  myBackground = theme.getColor(kGround);
  myTitleColour = theme.getColor(kTitleInk);
  myTextColour = theme.getColor(kTextInk);
  myFrame = theme.getColor(kFrame);
  allowScrollBars(true, false);
}

void cPropDispAreaChild::setFonts(cFontObject* title, cFontObject* text) {
  myTitleFont = title;
  myTextFont = text;
  repaint();
}

void cPropDispAreaChild::setColorSchema(unsigned background, unsigned title, unsigned text) {
  myBackground = background;
  myTitleColour = title;
  myTextColour = text;
  repaint();
}

void cPropDispAreaChild::setFrameColor(unsigned colour) {
  myFrame = colour;
  repaint();
}

void cPropDispAreaChild::setExtraTitleSpacing(int spacing) {
  mySpacing = std::max(0, spacing);
  repaint();
}

void cPropDispAreaChild::setText(const char* title, long long titleLength, const char* text,
                                 long long textLength) {
  myTitle = cut(title, titleLength);
  myText = cut(text, textLength);
  scrollTo(0, 0);
  repaint();
}

int cPropDispAreaChild::flow(cCanvas* canvas, bool draw, int top) {
  const int w = std::max(0, viewSize().width - 2 * kMargin);
  int y = top + kMargin;
  sSize used;
  if (!myTitle.empty() && canvas->setTextMode(myTitleFont ? myTitleFont : stdFontBold())) {
    canvas->setTextColors(myTitleColour, myBackground);
    canvas->drawTextWrapped(kMargin, y, w, 1 << 20, cCanvas::taLeft, myTitle.c_str(), used, !draw,
                            1.0);
    y += used.height + mySpacing;
  }
  if (!myText.empty() && canvas->setTextMode(myTextFont ? myTextFont : stdFont())) {
    canvas->setTextColors(myTextColour, myBackground);
    canvas->drawTextWrapped(kMargin, y, w, 1 << 20, cCanvas::taLeft, myText.c_str(), used, !draw,
                            1.0);
    y += used.height;
  }
  return y + kMargin - top;
}

void cPropDispAreaChild::onPaint(cCanvas* canvas) {
  if (!canvas) return;
  const sRect all{0, 0, width(), height()};
  canvas->drawRect(&all, myBackground, myFrame);
  const int wanted = flow(canvas, false, 0);
  if (wanted != myWanted) {
    myWanted = wanted;
    setVirtualSize(0, wanted);
    notifyAction(new cPropDispResizeAction(wanted));
  }
  flow(canvas, true, -scrollOffset().y); // the texts scroll with the content
}

void cPropDispAreaChild::onSizeChanged() {
  cScrollableElement::onSizeChanged();
  repaint(); // the text wraps anew
}

// --- the sheet with its panel ------------------------------------------------------------

cPropSheetExChild::cPropSheetExChild() {
  setFixedPane(1);
}

void cPropSheetExChild::onConstruct() {
  cVSplitterChild::onConstruct();
  pane(0)->anchor(&mySheet, 0, 0, -1, -1);
  pane(1)->anchor(&myDisplay, 0, 0, -1, -1);
  setPosition(std::max(0, height() - kDivider - kInitialHeight));
}

void cPropSheetExChild::clear() {
  mySheet.clear();
  myDisplay.setText("", "");
}

bool cPropSheetExChild::onAction(cChildElement* source, cChildAction* action) {
  if (source == &mySheet && action->code == cPropSheetChild::kSelected) {
    const auto* a = static_cast<cPropSheetChild::cPropSheetAction*>(action);
    myDisplay.setText(mySheet.propName(a->section, a->prop),
                      mySheet.propDescr(a->section, a->prop));
    return false; // the owner hears of the selection too
  }
  if (source == &myDisplay && action->code == cPropDispAreaChild::kResizeCode) {
    // The panel keeps at least the height its text asks for, the sheet the rest.
    const int wanted = static_cast<cPropDispAreaChild::cPropDispResizeAction*>(action)->height + 2;
    const int room = std::max(0, height() - kDivider);
    setMinSizes(std::min(room / 2, 40), std::min(wanted, room / 2));
    if (room - position() < wanted) setPosition(room - std::min(wanted, room / 2));
    return true;
  }
  return cVSplitterChild::onAction(source, action);
}
