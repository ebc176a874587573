// A property sheet: a scrolled list of sections, each a titled group of properties that
// its header's button folds. A property is a row: a caption on the left and a value on the
// right, of one of seven kinds (ePropTypes). The caller numbers sections and properties,
// and reads and writes values by those numbers; it never needs to hold the elements.
//
// Actions raised (a cPropSheetAction with the section and the property): 6 a property
// was selected (its caption, or the focus came to its value), 7 its action button was
// pressed, 8 its link was clicked, 9 its caption was activated (double click, Enter),
// 10 its drop-down list's choice changed.
#pragma once

#include <map>
#include <memory>
#include <string>

#include "batch.h"
#include "button.h"
#include "combo.h"
#include "edit.h"
#include "link.h"
#include "scrollable.h"
#include "selstatic.h"
#include "split.h"
#include "static.h"

class cPropSheetChild : public cScrollableElement {
public:
  enum ePropTypes {
    ptText = 0,           // static text
    ptTextAction = 1,     // static text and an action button
    ptLink = 2,           // a link
    ptEdit = 3,           // an editable box
    ptReadonlyAction = 4, // a read-only box and an action button
    ptReadonly = 5,       // a read-only box
    ptList = 6,           // a drop-down list
  };
  enum eCode { kSelected = 6, kButton = 7, kLink = 8, kActivated = 9, kChoice = 10 };
  static constexpr int kButtonWidth = 19, kButtonRoom = 20;
  static constexpr int kListRow = 19, kBoxRow = 18, kRowGap = 1;

  class cPropSheetAction : public cChildAction {
  public:
    cPropSheetAction(int code, int section, int prop)
        : cChildAction(code), section(section), prop(prop) {}
    int section, prop;
  };

  struct sPropertyDescr {
    std::unique_ptr<cSelectableStaticChild> caption;
    std::unique_ptr<cChildElement> value;
    std::unique_ptr<cButtonChild> button; // kinds 1 and 4
    std::string descr;
    ePropTypes kind = ptText;
    void* assoc = nullptr;
    unsigned colour = 0xFFFFFFFF;
  };

  // A section's title bar: an optional picture, the title, and the fold sign at the
  // right. A click on the bar folds or opens the section (kFoldCode).
  class cSectionHeaderChild : public cChildElement {
  public:
    static constexpr int kFoldCode = 6;
    void setPicture(const cPicture* picture);
    void setColours(unsigned background, unsigned frame);
    void setFolded(bool folded);
    void onPaint(cCanvas* canvas) override;
    void onMouseButton(int x, int y, int button, bool down) override;
    void onMouseOver() override;
    void onMouseLeft() override;
    eMousePointerTypes defaultPointer() override { return mpHand; }

  private:
    const cPicture* myPicture = nullptr;
    unsigned myBackground = 0, myFrame = 0;
    bool myFolded = false, myHot = false, myPressed = false;
  };

  class cSectionChild : public cChildElement {
  public:
    cSectionChild(cPropSheetChild* sheet, int id);
    ~cSectionChild() override;

    int id() const { return myId; }
    cSectionHeaderChild& header() { return myHeader; }
    cSplitterChild& split() { return mySplit; }
    bool collapsed() const { return myCollapsed; }
    void setCollapsed(bool on);
    std::map<int, sPropertyDescr>& props() { return myProps; }
    sPropertyDescr* prop(int id);
    // Makes a property's elements and puts them in the columns; false when id is taken.
    bool addProp(int id, const char* caption, const char* descr, const char* value,
                 ePropTypes kind);
    bool removeProp(int id);
    void setShowHints(bool on);
    // The property an element belongs to (-1: none) and its part.
    enum ePart { kNoPart, kCaption, kValue, kButtonPart, kListPart, kLinkPart };
    int propOf(const cChildElement* element, ePart& part) const;
    // Lays the rows out (at width w); returns the section's height.
    int layout(int w, bool showHeader);

    bool onAction(cChildElement* source, cChildAction* action) override;
    void onSizeChanged() override;

  private:
    void addElement(cChildElement* element, int column, int propId, ePart part);
    void forget(cChildElement* element);
    void placeRow(sPropertyDescr& p, int y, int h, bool shown);
    int rowHeight(sPropertyDescr& p);

