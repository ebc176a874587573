#include "filechoose.h"

#include <algorithm>
#include <cctype>

#include "base/folders.h"
#include "ciom/themeimages.h"
#include "langfile.h"
#include "messageform.h"
#include "newfolder.h"
#include "theme.h"

namespace {

// Texts of the "ciom::filechoose" section.
enum eText {
  txOpenTitle = 0,
  txSaveTitle = 1,
  txLookIn = 2,
  txFileName = 3,
  txFilesOfType = 4,
  txOpen = 5,
  txSave = 6,
  txCancel = 7,
  txName = 8,
  txSize = 9,
  txType = 10,
  txModified = 11,
  txFolder = 12,
  txUp = 13,
  txNewFolder = 14,
  txCannotCreate = 16,
  txReplace = 17,
  txNotFound = 18,
  txCannotOpen = 19,
  txAllFiles = 20,
  txPlaces = 21,
  txRefresh = 22,
  txShowHidden = 23,
  txEnterName = 24
};

// Texts of the "ciom::folderchoose" section.
enum eFolderText { txChooseFolder = 0, txFolderLabel = 1, txChoose = 2, txNoFolder = 6 };

enum ePicture { kFolderPicture = 0, kFilePicture, kDrivePicture };

constexpr int kLabelWidth = 84, kFieldX = 96, kPlacesWidth = 150, kGap = 8;
constexpr int kTop = 6, kRow = 22, kListTop = 36, kBelowLists = 70;
constexpr int kKeyF5 = 450, kKeyH = 'H', kKeyL = 'L';
constexpr size_t kHistory = 100; // folders remembered each way

const char* textOr(const char* text, const char* fallback) {
  return text && *text ? text : fallback;
}

bool isPattern(const std::string& name) {
  return name.find_first_of("*?") != std::string::npos;
}

// Whether name starts with stem, ASCII letters compared without case.
bool startsWithFolded(const std::string& name, const std::string& stem) {
  if (stem.size() > name.size()) return false;
  for (size_t i = 0; i < stem.size(); ++i) {
    const unsigned char a = static_cast<unsigned char>(name[i]);
    const unsigned char b = static_cast<unsigned char>(stem[i]);
    if (std::tolower(a) != std::tolower(b)) return false;
  }
  return true;
}

// The length of the start two names share, without case; never splits a UTF-8 sequence.
size_t sharedStart(const std::string& a, const std::string& b) {
  size_t n = 0;
  while (n < a.size() && n < b.size() &&
         std::tolower(static_cast<unsigned char>(a[n])) ==
             std::tolower(static_cast<unsigned char>(b[n])))
    ++n;
  while (n > 0 && n < a.size() && (static_cast<unsigned char>(a[n]) & 0xC0) == 0x80) --n;
  return n;
}

} // namespace

cFileChooseDialog::cFileChooseDialog(eMode mode, std::vector<sFileFilter> filters,
                                     const char* folder, const char* name)
    : myMode(mode), myFilters(std::move(filters)), myStart(folder ? folder : ""),
      myStartName(name ? name : "") {}

std::optional<std::string> cFileChooseDialog::open(cChildElement* parent, const char* caption,
                                                   const std::vector<sFileFilter>& filters,
                                                   const char* folder) {
  cFileChooseDialog dialog(fmOpen, filters, folder, nullptr);
  return dialog.run(parent, caption);
}

std::optional<std::string> cFileChooseDialog::save(cChildElement* parent, const char* caption,
                                                   const std::vector<sFileFilter>& filters,
                                                   const char* folder, const char* name) {
  cFileChooseDialog dialog(fmSave, filters, folder, name);
  return dialog.run(parent, caption);
}

std::optional<std::string>
cFileChooseDialog::chooseFolder(cChildElement* parent, const char* caption, const char* folder) {
  cFileChooseDialog dialog(fmFolder, {}, folder, nullptr);
  return dialog.run(parent, caption);
}

