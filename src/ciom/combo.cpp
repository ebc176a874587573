#include "combo.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <memory>

#include "base/clock.h"
#include "base/str.h"
#include "ciom/themeimages.h"
#include "popup.h"
#include "scrollbar.h"
#include "theme.h"

namespace {

// The list: the field's text colour on white, the accent behind the highlighted item.
constexpr int kListText = 13, kListGround = 14, kListHighlight = 16, kListFrame = 25;

} // namespace

cComboBoxChild::cComboBoxChild() {
  setHoverLook(true);
  myEdit.setReadonly(true);
  myEdit.setCursorForRO(false);
  myEdit.setSelectOnFocus(false);
  // Its readonly look is the field's plain look: a list is not a disabled text.
  myEdit.setColors(cEditChild::ctReadonly, myEdit.fgColor(cEditChild::ctNormal),
                   myEdit.bgColor(cEditChild::ctNormal));
}

void cComboBoxChild::addItem(int id, const char* text, void* assoc) {
  sItem& item = myItems[id];
  item.text = text ? text : "";
  item.assoc = assoc;
  if (id == mySelected) myEdit.setText(item.text.c_str(), -1, false);
  repaint();
}

bool cComboBoxChild::removeItem(int id) {
  if (!myItems.erase(id)) return false;
  if (id == mySelected) {
    mySelected = -1;
    myEdit.setText("", 0, false);
  }
  repaint();
  return true;
}

void cComboBoxChild::clear() {
  myItems.clear();
  mySelected = -1;
  myEdit.setText("", 0, false);
  repaint();
}

const char* cComboBoxChild::itemText(int id) const {
  const auto it = myItems.find(id);
  return it == myItems.end() ? nullptr : it->second.text.c_str();
}

bool cComboBoxChild::setSelected(int id) {
  const auto it = myItems.find(id);
  if (it == myItems.end()) return false;
  mySelected = id;
  myEdit.setText(it->second.text.c_str(), -1, false);
  repaint();
  return true;
}

void* cComboBoxChild::selectedAssoc() const {
  const auto it = myItems.find(mySelected);
  return it == myItems.end() ? nullptr : it->second.assoc;
}

void cComboBoxChild::choose(int id) {
  if (id == mySelected || !setSelected(id)) return;
  notifyAction(new cChildAction(kChangedCode));
}

void cComboBoxChild::step(int by) {
  if (myItems.empty()) return;
  auto it = myItems.find(mySelected);
  if (by == -2 || (by == -1 && it == myItems.end())) {
    it = myItems.begin();
  } else if (by == 2 || (by == 1 && it == myItems.end())) {
    it = std::prev(myItems.end());
  } else if (by == -1) {
    if (it == myItems.begin()) return;
    --it;
  } else if (by == 1) {
    if (std::next(it) == myItems.end()) return;
    ++it;
  }
  choose(it->first);
}

bool cComboBoxChild::openList() {
  if (myOpen || myItems.empty() || !enabled()) return false;
  tActiveElementItems items;
  for (const auto& [id, item] : myItems) {
    sActiveElementItem* slot = items.insert(id);
    slot->id = id;
    slot->text.set(item.text.c_str());
  }
  sPoint at;
  absPos(at);
  const int rows = std::min(static_cast<int>(myItems.size()), kMaxVisibleItems);
  int w = std::max(width(), cPopupMaster::autoWidth(this, items, nullptr, nullptr));
  if (rows < static_cast<int>(myItems.size())) w += cScrollBar::kThickness; // its bar
  int h = rows * cPopupMaster::itemHeight(this, nullptr);
  // Below the field; above it when the room below is short and the room above larger.
  // The popup adds two lines of frame to the list's height.
  int y = at.y + height();
  sSize desktop;
  if (desktopSize(desktop)) {
    const int below = desktop.height - y, above = at.y;
    if (below < h + 2 && above > below) {
      h = std::min(h, above - 2);
      y = at.y - h - 2;
    }
  }
  const cCITheme& theme = cCITheme::theme();
  myOpen = true;
  repaint();
  const int chosen = cPopupMaster::runPopUp(
      this, items, nullptr, at.x, y, w, h, theme.getColor(kListText), theme.getColor(kListGround),
      theme.getColor(kListHighlight), theme.getColor(kListFrame), cPopupMaster::kDefault, nullptr,
      mySelected);
  myOpen = false;
  repaint();
  const int was = mySelected;
  if (chosen >= 0) choose(chosen);
  return mySelected != was;
}

