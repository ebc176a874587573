// A property sheet's sections: the header with its fold button, and the rows laid out in
// two columns on either side of a divider.
#include <algorithm>
#include <string>

#include "ciom/themeimages.h"
#include "propsheet.h"
#include "theme.h"

namespace {

constexpr int kAccent = 16, kInk = 50, kGround = 51, kBoxBorder = 14, kBoxHot = 28, kGrid = 45;
constexpr int kHeaderHeight = 24; // theme dimension
constexpr int kHideHint = 0, kOpenHint = 1, kButtonHint = 2;
constexpr int kFoldSize = 18, kHeaderPadding = 4;

// Values cut short by a narrow column show their whole text as a tooltip.
class cValueText : public cStaticChild {
public:
  const char* hint() override {
    sSize size;
    return wantedSize(size) && size.width > width() ? text() : cStaticChild::hint();
  }
};

// An editable value commits what it holds when it takes the focus, on Enter and when it is
// set; Escape goes back to the committed text, and only an Escape with nothing to take
// back is left to the form.
class cValueBox : public cEditChild {
public:
  const char* hint() override {
    const bool cut = symbolPos(static_cast<int>(length())) + scrollX() > width() - kPadding;
    return cut ? text() : cEditChild::hint();
  }
  bool setText(const char* utf8, long long len, bool repaintNow) override {
    const bool done = cEditChild::setText(utf8, len, repaintNow);
    myCommitted = text();
    return done;
  }
  void onSetFocus(bool shift, bool ctrl) override {
    myCommitted = text();
    cEditChild::onSetFocus(shift, ctrl);
  }
  bool onKey(int key, bool shift, bool ctrl, bool alt) override {
    if (!shift && !ctrl && !alt) {
      if (key == kKeyEnter) myCommitted = text();
      if (key == kKeyEscape && retype(myCommitted.c_str())) return true;
    }
    return cEditChild::onKey(key, shift, ctrl, alt);
  }
  bool claimsKey(int key) override {
    return key == kKeyEscape && !readonly() && myCommitted != text();
  }

private:
  std::string myCommitted;
};

} // namespace

// --- header ------------------------------------------------------------------------------

void cPropSheetChild::cSectionHeaderChild::setFolded(bool folded) {
  myFolded = folded;
  repaint();
}

void cPropSheetChild::cSectionHeaderChild::onMouseButton(int x, int y, int button, bool down) {
  if (button != 1) return;
  if (down) {
    myPressed = true;
    return;
  }
  if (myPressed && inme(x, y)) notifyAction(new cChildAction(kFoldCode));
  myPressed = false;
}

void cPropSheetChild::cSectionHeaderChild::onMouseOver() {
  myHot = true;
  repaint();
}

void cPropSheetChild::cSectionHeaderChild::onMouseLeft() {
  myHot = myPressed = false;
  repaint();
}

void cPropSheetChild::cSectionHeaderChild::setPicture(const cPicture* picture) {
  myPicture = picture;
  repaint();
}

void cPropSheetChild::cSectionHeaderChild::setColours(unsigned background, unsigned frame) {
  myBackground = background;
  myFrame = frame;
  repaint();
}

void cPropSheetChild::cSectionHeaderChild::onPaint(cCanvas* canvas) {
  if (!canvas) return;
  const sRect all{0, 0, width(), height()};
  canvas->drawRect(&all, myBackground, myBackground);
  const sRect rule{0, height() - 1, width(), 1};
  canvas->drawRect(&rule, myFrame, myFrame);
  const cCITheme& theme = cCITheme::theme();
  if (const cPicture* sign = theme.getPict(myFolded ? tiFoldCollapsed : tiFoldOpen)) {
    const sPoint at{width() - sign->width() - 2, (height() - sign->height()) / 2};
    if (myHot) {
      const sRect ring{at.x, at.y, sign->width(), sign->height()};
      canvas->drawRect(&ring, myBackground, theme.getColor(kAccent));
    }
    canvas->drawTransparent(&at, sign, nullptr);
  }
  int x = kHeaderPadding;
  if (myPicture) {
    const sPoint at{x, (height() - myPicture->height()) / 2};
    canvas->drawTransparent(&at, myPicture, nullptr);
    x += myPicture->width() + kHeaderPadding;
  }
  const char* title = text();
  if (!title || !*title || !canvas->setTextMode(stdFontBold())) return;
  canvas->setTextColors(theme.getColor(kInk), myBackground);
  canvas->drawTextLimited(x, 0, std::max(0, width() - x - kFoldSize - 4), height(), cCanvas::taLeft,
                          true, 0, 0, title, -1, nullptr, false);
}

