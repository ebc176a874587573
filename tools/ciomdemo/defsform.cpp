#include "defsform.h"

#include "ciom/theme.h"
#include "ciom/themeimages.h"

namespace {

using P = cPropSheetChild;
using Item = cTreeViewChild::cTreeViewItem;

constexpr int kFolderImage = 0, kFileImage = 1;

// A small definition tree: a row with a null pattern is a container, and the rows after it
// with one more level of depth are its contents.
struct sSample {
  int depth;
  const char* name;
  const char* pattern;
  const char* extension;
  unsigned long long maxSize;
};

constexpr sSample kSamples[] = {
    {0, "Pictures", nullptr, nullptr, 0},
    {1, "JPEG (EXIF)", "FF D8 FF E1 ?? ?? 45 78 69 66 00", "jpg", 0x4000000},
    {1, "JPEG (JFIF)", "FF D8 FF E0 ?? ?? 4A 46 49 46 00", "jpg", 0x4000000},
    {1, "PNG", "89 50 4E 47 0D 0A 1A 0A 00 00 00 0D 49 48 44 52", "png", 0x10000000},
    {1, "GIF", "47 49 46 38 [37|39] 61", "gif", 0x1000000},
    {0, "Documents", nullptr, nullptr, 0},
    {1, "PDF", "25 50 44 46 2D", "pdf", 0x40000000},
    {1, "Office", nullptr, nullptr, 0},
    {2, "Word (OOXML)", "50 4B 03 04 {26} \"[Content_Types].xml\"", "docx", 0x10000000},
    {2, "Excel 97-2003", "D0 CF 11 E0 A1 B1 1A E1", "xls", 0x10000000},
    {0, "Archives", nullptr, nullptr, 0},
    {1, "ZIP", "50 4B 03 04", "zip", 0x100000000},
    {1, "7-Zip", "37 7A BC AF 27 1C", "7z", 0x100000000},
};

const char* const kHits[] = {"Never (container)", "If no other hits (passive)", "Always (active)"};
const char* const kEnds[] = {"Maximum size", "End pattern", "Length in the header"};

} // namespace

void cDefinitionsForm::onConstruct() {
  cCustomForm::onConstruct();
  const cCITheme& theme = cCITheme::theme();
  myPictures.refImage(kFolderImage, theme.getPict(tiFolder));
  myPictures.refImage(kFileImage, theme.getPict(tiFile));

  clientArea()->anchor(&mySplit, 0, 0, ~0, ~0);
  mySplit.setMinSizes(140, 300);
  mySplit.pane(0)->anchor(&myTree, 8, 8, ~0, ~8);
  mySplit.pane(1)->anchor(&myProps, 0, 8, ~8, ~8);
  mySplit.setPosition(230);
  myTree.setImageLists(&myPictures, &myPictures, &myPictures);
  fillTree();
}

void cDefinitionsForm::fillTree() {
  Item* parents[4] = {};
  myTree.startChanges();
  for (const sSample& s : kSamples) {
    auto* item = new Item(s.name, const_cast<sSample*>(&s), s.pattern ? kFileImage : kFolderImage);
    myTree.storeUnder(s.depth ? parents[s.depth - 1] : nullptr, item);
    parents[s.depth] = item;
  }
  myTree.endChanges();
}

bool cDefinitionsForm::onAfterConstruct() {
  // The first definition, selected and focused, fills the sheet.
  myTree.select(myTree.getUnderItm(myTree.root()), true);
  return true;
}

void cDefinitionsForm::showItem(Item* item) {
  P& sheet = myProps.sheet();
  const auto* s = static_cast<const sSample*>(item->data);
  sheet.startChanges();
  myProps.clear();
  sheet.setSection(kGeneral, "General");
  sheet.setProperty(kGeneral, kName, "Name", "What the found files are called in the results.",
                    s->name, P::ptEdit);
  sheet.setProperty(kGeneral, kKind, "Kind",
                    "A container groups definitions; a definition recognises one file type.",
                    s->pattern ? "Definition" : "Container", P::ptText);
  sheet.setProperty(kGeneral, kRuleHits, "Rule hits",
                    "When a hit of this definition counts: never, only where no other "
                    "definition matched, or always.",
                    nullptr, P::ptList);
  for (int i = 0; i < 3; ++i)
    sheet.setPropertyVal(kGeneral, kRuleHits, i + 1, nullptr, kHits[i], i == (s->pattern ? 2 : 0));
  if (s->pattern) {
    sheet.setProperty(kGeneral, kExtension, "Extension",
                      "The extension given to recovered files, without the dot.", s->extension,
                      P::ptEdit);
    sheet.setProperty(kGeneral, kIdentifier, "Identifier",
                      "The number under which the rules file stores this definition.", nullptr,
                      P::ptReadonly);
    sheet.setPropertyVal(kGeneral, kIdentifier,
                         static_cast<unsigned long long>(s - kSamples) * 0x1001 + 0x200, true, 0);
    sheet.setSection(kContent, "Content rules");
    sheet.setProperty(kContent, kPattern, "Start pattern",
                      "The bytes a file of this type starts with, in the Advanced/HEX pattern "
                      "language. Press the button to edit it.",
                      s->pattern, P::ptReadonlyAction);
    sheet.setProperty(kContent, kSubset, "Block subset",
                      "The part of each block the rules look at.", "Whole block", P::ptTextAction);
    sheet.setSection(kEnd, "End rules");
    sheet.setProperty(kEnd, kEndRule, "File ends at", "What decides where a found file ends.",
                      nullptr, P::ptList);
    for (int i = 0; i < 3; ++i)
      sheet.setPropertyVal(kEnd, kEndRule, i + 1, nullptr, kEnds[i], i == 0);
    sheet.setProperty(kEnd, kMaxSize, "Maximum size",
                      "No file of this type is longer than this, in bytes.", nullptr, P::ptEdit);
    sheet.setPropertyVal(kEnd, kMaxSize, s->maxSize, false, ',');
    sheet.setProperty(kEnd, kHelp, "Help", "How end rules are chosen and combined.",
                      "About end rules", P::ptLink);
  }
  sheet.endChanges();
}

void cDefinitionsForm::say(const std::string& text) {
  if (myAnswer) myAnswer(text);
}

bool cDefinitionsForm::onAction(cChildElement* source, cChildAction* action) {
  const int code = action->code;
  if (source == &myTree && code == cTreeViewChild::kSelected) {
    Item* item = static_cast<cTreeViewChild::cTreeItemAction*>(action)->item;
    showItem(item);
    say(std::string("definition: ") + item->text);
    return true;
  }
  P& sheet = myProps.sheet();
  if (source == &sheet && code >= P::kButton && code <= P::kChoice && code != P::kActivated) {
    const auto* a = static_cast<P::cPropSheetAction*>(action);
    const std::string caption = sheet.propName(a->section, a->prop);
    if (code == P::kChoice)
      say(caption + ": " + sheet.value(a->section, a->prop));
    else
      say((code == P::kButton ? "button: " : "link: ") + caption);
    return true;
  }
  return cCustomForm::onAction(source, action);
}

bool cDefinitionsForm::onFormCancel() {
  // Escape closes the form and says what the name row holds.
  const char* name = myProps.sheet().value(kGeneral, kName);
  say(std::string("definitions closed, name: ") + (name ? name : ""));
  end_modal(0);
  return true;
}