    cPropSheetChild* mySheet;
    int myId;
    cSectionHeaderChild myHeader;
    cSplitterChild mySplit;
    std::map<int, sPropertyDescr> myProps;
    // Element to (property id, part): captions, values, buttons, lists and links.
    std::map<const cChildElement*, std::pair<int, ePart>> myParts;
    bool myCollapsed = false, myShowHints = true;
  };

  cPropSheetChild();
  ~cPropSheetChild() override;

  // The element that holds a property's value text: a list's edit part, else the value.
  static cChildElement* textElement(sPropertyDescr& p);

  // --- sections
  bool setSection(int section, const char* title);
  bool remove(int section);
  void clear();
  bool hasSection(int section) const { return mySections.count(section) != 0; }
  const char* sectionName(int section) const;
  cSplitterChild* sectionSplit(int section);
  cSectionChild* sectionOf(int section);
  bool setSectionCollapsed(int section, bool collapsed);
  void setSectColor(unsigned colour);
  void setSectFrameColor(unsigned colour);
  void showSections(bool on);
  void showHints(bool on) { myShowHints = on; }

  // --- properties
  bool setProperty(int section, int prop, const char* caption, const char* descr, const char* value,
                   ePropTypes kind);
  bool remove(int section, int prop);
  bool hasProp(int section, int prop) const;
  const char* propName(int section, int prop);
  const char* propDescr(int section, int prop);
  bool setImage(int section, int prop, int index);
  bool setImage(int section, int prop, const cPicture* picture);
  void setImagesList(cPicturesList* list) { myImages = list; }
  bool setPropertyColor(int section, int prop, unsigned colour);

  // --- values
  bool setPropertyVal(int section, int prop, const char* text);
  bool setPropertyVal(int section, int prop, unsigned long long value, bool hex, char separator);
  // Adds or replaces item id of a drop-down list, choosing it when select is set.
  bool setPropertyVal(int section, int prop, int id, void* assoc, const char* text, bool select);
  bool wipeVal(int section, int prop);
  bool clearPropertyVals(int section, int prop);
  bool setPropertyAssoc(int section, int prop, void* assoc);
  void* assoc(int section, int prop);

  // --- reading
  const char* value(int section, int prop);
  // The chosen item of a list; 0 when the property is missing, -1 for another kind.
  int value_id(int section, int prop);
  // Boxes and lists: their text as an unsigned number; other kinds 0; missing -1.
  long long int_value(int section, int prop);
  void* value_assoc(int section, int prop);

  // --- focus, selection and elements
  // Chooses item id of a list without raising anything.
  bool select(int section, int prop, int id);
  // With focus the caption takes it (and action 6 follows); without, it is only marked.
  bool selectCapt(int section, int prop, bool focus);
  // The sheet itself, as any element, or one row's control.
  using cChildElement::focus;
  bool focus(int section, int prop);
  cButtonChild* actionButton(int section, int prop);
  cChildElement* editControl(int section, int prop);

  // --- batching
  void startChanges() { myBatch.start(); }
  void endChanges();
  void build();
  long long builds() const { return myBatch.builds(); }

  // For sections: a change that needs a new layout.
  void changed();
  // A section's divider moved: every section takes the same share.
  void shareMoved(cSectionChild* from);

  void onInitData() override;
  void onPaint(cCanvas* canvas) override;
  void onSizeChanged() override;
  void onConstruct() override;
  bool onAction(cChildElement* source, cChildAction* action) override;
  const char* wantLangResource() override { return "ciom::propsheet"; }
  bool wantAcceptFoucs() override { return true; }

private:
  sPropertyDescr* find(int section, int prop);
  const sPropertyDescr* find(int section, int prop) const;
  void raise(int code, int section, int prop);
  void rowSelected(int section, int prop, bool fromCaption);
  cEditChild* boxOf(sPropertyDescr& p);

  std::map<int, std::unique_ptr<cSectionChild>> mySections;
  cPicturesList* myImages = nullptr;
  unsigned mySectColour = 0, mySectFrame = 0;
  bool myShowSections = true, myShowHints = true;
  cChangeBatch myBatch;
  int mySelSection = -1, mySelProp = -1; // the row whose caption shows it selected
};