std::optional<std::string> cFileChooseDialog::run(cChildElement* parent, const char* caption) {
  if (!parent) return std::nullopt;
  if ((!caption || !*caption) && myMode == fmFolder) {
    const cCiomLangData* section = parent->requestNamedLangResource("ciom::folderchoose");
    caption = section ? section->string(txChooseFolder) : "";
  } else if (!caption || !*caption) {
    const cCiomLangData* section = parent->requestNamedLangResource(wantLangResource());
    caption = section ? section->string(myMode == fmOpen ? txOpenTitle : txSaveTitle) : "";
  }
  modal(caption ? caption : "", kWidth, kHeight, parent, true);
  return myChosen;
}

// --- building ----------------------------------------------------------------------------

void cFileChooseDialog::onConstruct() {
  cCustomForm::onConstruct();
  const cCITheme& theme = cCITheme::theme();
  cPanelChild* panel = clientArea();

  myToolPictures.refImage(kUp, theme.getPict(tiFolderUp));
  myToolPictures.refImage(kNewFolder, theme.getPict(tiNewFolder));
  myToolPictures.refImage(kRefresh, theme.getPict(tiRefresh));
  myFilePictures.refImage(kFolderPicture, theme.getPict(tiFolder));
  myFilePictures.refImage(kFilePicture, theme.getPict(tiFile));
  myFilePictures.refImage(kDrivePicture, theme.getPict(tiDrive));

  myPathLabel.setTransparent(true);
  myPathLabel.setText(string(txLookIn), -1, false);
  panel->anchor(&myPathLabel, kGap, kTop, kLabelWidth, kRow);
  myTools.setPictures(&myToolPictures);
  myTools.setTransparent(true);
  panel->attach(&myTools, 0, 0, 0, 24);
  myTools.addButton(kUp, nullptr, string(txUp), kUp);
  myTools.addButton(kNewFolder, nullptr, string(txNewFolder), kNewFolder);
  myTools.addButton(kRefresh, nullptr, string(txRefresh), kRefresh);
  const int toolsWidth = myTools.wantedWidth();
  panel->anchor(&myTools, ~(toolsWidth + kGap), kTop - 1, toolsWidth, 24);
  panel->anchor(&myPath, kFieldX, kTop, ~(kFieldX + toolsWidth + 2 * kGap), kRow);

  myPlaces.setColumns({{textOr(string(txPlaces), "Places"), kPlacesWidth - 2, false}});
  myPlaces.showHeader(false);
  myPlaces.setImages(&myFilePictures);
  myPlaces.allowScrollBars(true, false);
  myPlaces.setSingleClick(true);
  panel->anchor(&myPlaces, kGap, kListTop, kPlacesWidth, ~(kListTop + kBelowLists));

  const int filesX = kGap + kPlacesWidth + kGap;
  myFiles.setColumns({{string(txName), 250, false},
                      {string(txSize), 80, true},
                      {string(txType), 70, false},
                      {string(txModified), 130, false}});
  myFiles.setImages(&myFilePictures);
  myFiles.setSortMark(0, true);
  panel->anchor(&myFiles, filesX, kListTop, ~(filesX + kGap), ~(kListTop + kBelowLists));

  myNameLabel.setTransparent(true);
  myNameLabel.setText(
      myMode == fmFolder ? folderText(txFolderLabel, "Folder:") : string(txFileName), -1, false);
  panel->anchor(&myNameLabel, kGap, ~(kBelowLists - 8), kLabelWidth, kRow);
  myName.setMaxLen(4096);
  panel->anchor(&myName, kFieldX, ~(kBelowLists - 8), ~(kFieldX + kGap), kRow);
  myTypeLabel.setTransparent(true);
  myTypeLabel.setText(string(txFilesOfType), -1, false);
  panel->anchor(&myTypeLabel, kGap, ~(kBelowLists - 38), kLabelWidth, kRow);
  const int hiddenWidth = 180;
  panel->anchor(&myTypes, kFieldX, ~(kBelowLists - 38), ~(kFieldX + 2 * kGap + hiddenWidth), kRow);
  for (size_t i = 0; i < myFilters.size(); ++i)
    myTypes.addItem(static_cast<int>(i) + 1, myFilters[i].name.c_str());
  myTypes.addItem(static_cast<int>(myFilters.size()) + 1, string(txAllFiles));
  myTypes.setSelected(1);
  myHidden.setTransparent(true);
  myHidden.setText(string(txShowHidden), -1, false);
  panel->anchor(&myHidden, ~(hiddenWidth + kGap), ~(kBelowLists - 40), hiddenWidth, 20);

  addDialogButtons(myMode == fmFolder ? folderText(txChoose, "Choose")
                                      : string(myMode == fmOpen ? txOpen : txSave),
                   string(txCancel));

  if (myMode == fmFolder) { // folders have no types
    myTypeLabel.hide(false);
    myTypes.hide(false);
  }
  fillPlaces();
  // A start that cannot be shown falls back to the home folder, then to the root.
  _guardchar<char> home;
  const std::string homeDir = cFolderContents::getHome(home) ? home.c_str() : "/";
  if (!(myStart.size() && myListing.read(wholePath(myStart, homeDir))) && !myListing.read(homeDir))
    myListing.read("/");
  fillFiles({});
  if (!myStartName.empty()) myName.setText(myStartName.c_str(), -1, false);
}

