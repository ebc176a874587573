// The tree view's items, elements and layout.
#include "treeview.h"

#include <algorithm>
#include <climits>
#include <cstring>

#include "ciom/themeimages.h"
#include "theme.h"

namespace {

constexpr int kInk = 13, kBackground = 14, kAccent = 16, kFrame = 21;
constexpr int kLineColumn = 7; // where the branch line runs in the tree's pictures
constexpr int kRowPadding = 2, kMinRow = 18;
constexpr int kUnfocusedText = 4, kUnfocusedBackground = 18, kUnfocusedFrame = 26;

} // namespace

// --- the label ---------------------------------------------------------------------------

bool cTreeItemElement::setText(const char* text, long long len, bool repaintNow) {
  myMeasured = false;
  return cSelectableStaticChild::setText(text, len, repaintNow);
}

bool cTreeItemElement::measured(sSize& size) {
  if (!myMeasured) {
    if (!wantedSize(mySize)) return false; // no window yet: measure again next time
    sSize line;
    if (mySize.height == 0 && sizeOf("Ag", line, nullptr)) mySize.height = line.height;
    // Rows have air above and below the text, and room for the expander's signs.
    mySize.height = std::max(mySize.height + 2 * kRowPadding, kMinRow);
    myMeasured = true;
  }
  size = mySize;
  return true;
}

// --- the expander ------------------------------------------------------------------------

void cTreeViewControlElement::setKind(eCtlKind kind) {
  if (myKind == kind) return;
  myKind = kind;
  setPointer(active() ? mpHand : mpArrow);
  repaint();
}

void cTreeViewControlElement::setColours(unsigned background, unsigned frame) {
  if (myBackground == background && myFrame == frame) return;
  myBackground = background;
  myFrame = frame;
  repaint();
}

void cTreeViewControlElement::onPaint(cCanvas* canvas) {
  if (!canvas) return;
  const sRect all{0, 0, width(), height()};
  canvas->drawRect(&all, myBackground, myFrame);
  const cCITheme& theme = cCITheme::theme();
  switch (myKind) {
  case ckLeaf:
  case ckLastLeaf: {
    const cPicture* lines = theme.getPict(myKind == ckLeaf ? tiTreeLeaf : tiTreeLastLeaf);
    if (!lines) return;
    const sPoint at{(width() - lines->width()) / 2, (height() - lines->height()) / 2};
    canvas->drawTransparent(&at, lines, nullptr);
    // In a row taller than the picture the branch line runs on to the row's edges.
    sSize size;
    const unsigned* pixels = theme.getImage(myKind == ckLeaf ? tiTreeLeaf : tiTreeLastLeaf, size);
    if (!pixels || at.y <= 0) return;
    unsigned argb = 0; // the line's colour: its first opaque pixel
    for (int row = 0; row < size.height && !(argb >> 24); ++row)
      argb = pixels[row * size.width + kLineColumn];
    const unsigned line = (argb >> 16 & 0xFF) | (argb & 0xFF00) | (argb & 0xFF) << 16;
    const sRect above{at.x + kLineColumn, 0, 1, at.y};
    canvas->drawRect(&above, line, line);
    if (myKind == ckLeaf) {
      const sRect below{at.x + kLineColumn, at.y + lines->height(), 1, height()};
      canvas->drawRect(&below, line, line);
    }
    return;
  }
  case ckExpanded:
  case ckCollapsed: {
    const cPicture* sign = theme.getPict(myKind == ckExpanded ? tiTreeExpanded : tiTreeCollapsed);
    if (!sign) return;
    const sPoint at{(width() - sign->width()) / 2, (height() - sign->height()) / 2};
    if (myHot) {
      // A hovered sign sits on an accent square: it is a button.
      const sRect ring{at.x + 2, at.y + 3, 11, 11};
      canvas->drawRect(&ring, myBackground, theme.getColor(kAccent));
    }
    canvas->drawTransparent(&at, sign, nullptr);
    return;
  }
  case ckNone:
    return;
  }
}

void cTreeViewControlElement::onMouseButton(int, int, int button, bool down) {
  if (button == 1 && !down && active()) notifyAction();
}

void cTreeViewControlElement::onMouseOver() {
  myHot = true;
  if (active()) repaint();
}

void cTreeViewControlElement::onMouseLeft() {
  myHot = false;
  if (active()) repaint();
}

// --- the tree: items ---------------------------------------------------------------------

cTreeViewChild::cTreeViewChild() {
  onInitData();
}

cTreeViewChild::~cTreeViewChild() {
  dropItems(); // the items own the elements: let them go while this element is whole
}

void cTreeViewChild::dropItems() {
  mySelected = myAnnounce = myUnfocusedItem = nullptr;
  myLabels.clear();
  myControls.clear();
  myItems.destroy();
}

void cTreeViewChild::onInitData() {
  dropItems();
  const cCITheme& theme = cCITheme::theme();
  myOutline = 16;
  mySpacing = 0;
  myCellSpacing = 0;
  myIndicatorWidth = 16;
  myBgColor = theme.getColor(kBackground);
  myFrmColor = theme.getColor(kFrame);
  myUnfocused[0] = theme.getColor(kUnfocusedText);
  myUnfocused[1] = theme.getColor(kUnfocusedBackground);
  myUnfocused[2] = theme.getColor(kUnfocusedFrame);
  std::fill(std::begin(myImages), std::end(myImages), nullptr);
  myBatch.reset();
}

