// A tree of labelled items: an expander column, keyboard and mouse navigation, children
// loaded on demand, and a selection that stays visible while the tree has no focus.
//
// Each item is drawn by two elements of its own, made on the first build: its label (a
// selectable static element with a picture and a text) and its expander (the tree's lines
// and the open/closed sign). The tree owns the items it is given and, through them, their
// elements. Changes rebuild the layout at once, or once at the end of a
// startChanges/endChanges bracket.
//
// Actions raised (the item in a cTreeItemAction): 6 an item was activated (double click,
// Enter), 7 another item became selected, 8 a context request on a label (a
// cTreeItemCtxAction with the point in the tree), 9 an item was expanded or collapsed,
// 10 an item was dragged and dropped (a cTreeDropAction; only with setDragAndDrop).
//
// Dragging: a label pressed with the left button and moved a few pixels is dragged; the
// label under the pointer shows where it would go (a line above or below it: before or
// after it among its siblings; a frame: its last child). A drop into the dragged item's own
// subtree, or beside the root, is not offered. Escape or a release outside the rows
// cancels. The tree moves nothing itself: its owner moves the item on the action.
#pragma once

#include <map>
#include <memory>
#include <string>

#include "base/tree.h"
#include "batch.h"
#include "scrollable.h"
#include "selstatic.h"
#include "typeahead.h"

// An item's label. Its wanted size is measured once per text and picture.
class cTreeItemElement : public cSelectableStaticChild {
public:
  // Where a dragged item would go, as the label shows it.
  enum eDropMark { dmNone, dmBefore, dmAfter, dmInto };

  bool setText(const char* text, long long len, bool repaintNow) override;
  void setDropMark(eDropMark mark, unsigned colour);
  eDropMark dropMark() const { return myDropMark; }
  void onPaint(cCanvas* canvas) override;
  // The wanted size, measured when the text or the picture changed since last asked.
  bool measured(sSize& size);
  void forgetSize() { myMeasured = false; }

private:
  bool myMeasured = false;
  sSize mySize;
  eDropMark myDropMark = dmNone;
  unsigned myDropColour = 0;
};

// An item's expander: the theme's sign for what the item is (see eCtlKind). The active
// kinds show the hand pointer and raise a plain action on a left-button release.
class cTreeViewControlElement : public cChildElement {
public:
  enum eCtlKind {
    ckNone = 0,      // no picture
    ckLeaf = 1,      // a leaf with a following sibling
    ckLastLeaf = 2,  // the last leaf of its branch
    ckExpanded = 3,  // an item whose children show
    ckCollapsed = 4, // an item whose children are hidden
  };

  void setKind(eCtlKind kind);
  eCtlKind kind() const { return myKind; }
  bool active() const { return myKind == ckExpanded || myKind == ckCollapsed; }
  void setColours(unsigned background, unsigned frame);
  void setTextMargin(int margin) { myMargin = margin; }

  void onPaint(cCanvas* canvas) override;
  void onMouseButton(int x, int y, int button, bool down) override;
  void onMouseOver() override;
  void onMouseLeft() override;

private:
  eCtlKind myKind = ckNone;
  unsigned myBackground = 0xFFFFFF, myFrame = 0xFFFFFF;
  int myMargin = 0;
  bool myHot = false;
};

class cTreeViewChild : public cScrollableElement {
public:
  class cTreeViewItem : public cTreeItem {
  public:
    cTreeViewItem() = default;
    cTreeViewItem(const char* text, void* data, int image = -1)
        : data(data), text(text ? text : ""), image(image) {}

    cTreeViewItem* parentItem() const { return static_cast<cTreeViewItem*>(parent()); }
    cTreeViewItem* firstItem() const { return static_cast<cTreeViewItem*>(firstChild()); }
    cTreeViewItem* lastItem() const { return static_cast<cTreeViewItem*>(lastChild()); }
    cTreeViewItem* nextItem() const { return static_cast<cTreeViewItem*>(next()); }
    cTreeViewItem* prevItem() const { return static_cast<cTreeViewItem*>(prev()); }

    std::unique_ptr<cTreeItemElement> element;        // made on the first build
    std::unique_ptr<cTreeViewControlElement> control; // made on the first build
    void* data = nullptr;
    std::string text;
    int image = -1; // index into the image lists; below 0: none
    bool collapsed = false;
    unsigned textColor = kDefaultColour;
  };