bool cFileChooseDialog::onAfterConstruct() {
  myName.focus();
  // A proposed name is selected up to its extension, so typing replaces just the name.
  const size_t dot = myStartName.rfind('.');
  const std::string ext = dot == std::string::npos || dot == 0 ? "" : myStartName.substr(dot);
  const bool ascii = std::all_of(ext.begin(), ext.end(),
                                 [](char c) { return static_cast<unsigned char>(c) < 0x80; });
  if (myName.length() > 0)
    myName.select(0, myName.length() - (ascii ? static_cast<long long>(ext.size()) : 0) - 1);
  return true;
}

void cFileChooseDialog::fillPlaces() {
  myPlaceList = filePlaces();
  std::vector<cListViewChild::sRow> rows;
  for (size_t i = 0; i < myPlaceList.size(); ++i) {
    const sPlace& p = myPlaceList[i];
    rows.push_back(
        {{p.name}, p.volume ? kDrivePicture : kFolderPicture, static_cast<long long>(i)});
  }
  myPlaces.setRows(std::move(rows));
}

std::string cFileChooseDialog::patterns() const {
  if (!myTypedPattern.empty()) return myTypedPattern;
  const int chosen = myTypes.selected();
  if (chosen < 1 || chosen > static_cast<int>(myFilters.size())) return {};
  return myFilters[static_cast<size_t>(chosen - 1)].pattern;
}

void cFileChooseDialog::fillFiles(const std::string& select) {
  myPath.setText(myListing.folder().c_str(), -1, true);
  const char* folderText = textOr(string(txFolder), "Folder");
  std::vector<cListViewChild::sRow> rows;
  int chosen = -1;
  for (int index : myListing.shown(patterns(), myShowHidden, mySort, myAscending)) {
    const sFileEntry& e = myListing.entry(index);
    if (myMode == fmFolder && !e.folder) continue;
    if (!select.empty() && e.name == select) chosen = static_cast<int>(rows.size());
    rows.push_back(
        {{e.shown, e.folder ? std::string() : cFileListing::sizeText(e.size),
          e.folder ? folderText : cFileListing::typeText(e), cFileListing::dateText(e.modified)},
         e.folder ? kFolderPicture : kFilePicture,
         index});
  }
  myFiles.setRows(std::move(rows));
  if (chosen >= 0) myFiles.select(chosen, false);
}

// --- navigation --------------------------------------------------------------------------

bool cFileChooseDialog::show(const std::string& folder, bool quiet) {
  const std::string from = myListing.folder();
  if (!myListing.read(folder)) {
    if (!quiet)
      cMessageForm::errorbox(this, textOr(string(txCannotOpen), "The folder cannot be opened."),
                             nullptr);
    return false;
  }
  // Going up selects the folder just left.
  const bool upward = folder != from && from.rfind(folder == "/" ? "/" : folder + "/", 0) == 0;
  fillFiles(upward ? baseName(from) : std::string());
  return true;
}