bool cTreeViewChild::storeUnder(cTreeViewItem* parent, cTreeViewItem* item) {
  return storeUnder(parent, std::unique_ptr<cTreeViewItem>(item));
}

bool cTreeViewChild::storeUnder(cTreeViewItem* parent, std::unique_ptr<cTreeViewItem> item) {
  if (!item) return false;
  myItems.add(parent, std::move(item));
  changed();
  return true;
}

void cTreeViewChild::forgetSubtree(cTreeViewItem* item, bool withItem) {
  endDrag(false);
  mySelected = myAnnounce = nullptr;
  if (myUnfocusedItem) markUnfocused(nullptr);
  const cTreeItem* stop = item;
  cTreeItem* first = withItem ? item : item->firstChild();
  for (cTreeItem* p = first; p; p = p->nextInOrder(stop)) {
    if (!withItem && p == item) continue;
    auto* it = static_cast<cTreeViewItem*>(p);
    if (it->element) {
      myLabels.erase(it->element.get());
      dettach(it->element.get());
    }
    if (it->control) {
      myControls.erase(it->control.get());
      dettach(it->control.get());
    }
  }
}

void cTreeViewChild::remove(cTreeViewItem* item) {
  if (!item) return;
  forgetSubtree(item, true);
  myItems.remove(item); // deletes it, its children and their elements
  changed();
}

void cTreeViewChild::remove_under(cTreeViewItem* item) {
  if (!item) {
    clear();
    return;
  }
  forgetSubtree(item, false);
  while (cTreeItem* child = item->firstChild()) myItems.remove(child);
  changed();
}

void cTreeViewChild::clear() {
  endDrag(false);
  mySelected = myAnnounce = nullptr;
  if (myUnfocusedItem) markUnfocused(nullptr);
  for (const auto& labels : {&myLabels, &myControls}) {
    for (const auto& [element, item] : *labels) dettach(const_cast<cChildElement*>(element));
  }
  myLabels.clear();
  myControls.clear();
  myItems.destroy();
  changed();
}

cTreeViewChild::cTreeViewItem* cTreeViewChild::parentItem(cTreeViewItem* item) const {
  return item ? item->parentItem() : nullptr;
}

cTreeViewChild::cTreeViewItem* cTreeViewChild::getUnderItm(cTreeViewItem* item) const {
  return item ? item->firstItem() : nullptr;
}

cTreeViewChild::cTreeViewItem* cTreeViewChild::getNextUnderItm(cTreeViewItem* item) const {
  return item ? item->nextItem() : nullptr;
}

cTreeViewChild::cTreeViewItem* cTreeViewChild::find(cTreeViewItem* from, const void* data) const {
  // From `from` on in tree order, through the rest of the tree.
  for (cTreeItem* p = from; p; p = p->nextInOrder()) {
    if (static_cast<cTreeViewItem*>(p)->data == data) return static_cast<cTreeViewItem*>(p);
  }
  return nullptr;
}

cTreeViewChild::cTreeViewItem* cTreeViewChild::isChild(const cChildElement* element) const {
  const auto at = myLabels.find(element);
  return at == myLabels.end() ? nullptr : at->second;
}

cTreeViewChild::cTreeViewItem* cTreeViewChild::isCtl(const cChildElement* element) const {
  const auto at = myControls.find(element);
  return at == myControls.end() ? nullptr : at->second;
}

// --- appearance --------------------------------------------------------------------------

void cTreeViewChild::setOutline(int outline) {
  setLayoutValue(myOutline, outline);
}

void cTreeViewChild::setSpacing(int spacing) {
  setLayoutValue(mySpacing, spacing);
}

void cTreeViewChild::setCellSpacing(int spacing) {
  setLayoutValue(myCellSpacing, spacing);
}

void cTreeViewChild::setStructIndicatorWidth(int width) {
  setLayoutValue(myIndicatorWidth, width);
}

void cTreeViewChild::setBgColor(unsigned colour) {
  setLayoutValue(myBgColor, colour);
}

void cTreeViewChild::setFrmColor(unsigned colour) {
  myFrmColor = colour;
  repaint();
}

void cTreeViewChild::setImageLists(cPicturesList* normal, cPicturesList* second,
                                   cPicturesList* third) {
  myImages[0] = normal;
  myImages[1] = second;
  myImages[2] = third;
  changed();
}

void cTreeViewChild::setUnfocusedColors(unsigned text, unsigned background, unsigned frame) {
  myUnfocused[0] = text;
  myUnfocused[1] = background;
  myUnfocused[2] = frame;
  changed();
}