void cComboBoxChild::onPaint(cCanvas* canvas) {
  if (!canvas) return;
  using eState = cEditChild::eColorTypes;
  const bool on = enabled();
  const eState look = on ? cEditChild::ctNormal : cEditChild::ctDisabled;
  const eState edgeLook = !on                    ? cEditChild::ctDisabled
                          : hasFocus() || myOpen ? cEditChild::ctFocused
                          : hot()                ? cEditChild::ctHover
                                                 : cEditChild::ctNormal;
  const unsigned fill = myEdit.bgColor(look);
  const unsigned around = parent() ? parent()->defaultBackgroundColor() : fill;
  cEditChild::drawFrame(canvas, {0, 0, width(), height()}, fill, myEdit.borderColor(edgeLook),
                        around);

  // The chosen text, cut before the button; with the focus it stands on the selection.
  const sRect room{cEditChild::kPadding, 2,
                   std::max(0, width() - kButtonWidth - cEditChild::kPadding - 2), height() - 4};
  const char* text = myEdit.text();
  if (*text && !room.empty() && canvas->setTextMode(stdFont())) {
    const bool marked = hasFocus() && !myOpen && on;
    unsigned ink = myEdit.fgColor(look);
    if (marked) {
      sSize size;
      canvas->textSize(text, -1, size);
      const sRect band{room.x - 2, room.y + 1, std::min(size.width + 4, room.width + 2),
                       room.height - 2};
      canvas->drawRect(&band, myEdit.selectionColor(), myEdit.selectionColor());
      ink = cCITheme::theme().getColor(kListGround);
    }
    canvas->setTextColors(ink, fill);
    canvas->drawTextLimited(room.x, room.y, room.width, room.height, cCanvas::taLeft, true, 0, 0,
                            text, static_cast<long long>(std::strlen(text)), nullptr, false);
  }
  const int drop = !on      ? tiComboDropDisabled
                   : myOpen ? tiComboDropPressed
                   : hot()  ? tiComboDropHot
                            : tiComboDrop;
  if (const cPicture* button = cCITheme::theme().getPict(drop)) {
    const sPoint at{width() - kButtonWidth - 1, (height() - button->height()) / 2};
    canvas->drawTransparent(&at, button, nullptr);
  }
}

void cComboBoxChild::onMouseButton(int, int, int button, bool down) {
  if (button != 1 || !down) return;
  focus();
  openList();
}

bool cComboBoxChild::onKey(int key, bool shift, bool ctrl, bool alt) {
  if (shift || ctrl) return false;
  if ((key == kKeyDown && alt) || (key == kKeyF4 && !alt) || (key == kKeySpace && !alt)) {
    openList();
    return true;
  }
  if (alt) return false;
  switch (key) {
  case kKeyUp:
    step(-1);
    return true;
  case kKeyDown:
    step(1);
    return true;
  case kKeyHome:
    step(-2);
    return true;
  case kKeyEnd:
    step(2);
    return true;
  default:
    return false;
  }
}

bool cComboBoxChild::onChar(unsigned short ch, bool, bool ctrl, bool) {
  if (ctrl || ch <= 0x20 || myItems.empty()) return false;
  // The next item after the chosen one whose text starts with the letter.
  const unsigned short want = __acp_lower(ch);
  auto it = myItems.upper_bound(mySelected);
  for (size_t k = 0; k < myItems.size(); ++k, ++it) {
    if (it == myItems.end()) it = myItems.begin();
    _typebuf<unsigned short> text;
    utf8ToUnits(it->second.text.c_str(), -1, text);
    if (text.count() > 0 && __acp_lower(text[0]) == want) {
      choose(it->first);
      break;
    }
  }
  return true;
}

void cComboBoxChild::onSetFocus(bool, bool) {
  repaint();
}

void cComboBoxChild::onLooseFocus(bool, bool) {
  repaint();
}

void cComboBoxChild::onEnableChanged(bool) {
  repaint();
}