bool cFileChooseDialog::go(const std::string& folder) {
  return visit(folder, false);
}

bool cFileChooseDialog::visit(const std::string& folder, bool quiet) {
  const std::string from = myListing.folder();
  if (!show(folder, quiet)) return false;
  if (myListing.folder() != from) {
    myBack.push_back(from);
    if (myBack.size() > kHistory) myBack.erase(myBack.begin());
    myForward.clear();
  }
  return true;
}

bool cFileChooseDialog::back() {
  return travel(myBack, myForward);
}

bool cFileChooseDialog::forward() {
  return travel(myForward, myBack);
}

bool cFileChooseDialog::travel(std::vector<std::string>& from, std::vector<std::string>& to) {
  if (from.empty()) return false;
  const std::string left = myListing.folder();
  const std::string next = from.back();
  from.pop_back();
  if (!show(next, false)) return false;
  to.push_back(left);
  return true;
}

void cFileChooseDialog::refresh() {
  const sFileEntry* e = selectedEntry();
  const std::string keep = e ? e->name : std::string();
  fillPlaces();
  if (myListing.read(myListing.folder())) {
    fillFiles(keep);
    return;
  }
  cMessageForm::errorbox(this, textOr(string(txCannotOpen), "The folder cannot be opened."),
                         nullptr);
  // The folder may have been removed: the nearest one above that is still there.
  std::string up = myListing.folder();
  do {
    up = parentFolder(up);
  } while (!myListing.read(up) && up != "/");
  fillFiles({});
}

void cFileChooseDialog::setShowHidden(bool on) {
  myShowHidden = on;
  myHidden.setChecked(on);
  const sFileEntry* e = selectedEntry();
  fillFiles(e ? e->name : std::string());
}

void cFileChooseDialog::sortBy(int column) {
  const eFileSort sort = static_cast<eFileSort>(column);
  myAscending = sort == mySort ? !myAscending : true;
  mySort = sort;
  myFiles.setSortMark(column, myAscending);
  const sFileEntry* e = selectedEntry();
  fillFiles(e ? e->name : std::string());
}

const char* cFileChooseDialog::folderText(int n, const char* fallback) {
  const cCiomLangData* section = requestNamedLangResource("ciom::folderchoose");
  const char* text = section ? section->string(n) : nullptr;
  return textOr(text, fallback);
}

const sFileEntry* cFileChooseDialog::selectedEntry() const {
  const int row = myFiles.selected();
  if (row < 0) return nullptr;
  return &myListing.entry(static_cast<int>(myFiles.row(row).tag));
}

void cFileChooseDialog::newFolder() {
  _guardchar<char> name;
  if (!cNewFolderNameReqForm::reqNewFolderName(this, name, nullptr) || name.empty()) return;
  const std::string path = wholePath(name.c_str(), myListing.folder());
  if (!cFolderContents::mkdir(path.c_str())) {
    cMessageForm::errorbox(this, textOr(string(txCannotCreate), "The folder cannot be created."),
                           nullptr);
    return;
  }
  if (myListing.read(myListing.folder())) fillFiles(baseName(path));
  myFiles.focus();
}

// --- choosing ----------------------------------------------------------------------------

void cFileChooseDialog::choose(const std::string& path) {
  if (myMode == fmSave && cFolderContents::objtype(path.c_str()) != fotNone &&
      !cMessageForm::confirmbox(this, string(txReplace), nullptr))
    return;
  myChosen = path;
  end_modal(1);
}

void cFileChooseDialog::activate(const sFileEntry& e) {
  const std::string path = wholePath(e.name, myListing.folder());
  if (e.folder) {
    if (go(path)) myName.setText("", -1, true);
    return;
  }
  choose(path);
}

