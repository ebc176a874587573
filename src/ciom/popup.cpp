#include "popup.h"

#include <algorithm>

#include "base/clock.h"
#include "base/str.h"
#include "theme.h"

namespace {

constexpr int kTextColour = 14, kBackgroundColour = 4, kHighlightColour = 21;
constexpr int kFrameColour = 25, kDisabledColour = 8;

unsigned themeOr(unsigned colour, int themeColour) {
  return colour == cPopupMaster::kDefault ? cCITheme::theme().getColor(themeColour) : colour;
}

} // namespace

// One row of the list: it highlights under the pointer and raises a code-0 action when
// the left button is pressed and released on it.
class cPopupMaster::cBtnListItem : public cChildElement {
public:
  cBtnListItem(cPopupMaster& popup, size_t index, const sActiveElementItem& item)
      : myPopup(popup), myIndex(static_cast<int>(index)), myItem(item) {}

  const sActiveElementItem& item() const { return myItem; }

  void onPaint(cCanvas* canvas) override {
    if (!canvas) return;
    const bool hot = myPopup.myHot == myIndex;
    const unsigned ground = hot ? myPopup.myHighlight : myPopup.myBackground;
    const sRect all{0, 0, width(), height()};
    canvas->drawRect(&all, ground, ground);
    int x = kPadding;
    if (myPopup.myPictures) {
      if (const cPicture* icon =
              myItem.icon >= 0 ? myPopup.myPictures->image(myItem.icon) : nullptr) {
        const sPoint at{x, (height() - icon->height()) / 2};
        canvas->drawTransparent(&at, icon, nullptr);
      }
      x += kIconRoom;
    }
    if (!canvas->setTextMode(myPopup.myFont ? myPopup.myFont : stdFont())) return;
    const unsigned ink = !myItem.enabled ? cCITheme::theme().getColor(kDisabledColour)
                         : hot           ? myPopup.myHotText
                                         : myPopup.myText;
    canvas->setTextColors(ink, ground);
    canvas->drawTextLimited(x, 0, width() - x - kPadding, height(), cCanvas::taLeft, true, 0, 0,
                            myItem.text.c_str(), myItem.text.length(), nullptr, false);
  }
  void onMouseOver() override {
    if (myItem.enabled) myPopup.setHot(myIndex);
    cChildElement::onMouseOver();
  }
  void onMouseButton(int x, int y, int button, bool down) override {
    if (button != 1) return;
    // Only a press that began here counts: the release of the click that opened the
    // popup must not choose the item that happens to lie under the pointer.
    if (down) {
      myDown = true;
      return;
    }
    const bool inside = x >= 0 && y >= 0 && x < width() && y < height();
    if (myDown && inside && myItem.enabled) notifyAction();
    myDown = false;
  }

private:
  cPopupMaster& myPopup;
  int myIndex;
  sActiveElementItem myItem;
  bool myDown = false;
};

cPopupMaster::sPopupConfig::sPopupConfig()
    : textColour(cCITheme::theme().getColor(kTextColour)),
      background(cCITheme::theme().getColor(kBackgroundColour)),
      highlight(cCITheme::theme().getColor(kHighlightColour)) {}

cPopupMaster::cPopupMaster(cChildElement* owner, const tActiveElementItems& items,
                           const cPicturesList* pictures, cFontObject* font)
    : myOwner(owner), myItems(items), myPictures(pictures), myFont(font) {
  setColours(kDefault, kDefault, kDefault, kDefault, kDefault);
  setAcceptFocus(true);
}

cPopupMaster::~cPopupMaster() = default;

void cPopupMaster::setColours(unsigned textColour, unsigned background, unsigned highlight,
                              unsigned frame, unsigned highlightText) {
  myText = themeOr(textColour, kTextColour);
  myBackground = themeOr(background, kBackgroundColour);
  myHighlight = themeOr(highlight, kHighlightColour);
  myFrame = themeOr(frame, kFrameColour);
  // The highlight is light where the list is dark (and the other way round): the text on
  // it takes the list's background colour.
  myHotText = highlightText == kDefault ? myBackground : highlightText;
}

