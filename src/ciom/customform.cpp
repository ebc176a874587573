#include "customform.h"

#include <algorithm>

#include "canvas.h"
#include "ciom/themeimages.h"
#include "theme.h"

namespace {

constexpr int kTopMarginDim = 0, kSideInsetDim = 1, kBottomMarginDim = 2, kFormColour = 0;
constexpr int kTextColour = 13;
constexpr int kButtonHeightDim = 7, kButtonsRightDim = 9;

} // namespace

int cCustomForm::dropHeaderBand() {
  if (fillsHeaderBand()) return 0;
  const cCITheme& theme = cCITheme::theme();
  myHeaderDropped = true;
  return std::max(0, theme.getDimension(kTopMarginDim, 0) - theme.getDimension(kSideInsetDim, 0));
}

void cCustomForm::onConstruct() {
  const cCITheme& theme = cCITheme::theme();
  myTopMargin = theme.getDimension(myHeaderDropped ? kSideInsetDim : kTopMarginDim, 0);
  myBottomMargin = theme.getDimension(kBottomMarginDim, 0);
  setDefaultBackgroundColor(theme.getColor(kFormColour));
  myPanel.setDefaultBackgroundColor(theme.getColor(kFormColour));
  placePanel();
  notifyAction(new cChildAction(kAfterConstructCode));
}

void cCustomForm::placePanel() {
  const int inset = cCITheme::theme().getDimension(kSideInsetDim, 0);
  // Inset from both sides, between the margins; the anchor keeps it so on every resize.
  anchor(&myPanel, inset, myTopMargin, ~(2 * inset), ~(myTopMargin + myBottomMargin));
}

void cCustomForm::setCaption(const char* text) {
  myCaption = text ? text : "";
  repaint();
}

void cCustomForm::setTopMargin(int margin) {
  myTopMargin = margin;
  placePanel();
}

void cCustomForm::setBottomMargin(int margin) {
  myBottomMargin = margin;
  placePanel();
}

void cCustomForm::setCustomDraw(unsigned colour, bool on) {
  myCustomColour = colour;
  myCustomDraw = on;
  repaint();
}

int cCustomForm::anchorFooterButtons(cChildElement* buttons, int width) {
  const cCITheme& theme = cCITheme::theme();
  const int h = theme.getDimension(kButtonHeightDim, 0);
  const int fromBottom = myBottomMargin - (myBottomMargin - h) / 2;
  anchor(buttons, ~(width + theme.getDimension(kButtonsRightDim, 0)), ~fromBottom, width, h);
  return h;
}

void cCustomForm::addDialogButtons(const char* accept, const char* cancel, bool pictures) {
  const cCITheme& theme = cCITheme::theme();
  if (pictures) {
    myDialogPictures.refImage(kAcceptButton, theme.getPict(tiOk));
    myDialogPictures.refImage(kCancelButton, theme.getPict(tiCancel));
    myDialogButtons.setPictures(&myDialogPictures);
  }
  myDialogButtons.setTransparent(true);
  attach(&myDialogButtons, 0, 0, 0, theme.getDimension(kButtonHeightDim, 0));
  const auto picture = [&](int id) { return pictures ? id : -1; };
  if (accept)
    myDialogButtons.addButton(kAcceptButton, accept, nullptr, picture(kAcceptButton),
                              kDialogButtonWidth);
  if (cancel)
    myDialogButtons.addButton(kCancelButton, cancel, nullptr, picture(kCancelButton),
                              kDialogButtonWidth);
  if (cButtonChild* button = myDialogButtons.button(kAcceptButton)) button->setDefault(true);
  anchorFooterButtons(&myDialogButtons, myDialogButtons.wantedWidth());
}

bool cCustomForm::onDialogButton(int id) {
  if (id == kAcceptButton) return onFormAccept();
  if (id == kCancelButton) return onFormCancel();
  return false;
}