cSelectableStaticChild::sColours cTreeViewChild::labelLook(const cTreeViewItem* item) const {
  const unsigned ink =
      item->textColor != kDefaultColour ? item->textColor : cCITheme::theme().getColor(kInk);
  cSelectableStaticChild::sColours look{ink, myBgColor, myBgColor};
  if (item != myUnfocusedItem) return look;
  // Each colour of the unfocused selection replaces the label's own unless left unset.
  if (myUnfocused[0] != kDefaultColour) look.text = myUnfocused[0];
  if (myUnfocused[1] != kDefaultColour) look.background = myUnfocused[1];
  if (myUnfocused[2] != kDefaultColour) look.frame = myUnfocused[2];
  return look;
}

// --- layout ------------------------------------------------------------------------------

void cTreeViewChild::changed() {
  if (myBatch.now()) build();
}

void cTreeViewChild::endChanges() {
  if (myBatch.end()) build();
}

void cTreeViewChild::makeElements(cTreeViewItem* item) {
  item->element = newTreeItemElement(item);
  item->control = newTreeViewControlElement(item);
  for (cChildElement* e : {static_cast<cChildElement*>(item->element.get()),
                           static_cast<cChildElement*>(item->control.get())}) {
    // Attached hidden: the layout shows the rows that are in the tree's open branches.
    e->hide(false);
    e->setDoubleBuffer(true);
    attach(e, 0, 0, 0, 0);
  }
  myLabels.emplace(item->element.get(), item);
  myControls.emplace(item->control.get(), item);
  onElementAttach(item, item->element.get());
}

void cTreeViewChild::applyImages(cTreeViewItem* item) {
  const cPicture* pictures[3] = {};
  for (int k = 0; k < 3 && item->image >= 0; ++k) {
    if (myImages[k]) pictures[k] = myImages[k]->image(item->image);
  }
  // Another picture changes the label's width.
  if (item->element->setImages(pictures[0], pictures[1], pictures[2])) item->element->forgetSize();
}

void cTreeViewChild::layoutItem(cTreeViewItem* item, int depth, bool visible, sLayout& at) {
  if (!item->element) makeElements(item);
  cTreeItemElement* label = item->element.get();
  cTreeViewControlElement* control = item->control.get();
  const char* shown = label->text();
  if (!shown || item->text != shown) label->setText(item->text.c_str(), -1, false);
  applyImages(item);
  if (visible) {
    sSize size;
    label->measured(size);
    size.width += myCellSpacing;
    size.height += myCellSpacing;
    const int x = 1 - myOutline + myIndicatorWidth + myOutline * depth;
    label->move(x, at.y, size.width, size.height);
    control->move(x - myIndicatorWidth, at.y, myIndicatorWidth, size.height);
    control->setTextMargin(myCellSpacing / 2);
    at.y += size.height + mySpacing;
    at.right = std::max(at.right, x + size.width);
    at.minHeight = std::min(at.minHeight, size.height);
    cSelectableStaticChild::sColours look = labelLook(item);
    if (!(label->colours(false) == look)) label->setColours(look, label->colours(true));
    control->setColours(myBgColor, myBgColor);
    if (!label->visible_child()) label->show(false);
    if (!control->visible_child()) control->show(false);
  } else {
    if (label->visible_child()) label->hide(false);
    if (control->visible_child()) control->hide(false);
  }
  if (isSub(item)) {
    for (cTreeViewItem* c = item->firstItem(); c; c = c->nextItem())
      layoutItem(c, depth + 1, visible && !item->collapsed, at);
    control->setKind(item->collapsed ? cTreeViewControlElement::ckCollapsed
                                     : cTreeViewControlElement::ckExpanded);
  } else {
    control->setKind(item->next() ? cTreeViewControlElement::ckLeaf
                                  : cTreeViewControlElement::ckLastLeaf);
  }
}

void cTreeViewChild::build() {
  myBatch.built();
  sLayout at;
  at.minHeight = INT_MAX;
  for (cTreeViewItem* item = root(); item; item = item->nextItem()) layoutItem(item, 1, true, at);
  myMinRow = at.minHeight == INT_MAX ? 1 : std::max(1, at.minHeight);
  setVirtualSize(at.right, at.y);
  setRowStep();
  if (mySelected && mySelected->element && mySelected->element->visible_child())
    scrollIntoView(mySelected);
  repaint();
}

void cTreeViewChild::onPaint(cCanvas* canvas) {
  if (!canvas) return;
  const sRect all{0, 0, width(), height()};
  canvas->drawRect(&all, myBgColor, myFrmColor);
}

void cTreeViewChild::setRowStep() {
  setScrollSteps(5, mySpacing + std::max(1, std::min(myMinRow, height())));
}

void cTreeViewChild::onSizeChanged() {
  cScrollableElement::onSizeChanged();
  setRowStep(); // the rows stay as they are; only a step longer than the control shrinks
}

void cTreeViewChild::onConstruct() {
  cScrollableElement::onConstruct();
  changed();
}

std::unique_ptr<cTreeItemElement> cTreeViewChild::newTreeItemElement(cTreeViewItem*) {
  return std::make_unique<cTreeItemElement>();
}

std::unique_ptr<cTreeViewControlElement> cTreeViewChild::newTreeViewControlElement(cTreeViewItem*) {
  return std::make_unique<cTreeViewControlElement>();
}