int cPopupMaster::itemHeight(cChildElement* owner, cFontObject* font) {
  sSize size;
  if (!owner || !owner->sizeOf("Ag", size, font)) return kMinItemHeight;
  return std::max(kMinItemHeight, size.height + 6);
}

void cPopupMaster::onConstruct() {
  myRowHeight = itemHeight(myOwner ? myOwner : this, myFont);
  int y = 1;
  for (const auto& [id, item] : myItems) {
    auto button = std::make_unique<cBtnListItem>(*this, myButtons.size(), item);
    attach(button.get(), 1, y, std::max(0, width() - 2), myRowHeight);
    y += myRowHeight;
    myButtons.push_back(std::move(button));
  }
  setScrollSteps(1, myRowHeight / kWheelSteps + 1);
  // The rows fit the list's width: no sideways bar, and room kept for the vertical one.
  allowScrollBars(true, false);
  setVirtualSize(width(), y + 1);
  if (vBarShown()) {
    for (const auto& button : myButtons) {
      sRect r;
      button->childRect(&r);
      button->move(r.x, r.y, std::max(0, viewSize().width - 2), r.height);
    }
    setVirtualSize(viewSize().width, y + 1);
  }
  for (size_t i = 0; i < myButtons.size(); ++i) {
    if (myButtons[i]->item().id == myInitialHot) setHot(static_cast<int>(i));
  }
  // Presses outside the popup arrive here (at coordinates outside it) and dismiss it.
  capturePointer(true);
  focus();
}

int cPopupMaster::hotId() const {
  if (myHot < 0 || myHot >= static_cast<int>(myButtons.size())) return -1;
  return myButtons[static_cast<size_t>(myHot)]->item().id;
}

void cPopupMaster::setHot(int index) {
  if (index == myHot) return;
  const int was = myHot;
  myHot = index;
  for (const int i : {was, index}) {
    if (i >= 0 && i < static_cast<int>(myButtons.size()))
      myButtons[static_cast<size_t>(i)]->repaint();
  }
  if (index >= 0) {
    sRect r;
    myButtons[static_cast<size_t>(index)]->childRect(&r);
    ensureVisible(r);
  }
}

void cPopupMaster::moveHot(int step) {
  const int n = static_cast<int>(myButtons.size());
  int i = myHot < 0 ? (step > 0 ? -1 : n) : myHot;
  // Around the list once at most, past the disabled items.
  for (int tries = 0; tries < n; ++tries) {
    i = ((i + step) % n + n) % n;
    if (myButtons[static_cast<size_t>(i)]->item().enabled) {
      setHot(i);
      return;
    }
  }
}

void cPopupMaster::finish(int result) {
  if (myDone) return;
  myDone = true;
  releasePointer();
  end_modal(result);
}

void cPopupMaster::onPaint(cCanvas* canvas) {
  if (!canvas) return;
  const sRect all{0, 0, width(), height()};
  canvas->drawRect(&all, myBackground, myFrame);
}

void cPopupMaster::onMouseButton(int x, int y, int, bool down) {
  if (down && (x < 0 || y < 0 || x >= width() || y >= height())) finish(-1);
}

bool cPopupMaster::processKey(int key, bool shift, bool ctrl, bool alt) {
  if (myButtons.empty()) return cScrollableElement::processKey(key, shift, ctrl, alt);
  switch (key) {
  case kKeyEscape:
    finish(-1);
    return true;
  case kKeyEnter:
    if (hotId() >= 0) finish(hotId());
    return true;
  case kKeyUp:
    moveHot(-1);
    return true;
  case kKeyDown:
    moveHot(1);
    return true;
  case kKeyHome:
    myHot = -1;
    moveHot(1);
    return true;
  case kKeyEnd:
    myHot = -1;
    moveHot(-1);
    return true;
  default:
    return true; // a popup keeps its keys
  }
}

