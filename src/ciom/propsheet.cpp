// The property sheet: sections by id, properties by section and id, values, actions.
#include "propsheet.h"

#include <cstdio>

#include "theme.h"

namespace {

constexpr int kSectionColour = 0, kSectionFrame = 47;
constexpr int kMaxNumberText = 80;

} // namespace

cPropSheetChild::cPropSheetChild() {
  allowScrollBars(true, false);
  onInitData();
}

cPropSheetChild::~cPropSheetChild() {
  mySections.clear();
}

cChildElement* cPropSheetChild::textElement(sPropertyDescr& p) {
  if (p.kind == ptList) return static_cast<cComboBoxChild*>(p.value.get())->edit();
  return p.value.get();
}

void cPropSheetChild::onInitData() {
  mySections.clear();
  const cCITheme& theme = cCITheme::theme();
  mySectColour = theme.getColor(kSectionColour);
  mySectFrame = theme.getColor(kSectionFrame);
  myShowSections = myShowHints = true;
  myBatch.reset();
  mySelSection = mySelProp = -1;
}

// --- sections ----------------------------------------------------------------------------

bool cPropSheetChild::setSection(int section, const char* title) {
  if (!title) return false;
  auto& slot = mySections[section];
  if (!slot) {
    slot = std::make_unique<cSectionChild>(this, section);
    slot->setShowHints(myShowHints);
    slot->header().setColours(mySectColour, mySectFrame);
    attach(slot.get(), 0, 0, 0, 0);
    slot->setCollapsed(false); // again, now that the texts of the sheet can be found
  }
  slot->header().setText(title, -1, true);
  changed();
  return true;
}

bool cPropSheetChild::remove(int section) {
  const auto at = mySections.find(section);
  if (at == mySections.end()) return false;
  if (mySelSection == section) mySelSection = mySelProp = -1;
  mySections.erase(at); // its elements leave the sheet with it
  changed();
  return true;
}

void cPropSheetChild::clear() {
  mySections.clear();
  mySelSection = mySelProp = -1;
  changed();
}

cPropSheetChild::cSectionChild* cPropSheetChild::sectionOf(int section) {
  const auto at = mySections.find(section);
  return at == mySections.end() ? nullptr : at->second.get();
}

const char* cPropSheetChild::sectionName(int section) const {
  const auto at = mySections.find(section);
  return at == mySections.end() ? nullptr : at->second->header().text();
}

cSplitterChild* cPropSheetChild::sectionSplit(int section) {
  cSectionChild* s = sectionOf(section);
  return s ? &s->split() : nullptr;
}

bool cPropSheetChild::setSectionCollapsed(int section, bool collapsed) {
  cSectionChild* s = sectionOf(section);
  if (!s) return false;
  s->setCollapsed(collapsed);
  changed();
  return true;
}

void cPropSheetChild::setSectColor(unsigned colour) {
  mySectColour = colour;
  for (auto& [id, s] : mySections) s->header().setColours(mySectColour, mySectFrame);
}

void cPropSheetChild::setSectFrameColor(unsigned colour) {
  mySectFrame = colour;
  for (auto& [id, s] : mySections) s->header().setColours(mySectColour, mySectFrame);
}

void cPropSheetChild::showSections(bool on) {
  myShowSections = on;
  changed();
}

// --- properties --------------------------------------------------------------------------

cPropSheetChild::sPropertyDescr* cPropSheetChild::find(int section, int prop) {
  cSectionChild* s = sectionOf(section);
  return s ? s->prop(prop) : nullptr;
}

const cPropSheetChild::sPropertyDescr* cPropSheetChild::find(int section, int prop) const {
  return const_cast<cPropSheetChild*>(this)->find(section, prop);
}

bool cPropSheetChild::setProperty(int section, int prop, const char* caption, const char* descr,
                                  const char* value, ePropTypes kind) {
  cSectionChild* s = sectionOf(section);
  if (!s || !s->addProp(prop, caption, descr, value, kind)) return false;
  changed();
  return true;
}

bool cPropSheetChild::remove(int section, int prop) {
  cSectionChild* s = sectionOf(section);
  if (!s || !s->removeProp(prop)) return false;
  if (mySelSection == section && mySelProp == prop) mySelSection = mySelProp = -1;
  changed();
  return true;
}

bool cPropSheetChild::hasProp(int section, int prop) const {
  return find(section, prop) != nullptr;
}

const char* cPropSheetChild::propName(int section, int prop) {
  sPropertyDescr* p = find(section, prop);
  return p ? p->caption->text() : nullptr;
}

const char* cPropSheetChild::propDescr(int section, int prop) {
  sPropertyDescr* p = find(section, prop);
  return p ? p->descr.c_str() : nullptr;
}

bool cPropSheetChild::setImage(int section, int prop, int index) {
  return setImage(section, prop, myImages ? myImages->image(index) : nullptr);
}