void cFileChooseDialog::acceptTyped() {
  const std::string typed = myName.text() ? myName.text() : "";
  if (myMode == fmFolder) {
    // The selected entry's own name, which the box may show with replacement characters.
    const sFileEntry* e = selectedEntry();
    const std::string path = typed.empty()            ? myListing.folder()
                             : e && typed == e->shown ? wholePath(e->name, myListing.folder())
                                                      : wholePath(typed, myListing.folder());
    if (cFolderContents::objtype(path.c_str()) == fotFolder) return choose(path);
    cMessageForm::errorbox(this, folderText(txNoFolder, "The folder cannot be opened."), nullptr);
    myName.focus();
    return;
  }
  if (typed.empty()) {
    if (const sFileEntry* e = selectedEntry()) {
      activate(*e);
    } else if (myMode == fmSave) {
      cMessageForm::warningbox(this, string(txEnterName), nullptr);
      myName.focus();
    }
    return;
  }
  // The selected entry's own name, which the box may show with replacement characters.
  if (const sFileEntry* e = selectedEntry(); e && typed == e->shown) {
    activate(*e);
    return;
  }
  std::string path = wholePath(typed, myListing.folder());
  // "*.txt" or "docs/*.txt": a filter for the list, in that folder.
  if (isPattern(baseName(path))) {
    const std::string in = parentFolder(path);
    if (in != myListing.folder() && !go(in)) return;
    myTypedPattern = baseName(path);
    fillFiles({});
    myName.setText(myTypedPattern.c_str(), -1, true);
    myName.selectAll();
    return;
  }
  if (cFolderContents::objtype(path.c_str()) == fotFolder) {
    if (go(path)) myName.setText("", -1, true);
    return;
  }
  if (myMode == fmOpen) {
    if (cFolderContents::objtype(path.c_str()) == fotNone) {
      cMessageForm::errorbox(this, string(txNotFound), nullptr);
      myName.focus();
      return;
    }
    choose(path);
    return;
  }
  // Saving: the filter's extension when the name has none, into a folder that exists.
  const int chosen = myTypes.selected();
  const std::string name = baseName(path);
  if (chosen >= 1 && chosen <= static_cast<int>(myFilters.size()) &&
      name.find('.') == std::string::npos) {
    const std::string& ext = myFilters[static_cast<size_t>(chosen - 1)].extension;
    if (!ext.empty()) path += "." + ext;
  }
  if (cFolderContents::objtype(parentFolder(path).c_str()) != fotFolder) {
    cMessageForm::errorbox(this, textOr(string(txCannotOpen), "The folder cannot be opened."),
                           nullptr);
    myName.focus();
    return;
  }
  choose(path);
}

// A typed path that ends in "/" opens its folder at once and leaves the box for the rest.
void cFileChooseDialog::followTyped() {
  const std::string typed = myName.text() ? myName.text() : "";
  if (typed.empty() || typed.back() != '/') return;
  const std::string path = wholePath(typed, myListing.folder());
  if (cFolderContents::objtype(path.c_str()) != fotFolder) return;
  if (visit(path, true)) myName.setText("", -1, true);
}

bool cFileChooseDialog::completeTyped() {
  const std::string typed = myName.text() ? myName.text() : "";
  if (typed.empty()) return false;
  const size_t slash = typed.rfind('/');
  const std::string head = slash == std::string::npos ? std::string() : typed.substr(0, slash + 1);
  const std::string stem = typed.substr(head.size());
  cFileListing other;
  const bool here = head.empty();
  if (!here && !other.read(wholePath(head, myListing.folder()))) return false;
  const cFileListing& listing = here ? myListing : other;
  // Hidden names complete when they are shown or when the stem asks for one.
  const bool hidden = myShowHidden || (!stem.empty() && stem[0] == '.');
  std::vector<int> matches;
  for (int index : listing.shown(patterns(), hidden, fsName, true))
    if (startsWithFolded(listing.entry(index).shown, stem)) matches.push_back(index);
  if (matches.empty()) return false;
  const sFileEntry& first = listing.entry(matches.front());
  std::string completed = first.shown;
  size_t shared = completed.size();
  for (int index : matches)
    shared = std::min(shared, sharedStart(completed, listing.entry(index).shown));
  completed.resize(std::max(shared, stem.size()));
  if (matches.size() == 1 && first.folder) completed += "/";
  if (completed.size() == stem.size()) completed = stem; // keep what was typed
  // Show the first candidate in the list when it is this folder's.
  if (here) {
    for (int row = 0; row < myFiles.count(); ++row)
      if (myFiles.row(row).tag == matches.front()) myFiles.select(row, false);
  }
  if (head + completed != typed) {
    myName.retype((head + completed).c_str()); // a completed folder opens at once
    myName.setCaret(myName.length());
  }
  return true;
}