bool cPopupMaster::onChar(unsigned short ch, bool, bool ctrl, bool) {
  if (ctrl || ch < 0x20 || myButtons.empty()) return true;
  const bool longer = myTyped.add(ch, ticks_ms());
  // From the highlighted item on for a longer prefix, from the next one for a new letter.
  const int n = static_cast<int>(myButtons.size());
  const int from = myHot < 0 ? 0 : longer ? myHot : myHot + 1;
  for (int k = 0; k < n; ++k) {
    const int i = (from + k) % n;
    const sActiveElementItem& item = myButtons[static_cast<size_t>(i)]->item();
    if (item.enabled && myTyped.matches(item.text.c_str())) {
      setHot(i);
      break;
    }
  }
  return true;
}

void cPopupMaster::onLooseFocus(bool, bool) {
  finish(-1);
}

bool cPopupMaster::onAction(cChildElement* source, cChildAction* action) {
  if (action && action->code == cChildAction::acNotify && source != this) {
    for (const auto& button : myButtons) {
      if (button.get() == source) {
        finish(button->item().id);
        return true;
      }
    }
  }
  return cScrollableElement::onAction(source, action);
}

sRect cPopupMaster::place(const sSize& desktop, int x, int y, int w, int h) {
  sRect r{x, y, w, h};
  if (x + w > desktop.width) r.x = std::max(0, desktop.width - w);
  if (y + h > desktop.height) {
    const int below = std::max(0, desktop.height - y);
    if (below < h && y > below) {
      r.height = std::min(h, y);
      r.y = y - r.height;
    } else {
      r.height = below;
    }
  }
  return r;
}

int cPopupMaster::runPopUp(cChildElement* owner, const tActiveElementItems& items,
                           const cPicturesList* pictures, int x, int y, int w, int h,
                           unsigned textColour, unsigned background, unsigned highlight,
                           unsigned frame, unsigned highlightText, cFontObject* font, int hotId) {
  if (!owner || items.count() == 0) return -1;
  cPopupMaster popup(owner, items, pictures, font);
  popup.setInitialHot(hotId);
  popup.setColours(textColour, background, highlight, frame, highlightText);
  sSize desktop;
  if (!owner->desktopSize(desktop)) return -1;
  const sRect r = place(desktop, x, y, w, h);
  return popup.modal_popup(r.x, r.y, r.width, r.height + 2, owner);
}

int cPopupMaster::autoWidth(cChildElement* owner, const tActiveElementItems& items,
                            const cPicturesList* pictures, cFontObject* font) {
  int widest = 0;
  for (const auto& [id, item] : items) {
    sSize size;
    if (owner && owner->sizeOf(item.text.c_str(), size, font))
      widest = std::max(widest, size.width);
  }
  return widest + 2 * kPadding + (pictures ? kIconRoom : 0) + 2;
}

int cPopupMaster::simplePopup(cChildElement* owner, const tActiveElementItems& items, int x, int y,
                              int width, const cPicturesList* pictures, unsigned textColour,
                              unsigned background, unsigned highlight, unsigned frame,
                              unsigned highlightText, cFontObject* font, int hotId) {
  if (!owner || items.count() == 0) return -1;
  if (width < 0) width = autoWidth(owner, items, pictures, font);
  const int h = static_cast<int>(items.count()) * itemHeight(owner, font);
  return runPopUp(owner, items, pictures, x, y, width, h, textColour, background, highlight, frame,
                  highlightText, font, hotId);
}

int cPopupMaster::simplePopup(cChildElement* owner, const tActiveElementItems& items, int x, int y,
                              const sPopupConfig* config) {
  const sPopupConfig defaults;
  const sPopupConfig& c = config ? *config : defaults;
  int width = c.width;
  if (width < 0) width = std::max(autoWidth(owner, items, c.pictures, c.font), c.minWidth);
  return simplePopup(owner, items, x, y, width, c.pictures, c.textColour, c.background, c.highlight,
                     c.frame, c.highlightText, c.font, c.hotId);
}