bool cCustomForm::onFormCancel() {
  if (!myDialogButtons.button(kCancelButton)) return false;
  end_modal(0);
  return true;
}

bool cCustomForm::processKey(int key, bool shift, bool ctrl, bool alt) {
  cChildElement* focus = getFocused();
  if (!shift && !ctrl && !alt && !(focus && focus->claimsKey(key))) {
    if (key == kKeyEnter && onFormAccept()) return true;
    if (key == kKeyEscape && onFormCancel()) return true;
  }
  return cChildElement::processKey(key, shift, ctrl, alt);
}

bool cCustomForm::onAction(cChildElement* source, cChildAction* action) {
  if (source == this && action && action->code == kAfterConstructCode && onAfterConstruct())
    return true;
  if (source == &myDialogButtons && action && action->code == cToolBarAction::kCode)
    return onDialogButton(static_cast<cToolBarAction*>(action)->id);
  return cChildElement::onAction(source, action);
}

void cCustomForm::drawSkin(cCanvas* canvas, int w, int h) {
  paintSkin(canvas, 0, 0, w, h);
}

void cCustomForm::paintSkin(cCanvas* canvas, int dx, int dy, int w, int h) {
  const cCITheme& theme = cCITheme::theme();
  const sRect all{dx, dy, w, h};
  if (myCustomDraw) {
    canvas->drawRect(&all, myCustomColour, myCustomColour);
    return;
  }
  const unsigned ground = theme.getColor(kFormColour);
  canvas->drawRect(&all, ground, ground);
  if (const cPicture* header = sized(myHeader, tiFormHeader, w, myTopMargin))
    canvas->drawBitmap(dx, dy, header, w, myTopMargin);
  if (!myCaption.empty() && !myHeaderDropped && !fillsHeaderBand()) paintCaption(canvas, dx, dy, w);
  if (const cPicture* footer = sized(myFooter, tiFormFooter, w, myBottomMargin))
    canvas->drawBitmap(dx, dy + h - myBottomMargin, footer, w, myBottomMargin);
}

void cCustomForm::paintCaption(cCanvas* canvas, int dx, int dy, int w) {
  // Centred in the band above the panel, in the text's ink, cut with "..." when too long.
  const cCITheme& theme = cCITheme::theme();
  const int inset = theme.getDimension(kSideInsetDim, 0);
  cFontObject* font = stdFontBold();
  if (!font || !canvas->setTextMode(font)) return;
  canvas->setTextColors(theme.getColor(kTextColour), theme.getColor(kFormColour));
  canvas->drawTextLimited(dx, dy, w, myTopMargin, cCanvas::taCenter, true, inset, inset,
                          myCaption.c_str(), static_cast<long long>(myCaption.size()), nullptr,
                          false);
}

const cPicture* cCustomForm::sized(sScaled& cache, int element, int w, int h) {
  // Every transparent child repaints its part of the skin: scale once per size and art.
  const cPicture* art = cCITheme::theme().getPict(element);
  if (!art || w <= 0 || h <= 0) return nullptr;
  if (cache.art != art || cache.picture.width() != w || cache.picture.height() != h) {
    cache.art = art;
    if (!art->resizing(cPicture::rmScaling, w, h, &cache.picture)) cache.picture.destroy();
  }
  return cache.picture.empty() ? nullptr : &cache.picture;
}

void cCustomForm::onPaint(cCanvas* canvas) {
  if (canvas) drawSkin(canvas, width(), height());
}

bool cCustomForm::onBackgroundRequest(cCanvas* canvas, sRect* rect) {
  if (!canvas || !rect) return false;
  // The canvas origin stands at the rectangle's top left: shift the skin to match.
  paintSkin(canvas, -rect->x, -rect->y, width(), height());
  return true;
}

void cCustomForm::onSizeChanged() {
  // The anchor has placed the panel already; the skin spans the whole form.
  repaint();
}