  class cTreeItemAction : public cChildAction {
  public:
    cTreeItemAction(int code, cTreeViewItem* item) : cChildAction(code), item(item) {}
    cTreeViewItem* item;
  };
  // item dropped on target: before or after it, or into it as its last child.
  class cTreeDropAction : public cTreeItemAction {
  public:
    cTreeDropAction(cTreeViewItem* item, cTreeViewItem* target, cTreeItemElement::eDropMark place)
        : cTreeItemAction(kDropped, item), target(target), place(place) {}
    cTreeViewItem* target;
    cTreeItemElement::eDropMark place;
  };
  class cTreeItemCtxAction : public cTreeItemAction {
  public:
    cTreeItemCtxAction(cTreeViewItem* item, int x, int y)
        : cTreeItemAction(kContext, item), x(x), y(y) {}
    int x, y;
  };

  enum eCode { kActivated = 6, kSelected = 7, kContext = 8, kToggled = 9, kDropped = 10 };
  static constexpr int kDragDistance = 4; // pixels the pointer moves before a drag starts
  static constexpr unsigned kDefaultColour = 0xFFFFFFFF; // keep the element's own

  cTreeViewChild();
  ~cTreeViewChild() override;

  // --- items
  // Appends item as the last child of parent (top level for null); the tree owns it.
  bool storeUnder(cTreeViewItem* parent, cTreeViewItem* item);
  bool storeUnder(cTreeViewItem* parent, std::unique_ptr<cTreeViewItem> item);
  void remove(cTreeViewItem* item);       // with its subtree
  void remove_under(cTreeViewItem* item); // the subtree only; null: everything
  void clear();
  cTreeViewItem* root() const { return static_cast<cTreeViewItem*>(myItems.first()); }
  cTreeViewItem* parentItem(cTreeViewItem* item) const;
  cTreeViewItem* getUnderItm(cTreeViewItem* item) const;
  cTreeViewItem* getNextUnderItm(cTreeViewItem* item) const;
  // Depth first, an item before its children before its next sibling.
  cTreeViewItem* find(const void* data) const { return find(root(), data); }
  cTreeViewItem* find(cTreeViewItem* from, const void* data) const;
  cTreeViewItem* isChild(const cChildElement* element) const; // the item of a label
  cTreeViewItem* isCtl(const cChildElement* element) const;   // the item of an expander
  long long count() const { return myItems.count(); }

  // --- selection
  // With focus, the label takes the focus and the change is announced (action 7); without,
  // the item is only shown selected in the unfocused colours and scrolled into view.
  void select(cTreeViewItem* item, bool focus);
  cTreeViewItem* selected() const { return mySelected; }
  void selectRoot();

  // --- dragging
  void setDragAndDrop(bool on) { myDragAndDrop = on; }
  bool dragging() const { return myDragging; }

  // --- expansion
  bool expand(cTreeViewItem* item, bool notify);
  bool collapse(cTreeViewItem* item, bool notify);

  // --- appearance
  void setOutline(int outline);
  int outline() const { return myOutline; }
  void setSpacing(int spacing);
  int spacing() const { return mySpacing; }
  void setCellSpacing(int spacing);
  int cellSpacing() const { return myCellSpacing; }
  void setStructIndicatorWidth(int width);
  int structIndicatorWidth() const { return myIndicatorWidth; }
  void setBgColor(unsigned colour);
  unsigned bgColor() const { return myBgColor; }
  void setFrmColor(unsigned colour);
  unsigned frmColor() const { return myFrmColor; }
  void setImageLists(cPicturesList* normal, cPicturesList* second, cPicturesList* third);
  // The colours of a selection while the tree has no focus: text, background and frame;
  // kDefaultColour keeps the label's own.
  void setUnfocusedColors(unsigned text, unsigned background, unsigned frame);

  // --- batching
  void startChanges() { myBatch.start(); }
  void endChanges();
  void update() { build(); }
  void build();
  long long builds() const { return myBatch.builds(); } // how many layouts ran

