#include "about.h"

#include "img_res.h"

namespace {

constexpr unsigned kWhite = 0xFFFFFF, kInk = 0x404040;
constexpr int kCloseZoneId = 0;

} // namespace

sPoint cAboutPopupUI::placeOver(const sRect& parent) {
  // Integer division rounds toward zero, as the placement wants for a narrower parent.
  return {parent.x + (parent.width - kWidth) / 2, parent.y + (parent.height - kHeight) / 2};
}

int cAboutPopupUI::runAbout(cChildElement* parent) {
  if (!parent) return -1;
  sPoint at;
  parent->absPos(at);
  const sPoint place = placeOver({at.x, at.y, parent->width(), parent->height()});
  cAboutPopupUI popup;
  return popup.modal_popup(place.x, place.y, kWidth, kHeight, parent);
}

void cAboutPopupUI::onConstruct() {
  cChildElement::onConstruct();
  if (loadRuledPicture(kAboutBannerPicture, myPicture)) myBanner.picture().refImage(&myPicture);
  myBanner.setZone(kCloseZoneId, kCloseZone);
  attach(&myBanner, 0, 0, kWidth, kHeight);

  myText.setColorSchema(kWhite, kInk, kInk);
  myText.setFrameColor(kWhite);
  myText.setScrollSteps(5, 16);
  const char* statement = string(0);
  myText.setText(nullptr, statement ? statement : "");
  myBanner.attach(&myText, kTextArea.x, kTextArea.y, kTextArea.width, kTextArea.height);
  focus();
}

bool cAboutPopupUI::onAction(cChildElement* source, cChildAction* action) {
  if (source == &myBanner && action->code == cPictureZonesChild::cZoneAction::kCode &&
      static_cast<cPictureZonesChild::cZoneAction*>(action)->zone == kCloseZoneId) {
    end_modal(0);
    return true;
  }
  if (source == &myText && action->code == cPropDispAreaChild::kResizeCode) {
    const int wanted = static_cast<cPropDispAreaChild::cPropDispResizeAction*>(action)->height;
    myText.setVirtualSize(0, wanted);
    return true;
  }
  return cChildElement::onAction(source, action);
}

bool cAboutPopupUI::processKey(int key, bool shift, bool ctrl, bool alt) {
  // Escape ends the popup wherever the focus is in it.
  if (key == kKeyEscape) {
    end_modal(0);
    return true;
  }
  return cChildElement::processKey(key, shift, ctrl, alt);
}