// --- section -----------------------------------------------------------------------------

cPropSheetChild::cSectionChild::cSectionChild(cPropSheetChild* sheet, int id)
    : mySheet(sheet), myId(id) {
  const cCITheme& theme = cCITheme::theme();
  attach(&myHeader, 0, 0, 0, 0);
  attach(&mySplit, 0, 0, 0, 0);
  mySplit.setShare(0.5);
  mySplit.setDividerLine(theme.getColor(kGrid));
  // The columns' ground shows in the gaps between rows: the grid's lines.
  mySplit.pane(0)->setDefaultBackgroundColor(theme.getColor(kGrid));
  mySplit.pane(1)->setDefaultBackgroundColor(theme.getColor(kGrid));
  mySplit.setDefaultBackgroundColor(theme.getColor(kGround));
  setCollapsed(false);
}

cPropSheetChild::cSectionChild::~cSectionChild() {
  // The rows' elements go first, while the columns they lie in are whole.
  myParts.clear();
  myProps.clear();
}

void cPropSheetChild::cSectionChild::setCollapsed(bool on) {
  myCollapsed = on;
  myHeader.setFolded(on);
  myHeader.setHint(mySheet->string(mySheet, on ? kOpenHint : kHideHint));
}

cPropSheetChild::sPropertyDescr* cPropSheetChild::cSectionChild::prop(int id) {
  const auto at = myProps.find(id);
  return at == myProps.end() ? nullptr : &at->second;
}

void cPropSheetChild::cSectionChild::addElement(cChildElement* element, int column, int propId,
                                                ePart part) {
  element->hide(false);
  mySplit.pane(column)->anchor(element, 0, 0, 0, 0);
  myParts[element] = {propId, part};
}

bool cPropSheetChild::cSectionChild::addProp(int id, const char* caption, const char* descr,
                                             const char* value, ePropTypes kind) {
  if (myProps.count(id) || kind < ptText || kind > ptList) return false;
  const cCITheme& theme = cCITheme::theme();
  const unsigned ink = theme.getColor(kInk), ground = theme.getColor(kGround);
  sPropertyDescr& p = myProps[id];
  p.kind = kind;
  p.descr = descr ? descr : "";
  p.caption = std::make_unique<cSelectableStaticChild>();
  cSelectableStaticChild::sColours normal{ink, ground, ground};
  p.caption->setColours(normal, p.caption->colours(true));
  p.caption->setText(caption ? caption : "", -1, false);
  if (myShowHints) p.caption->setHint(p.descr.c_str());
  addElement(p.caption.get(), 0, id, kCaption);

  ePart part = kValue;
  switch (kind) {
  case ptText:
  case ptTextAction: {
    auto text = std::make_unique<cValueText>();
    text->setTextColour(ink);
    text->setDefaultBackgroundColor(ground);
    text->setMargin(cEditChild::kPadding); // where the text inside the boxes starts
    p.value = std::move(text);
    break;
  }
  case ptLink: {
    auto link = std::make_unique<cLinkChild>();
    link->setDefaultBackgroundColor(ground);
    link->setMargin(cEditChild::kPadding);
    p.value = std::move(link);
    part = kLinkPart;
    break;
  }
  case ptEdit:
  case ptReadonlyAction:
  case ptReadonly: {
    auto box = std::make_unique<cValueBox>();
    box->resetColors(ink, ground, theme.getColor(kind == ptReadonlyAction ? kGround : kBoxBorder));
    if (kind != ptEdit) {
      box->setReadonly(true);
      box->setBorderColor(cEditChild::ctFocused, theme.getColor(kBoxHot));
      box->setBorderColor(cEditChild::ctHover, theme.getColor(kBoxHot));
    }
    p.value = std::move(box);
    break;
  }
  case ptList: {
    auto list = std::make_unique<cComboBoxChild>();
    list->edit()->resetColors(ink, ground, ground);
    p.value = std::move(list);
    part = kListPart;
    break;
  }
  }
  addElement(p.value.get(), 1, id, part);
  if (value) textElement(p)->setText(value, -1, false);
  if (kind == ptTextAction || kind == ptReadonlyAction) {
    p.button = std::make_unique<cButtonChild>(cButtonChild::lkPush);
    const cPicture* dots = theme.getPict(tiActionDots);
    p.button->setPictures(dots, dots, dots);
    p.button->setHint(mySheet->string(mySheet, kButtonHint));
    addElement(p.button.get(), 1, id, kButtonPart);
  }
  return true;
}