  void onInitData() override;
  void onPaint(cCanvas* canvas) override;
  void onSizeChanged() override;
  void onConstruct() override;
  bool onAction(cChildElement* source, cChildAction* action) override;
  bool processKey(int key, bool shift, bool ctrl, bool alt) override;
  bool processMouseBtn(int x, int y, int button, bool down, bool shift, bool ctrl) override;
  bool processMouseMove(int x, int y) override;
  bool processChar(unsigned short ch, bool shift, bool ctrl, bool alt) override;
  void processFocusLost(bool shift, bool ctrl) override;
  void onSetFocusEvent(eEventOrigin origin, bool shift, bool ctrl) override;
  // Not while a row has the focus: shift+Tab from a row leaves the tree.
  bool canTabStop() override { return cScrollableElement::canTabStop() && !focused(); }
  bool wantTabStop() override { return true; }
  bool wantCaptureArrows() override { return true; }
  bool wantAcceptFoucs() override { return true; }
  int wantBorderWidth() override { return 1; }

protected:
  virtual std::unique_ptr<cTreeItemElement> newTreeItemElement(cTreeViewItem* item);
  virtual std::unique_ptr<cTreeViewControlElement> newTreeViewControlElement(cTreeViewItem* item);
  virtual void onElementAttach(cTreeViewItem*, cTreeItemElement*) {}
  virtual bool isSub(cTreeViewItem* item) { return item->firstChild() != nullptr; }
  // Called before an item expands: the place to load its children on demand.
  virtual void processSubRead(cTreeViewItem*) {}

private:
  struct sLayout {
    int y = 1, right = 0, minHeight = 0;
  };
  void setRowStep(); // the vertical scroll step: a row, as short as the control allows

  void dropItems(); // the items and their elements, without a rebuild
  void changed();   // rebuilds now, or at the end of the batch
  // Sets a layout value; a new one rebuilds.
  template <class T> void setLayoutValue(T& field, T value) {
    if (field == value) return;
    field = value;
    changed();
  }
  void layoutItem(cTreeViewItem* item, int depth, bool visible, sLayout& at);
  void makeElements(cTreeViewItem* item);
  void applyImages(cTreeViewItem* item);
  void forgetSubtree(cTreeViewItem* item, bool withItem);
  void toggle(cTreeViewItem* item);
  void requestExpand(cTreeViewItem* item, bool expand);
  void expandAll(cTreeViewItem* item);
  void labelSelected(cTreeViewItem* item);
  void contextRequest(cTreeViewItem* item, const cCtxRequestAction& request);
  void raise(int code, cTreeViewItem* item);
  void scrollIntoView(cTreeViewItem* item);
  // The unfocused look on item (null: none), the previous item getting its own back.
  void markUnfocused(cTreeViewItem* item);
  // The label's look when not focused: its own colours, or the unfocused selection's.
  cSelectableStaticChild::sColours labelLook(const cTreeViewItem* item) const;

  // Keyboard navigation.
  cTreeViewItem* lastVisible(cTreeViewItem* item) const; // deepest last shown descendant
  cTreeViewItem* below(cTreeViewItem* item) const;       // the next shown row
  cTreeViewItem* above(cTreeViewItem* item) const;       // the previous shown row
  cTreeViewItem* keyTarget(int key, bool ctrl);
  cTreeViewItem* pageTarget(bool down);
  cTreeViewItem* typeAhead(unsigned short ch);

  // Dragging (treedrag.cpp).
  // The shown item whose label's row holds y (tree coordinates), the zone of it that y
  // is in; null below the last row.
  cTreeViewItem* rowAt(int y, cTreeItemElement::eDropMark& zone);
  // Shows where the dragged item would go for the pointer at y; false when nowhere.
  bool aim(int y);
  void endDrag(bool drop);

  cTree myItems;
  std::map<const cChildElement*, cTreeViewItem*> myLabels, myControls;
  int myOutline = 16, mySpacing = 0, myCellSpacing = 0, myIndicatorWidth = 16;
  cPicturesList* myImages[3] = {nullptr, nullptr, nullptr};
  unsigned myBgColor = 0, myFrmColor = 0;
  unsigned myUnfocused[3] = {0, 0, 0};
  int myMinRow = 1; // the lowest row of the last build
  cTreeViewItem* mySelected = nullptr;
  cTreeViewItem* myAnnounce = nullptr; // selected by select(): its label's action 6 is news
  cTreeViewItem* myUnfocusedItem = nullptr;
  cChangeBatch myBatch;
  cTypeAhead myTyped;
  bool myDragAndDrop = false, myDragging = false;
  cTreeViewItem* myDragged = nullptr; // pressed, and dragged once it has moved far enough
  sPoint myPressedAt;
  cTreeViewItem* myDropTarget = nullptr;
  cTreeItemElement::eDropMark myDropPlace = cTreeItemElement::dmNone;
};