bool cPropSheetChild::setImage(int section, int prop, const cPicture* picture) {
  sPropertyDescr* p = find(section, prop);
  if (!p) return false;
  p->caption->setImages(picture, picture, picture);
  changed();
  return true;
}

bool cPropSheetChild::setPropertyColor(int section, int prop, unsigned colour) {
  sPropertyDescr* p = find(section, prop);
  if (!p) return false;
  p->colour = colour;
  switch (p->kind) {
  case ptText:
  case ptTextAction:
    static_cast<cStaticChild*>(p->value.get())->setTextColour(colour);
    break;
  case ptLink:
    static_cast<cLinkChild*>(p->value.get())->setColour(colour);
    break;
  default:
    if (cEditChild* box = boxOf(*p)) {
      for (int t = cEditChild::ctNormal; t < cEditChild::ctDisabled; ++t)
        box->setColors(static_cast<cEditChild::eColorTypes>(t), colour,
                       box->bgColor(static_cast<cEditChild::eColorTypes>(t)));
    }
  }
  return true;
}

// --- values ------------------------------------------------------------------------------

cEditChild* cPropSheetChild::boxOf(sPropertyDescr& p) {
  switch (p.kind) {
  case ptEdit:
  case ptReadonlyAction:
  case ptReadonly:
    return static_cast<cEditChild*>(p.value.get());
  case ptList:
    return static_cast<cComboBoxChild*>(p.value.get())->edit();
  default:
    return nullptr;
  }
}

bool cPropSheetChild::setPropertyVal(int section, int prop, const char* text) {
  sPropertyDescr* p = find(section, prop);
  if (!p) return false;
  textElement(*p)->setText(text ? text : "", -1, true);
  if (p->kind <= ptLink) changed(); // the row's height follows its text
  return true;
}

bool cPropSheetChild::setPropertyVal(int section, int prop, unsigned long long value, bool hex,
                                     char separator) {
  sPropertyDescr* p = find(section, prop);
  if (!p) return false;
  if (cEditChild* box = boxOf(*p)) {
    box->setU64(value, hex, separator);
    return true;
  }
  char text[kMaxNumberText + 1];
  std::snprintf(text, sizeof text, hex ? "0x%llX" : "%lld", value);
  return setPropertyVal(section, prop, text);
}

bool cPropSheetChild::setPropertyVal(int section, int prop, int id, void* assoc, const char* text,
                                     bool select) {
  sPropertyDescr* p = find(section, prop);
  if (!p || p->kind != ptList) return false;
  auto* list = static_cast<cComboBoxChild*>(p->value.get());
  list->addItem(id, text ? text : "", assoc);
  if (select) list->setSelected(id);
  return true;
}

bool cPropSheetChild::wipeVal(int section, int prop) {
  sPropertyDescr* p = find(section, prop);
  if (!p) return false;
  textElement(*p)->wipeText();
  textElement(*p)->repaint();
  return true;
}

bool cPropSheetChild::clearPropertyVals(int section, int prop) {
  sPropertyDescr* p = find(section, prop);
  if (!p) return false;
  if (p->kind == ptList) {
    static_cast<cComboBoxChild*>(p->value.get())->clear();
    return true;
  }
  return setPropertyVal(section, prop, "");
}

bool cPropSheetChild::setPropertyAssoc(int section, int prop, void* assoc) {
  sPropertyDescr* p = find(section, prop);
  if (!p) return false;
  p->assoc = assoc;
  return true;
}

void* cPropSheetChild::assoc(int section, int prop) {
  sPropertyDescr* p = find(section, prop);
  return p ? p->assoc : nullptr;
}

const char* cPropSheetChild::value(int section, int prop) {
  sPropertyDescr* p = find(section, prop);
  return p ? textElement(*p)->text() : nullptr;
}

int cPropSheetChild::value_id(int section, int prop) {
  sPropertyDescr* p = find(section, prop);
  if (!p || !p->value) return 0;
  if (p->kind != ptList) return -1;
  return static_cast<cComboBoxChild*>(p->value.get())->selected();
}

long long cPropSheetChild::int_value(int section, int prop) {
  sPropertyDescr* p = find(section, prop);
  if (!p) return -1;
  cEditChild* box = boxOf(*p);
  return box ? static_cast<long long>(box->asU64()) : 0;
}

void* cPropSheetChild::value_assoc(int section, int prop) {
  sPropertyDescr* p = find(section, prop);
  if (!p || p->kind != ptList) return nullptr;
  return static_cast<cComboBoxChild*>(p->value.get())->selectedAssoc();
}

// --- focus and elements ------------------------------------------------------------------

bool cPropSheetChild::select(int section, int prop, int id) {
  sPropertyDescr* p = find(section, prop);
  return p && p->kind == ptList && static_cast<cComboBoxChild*>(p->value.get())->setSelected(id);
}