void cPropSheetChild::cSectionChild::forget(cChildElement* element) {
  if (!element) return;
  myParts.erase(element);
  if (cChildElement* column = element->parent()) column->dettach(element);
}

bool cPropSheetChild::cSectionChild::removeProp(int id) {
  sPropertyDescr* p = prop(id);
  if (!p) return false;
  forget(p->caption.get());
  forget(p->value.get());
  forget(p->button.get());
  myProps.erase(id);
  return true;
}

void cPropSheetChild::cSectionChild::setShowHints(bool on) {
  myShowHints = on;
  for (auto& [id, p] : myProps) p.caption->setHint(on ? p.descr.c_str() : nullptr);
}

int cPropSheetChild::cSectionChild::propOf(const cChildElement* element, ePart& part) const {
  // The edit part of a list belongs to the list.
  for (const cChildElement* e = element; e && e != this; e = e->parent()) {
    const auto at = myParts.find(e);
    if (at != myParts.end()) {
      part = at->second.second;
      return at->second.first;
    }
  }
  part = kNoPart;
  return -1;
}

int cPropSheetChild::cSectionChild::rowHeight(sPropertyDescr& p) {
  switch (p.kind) {
  case ptList:
    return kListRow;
  case ptEdit:
  case ptReadonlyAction:
  case ptReadonly:
    return kBoxRow;
  default:
    break;
  }
  sSize size;
  if (p.kind == ptLink)
    static_cast<cLinkChild*>(p.value.get())->wantedSize(size);
  else
    static_cast<cStaticChild*>(p.value.get())->wantedSize(size);
  if (size.height == 0) p.caption->wantedSize(size);
  return size.height + 4;
}

void cPropSheetChild::cSectionChild::placeRow(sPropertyDescr& p, int y, int h, bool shown) {
  cChildElement* elements[] = {p.caption.get(), p.value.get(), p.button.get()};
  for (cChildElement* e : elements) {
    if (!e) continue;
    if (shown && !e->visible_child()) e->show(false);
    if (!shown && e->visible_child()) e->hide(false);
  }
  if (!shown) return;
  mySplit.pane(0)->anchor(p.caption.get(), 0, y, -1, h);
  const bool button = p.button != nullptr;
  mySplit.pane(1)->anchor(p.value.get(), 0, y, button ? -kButtonRoom - 1 : -2, h);
  if (button) {
    const int bh = p.kind == ptReadonlyAction ? kBoxRow : h;
    mySplit.pane(1)->anchor(p.button.get(), -kButtonRoom - 1, y, kButtonWidth, bh);
  }
}

int cPropSheetChild::cSectionChild::layout(int w, bool showHeader) {
  const int header = showHeader ? cCITheme::theme().getDimension(kHeaderHeight, 0) : 0;
  if (showHeader != myHeader.visible_child())
    showHeader ? myHeader.show(false) : myHeader.hide(false);
  myHeader.move(0, 0, w, header);
  int y = 0;
  for (auto& [id, p] : myProps) {
    if (myCollapsed) {
      placeRow(p, 0, 0, false);
      continue;
    }
    const int h = rowHeight(p);
    placeRow(p, y, h, true);
    y += h + kRowGap;
  }
  const int rows = myCollapsed ? 0 : y;
  mySplit.move(0, header, w, rows);
  // Neither column narrower than a tenth of the section.
  mySplit.setMinSizes(w / 10, w / 10);
  return header + rows;
}

void cPropSheetChild::cSectionChild::onSizeChanged() {
  mySplit.setMinSizes(width() / 10, width() / 10);
}

bool cPropSheetChild::cSectionChild::onAction(cChildElement* source, cChildAction* action) {
  if (source == &myHeader && action->code == cSectionHeaderChild::kFoldCode) {
    setCollapsed(!myCollapsed);
    mySheet->changed();
    return true;
  }
  if (source == &mySplit && action->code == cSplitterChild::kMovedCode) {
    mySheet->shareMoved(this);
    return true;
  }
  return cChildElement::onAction(source, action);
}