// --- events ------------------------------------------------------------------------------

bool cFileChooseDialog::onFormAccept() {
  if (myPath.hasFocus()) {
    go(wholePath(myPath.text() ? myPath.text() : "", myListing.folder()));
  } else if (myPlaces.hasFocus() && myPlaces.selected() >= 0) {
    go(myPlaceList[static_cast<size_t>(myPlaces.row(myPlaces.selected()).tag)].path);
  } else if (const sFileEntry* e = selectedEntry(); e && myFiles.hasFocus()) {
    activate(*e);
  } else {
    acceptTyped();
  }
  return true;
}

bool cFileChooseDialog::onDialogButton(int id) {
  if (id == kAcceptButton && myMode == fmFolder) { // the named folder, not one to open
    acceptTyped();
    return true;
  }
  return cCustomForm::onDialogButton(id);
}

bool cFileChooseDialog::onFormCancel() {
  myChosen.reset();
  end_modal(0);
  return true;
}

bool cFileChooseDialog::processKey(int key, bool shift, bool ctrl, bool alt) {
  if (ctrl && !alt && !shift && key == kKeyH) {
    setShowHidden(!myShowHidden);
    return true;
  }
  if (ctrl && !alt && !shift && key == kKeyL) {
    myPath.focus();
    myPath.selectAll();
    return true;
  }
  if (alt && !ctrl && !shift && (key == kKeyLeft || key == kKeyRight)) {
    key == kKeyLeft ? back() : forward();
    return true;
  }
  if (!alt && !ctrl && !shift && key == kKeyTab && myName.hasFocus() && completeTyped())
    return true;
  if ((alt && !ctrl && !shift && key == kKeyUp) ||
      (!alt && !ctrl && !shift && key == kKeyBackspace && myFiles.hasFocus())) {
    up();
    return true;
  }
  if (!alt && !ctrl && !shift && key == kKeyF5) {
    refresh();
    return true;
  }
  return cCustomForm::processKey(key, shift, ctrl, alt);
}

bool cFileChooseDialog::onAction(cChildElement* source, cChildAction* action) {
  const int code = action ? action->code : -1;
  if (source == &myTools && code == cToolBarAction::kCode) {
    switch (static_cast<cToolBarAction*>(action)->id) {
    case kUp:
      up();
      break;
    case kNewFolder:
      newFolder();
      break;
    case kRefresh:
      refresh();
      break;
    default:
      break;
    }
    return true;
  }
  if (source == &myFiles && code >= cListViewChild::kSelected) {
    const int index = static_cast<cListViewChild::cListAction*>(action)->index;
    if (code == cListViewChild::kHeaderClick) {
      sortBy(index);
    } else if (const sFileEntry* e = selectedEntry()) {
      // A chosen file's name goes to the name box; Enter or a double click goes on.
      if ((!e->folder || myMode == fmFolder) && code == cListViewChild::kSelected)
        myName.setText(e->shown.c_str(), -1, true);
      if (code == cListViewChild::kActivated) activate(*e);
    }
    return true;
  }
  if (source == &myPlaces && code == cListViewChild::kActivated) {
    const int index = static_cast<cListViewChild::cListAction*>(action)->index;
    if (index >= 0) go(myPlaceList[static_cast<size_t>(myPlaces.row(index).tag)].path);
    return true;
  }
  if (source == &myName && code == cEditChild::kChangedCode) {
    followTyped();
    return true;
  }
  if (source == &myTypes && code == cComboBoxChild::kChangedCode) {
    myTypedPattern.clear();
    fillFiles({});
    return true;
  }
  if (source == &myHidden && code == cChildAction::acNotify) {
    setShowHidden(myHidden.checked());
    return true;
  }
  return cCustomForm::onAction(source, action);
}