bool cPropSheetChild::selectCapt(int section, int prop, bool focus) {
  sPropertyDescr* p = find(section, prop);
  if (!p) return false;
  if (focus) {
    p->caption->select();
  } else {
    if (sPropertyDescr* before = find(mySelSection, mySelProp)) before->caption->setMarked(false);
    mySelSection = section;
    mySelProp = prop;
    p->caption->setMarked(true);
  }
  return true;
}

bool cPropSheetChild::focus(int section, int prop) {
  sPropertyDescr* p = find(section, prop);
  if (!p) return false;
  const bool field = p->kind >= ptLink;
  (field ? p->value.get() : static_cast<cChildElement*>(p->caption.get()))->focus();
  return true;
}

cButtonChild* cPropSheetChild::actionButton(int section, int prop) {
  sPropertyDescr* p = find(section, prop);
  return p ? p->button.get() : nullptr;
}

cChildElement* cPropSheetChild::editControl(int section, int prop) {
  sPropertyDescr* p = find(section, prop);
  return p ? p->value.get() : nullptr;
}

// --- layout ------------------------------------------------------------------------------

void cPropSheetChild::changed() {
  if (myBatch.now()) build();
}

void cPropSheetChild::endChanges() {
  if (myBatch.end()) build();
}

void cPropSheetChild::build() {
  myBatch.built();
  // Heights do not depend on the width: stack first, then place across the view, which
  // is narrower once the content needs the vertical bar.
  std::vector<std::pair<cSectionChild*, int>> stacked;
  int total = 0;
  for (auto& [id, s] : mySections) {
    const int h = s->layout(std::max(0, viewSize().width), myShowSections);
    stacked.emplace_back(s.get(), h);
    total += h;
  }
  setVirtualSize(0, total);
  const int w = viewSize().width;
  int y = 0;
  for (auto& [s, h] : stacked) {
    if (s->width() != w) s->layout(w, myShowSections);
    s->move(0, y, w, h);
    y += h;
  }
  repaint();
}

void cPropSheetChild::shareMoved(cSectionChild* from) {
  const double share = from->split().share();
  for (auto& [id, s] : mySections) {
    if (s.get() != from) s->split().setShare(share);
  }
}

void cPropSheetChild::onPaint(cCanvas* canvas) {
  if (!canvas) return;
  const sRect all{0, 0, width(), height()};
  const unsigned ground = cCITheme::theme().getColor(51);
  canvas->drawRect(&all, ground, ground);
}

void cPropSheetChild::onSizeChanged() {
  cScrollableElement::onSizeChanged();
  changed();
}

void cPropSheetChild::onConstruct() {
  cScrollableElement::onConstruct();
  changed();
}

// --- actions -----------------------------------------------------------------------------

void cPropSheetChild::raise(int code, int section, int prop) {
  notifyAction(new cPropSheetAction(code, section, prop));
}

void cPropSheetChild::rowSelected(int section, int prop, bool fromCaption) {
  const bool same = section == mySelSection && prop == mySelProp;
  if (sPropertyDescr* before = find(mySelSection, mySelProp)) before->caption->setMarked(false);
  mySelSection = section;
  mySelProp = prop;
  // While the value is edited, the caption shows which row it is.
  if (sPropertyDescr* p = find(section, prop)) p->caption->setMarked(!fromCaption);
  if (fromCaption || !same) raise(kSelected, section, prop);
}

bool cPropSheetChild::onAction(cChildElement* source, cChildAction* action) {
  if (!action || source == this) return cScrollableElement::onAction(source, action);
  for (auto& [id, s] : mySections) {
    cSectionChild::ePart part;
    const int prop = s->propOf(source, part);
    if (prop < 0) continue;
    const int code = action->code;
    bool handled = true;
    if (part == cSectionChild::kCaption && code == cSelectableStaticChild::kSelected)
      rowSelected(id, prop, true);
    else if (part == cSectionChild::kCaption && code == cSelectableStaticChild::kActivated)
      raise(kActivated, id, prop);
    else if (part == cSectionChild::kButtonPart && code == cChildAction::acNotify)
      raise(kButton, id, prop);
    else if (part == cSectionChild::kLinkPart && code == cChildAction::acNotify)
      raise(kLink, id, prop);
    else if (part == cSectionChild::kListPart && code == cComboBoxChild::kChangedCode &&
             source == editControl(id, prop))
      raise(kChoice, id, prop);
    else
      handled = false;
    // The focus coming to a value or a button selects its row too.
    if (code == cChildAction::acFocus && part != cSectionChild::kCaption)
      rowSelected(id, prop, false);
    if (handled) return true;
    break;
  }
  return cScrollableElement::onAction(source, action);
}
