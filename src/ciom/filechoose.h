// The file choice dialog, for opening, for saving and for choosing a folder: a "Look in" path with
// Up, New folder and Refresh; the places on the side; the folder's contents in a list (Name, Size,
// Type, Modified; folders first; a click on a header sorts by it); the file name box, the filters
// and the buttons below.
//
// The name box takes a name, a relative or absolute path, or "~/...": Enter opens a folder
// or accepts a file, and a name with * or ? becomes the list's filter. A typed path that
// ends in "/" opens its folder at once, and Tab completes the last part of a path from the
// names of its folder. In the list, Enter or a double click opens a folder or accepts a
// file; Backspace and alt+Up go up; alt+Left and alt+Right go back and forward. ctrl+H
// shows hidden files, ctrl+L goes to the path box, F5 reads the folder again.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "checkbox.h"
#include "combo.h"
#include "customform.h"
#include "edit.h"
#include "filelisting.h"
#include "listview.h"
#include "pictlist.h"
#include "static.h"
#include "toolbar.h"

struct sFileFilter {
  std::string name;      // "Rules file"
  std::string extension; // "qrrs": added to a saved name that has none
  std::string pattern;   // "*.qrrs"; several separated by ";"
};

class cFileChooseDialog : public cCustomForm {
public:
  enum eMode { fmOpen = 0, fmSave = 1, fmFolder = 2 };
  enum eTool { kUp = 1, kNewFolder, kRefresh };
  static constexpr int kWidth = 720, kHeight = 480;

  // Modal over parent; the chosen path, or nothing when cancelled (or for a null parent).
  // A missing or unreadable folder starts in the home folder.
  static std::optional<std::string> open(cChildElement* parent, const char* caption,
                                         const std::vector<sFileFilter>& filters,
                                         const char* folder);
  // The same for saving; name, when given, is put in the name box.
  static std::optional<std::string> save(cChildElement* parent, const char* caption,
                                         const std::vector<sFileFilter>& filters,
                                         const char* folder, const char* name = nullptr);

  // A folder: the list shows folders alone, a double click or Enter in it opens one, and
  // Choose takes the folder named in the name box (a selected one is put there) or, with
  // none, the folder shown.
  static std::optional<std::string> chooseFolder(cChildElement* parent, const char* caption,
                                                 const char* folder);

  cFileChooseDialog(eMode mode, std::vector<sFileFilter> filters, const char* folder,
                    const char* name);

  // Runs the dialog; what open and save do after making it.
  std::optional<std::string> run(cChildElement* parent, const char* caption);

  // Shows a folder; false (with a message, the old folder still shown) when it cannot be
  // opened. The folder left is remembered for back().
  bool go(const std::string& folder);
  bool up() { return go(parentFolder(myListing.folder())); }
  // Through the folders shown before; false when there is none to go to.
  bool back();
  bool forward();
  // Reads the folder again; one that has gone gives way to the nearest folder above it.
  void refresh();
  void setShowHidden(bool on);
  // What Enter in the name box does with the text it holds.
  void acceptTyped();
  // What Tab in the name box does: true when the text named something to complete.
  bool completeTyped();

  const std::string& folder() const { return myListing.folder(); }
  const std::optional<std::string>& chosen() const { return myChosen; }
  cListViewChild& files() { return myFiles; }
  cListViewChild& places() { return myPlaces; }
  cEditChild& nameBox() { return myName; }
  cEditChild& pathBox() { return myPath; }
  cComboBoxChild& types() { return myTypes; }
  cCheckBoxChild& hiddenBox() { return myHidden; }
  cToolBarChild& tools() { return myTools; }

  const char* wantLangResource() override { return "ciom::filechoose"; }
  void onConstruct() override;
  bool onAfterConstruct() override;
  bool onFormAccept() override;
  bool onFormCancel() override;
  bool onDialogButton(int id) override;
  bool onAction(cChildElement* source, cChildAction* action) override;
  bool processKey(int key, bool shift, bool ctrl, bool alt) override;

private:
  void fillPlaces();
  void fillFiles(const std::string& select);
  // Reads and lists a folder without touching the history; quiet: no message on failure.
  bool show(const std::string& folder, bool quiet);
  // show() that remembers the folder left.
  bool visit(const std::string& folder, bool quiet);
  // Shows the last folder of one history and remembers the folder left in the other.
  bool travel(std::vector<std::string>& from, std::vector<std::string>& to);
  void followTyped();
  std::string patterns() const;
  const sFileEntry* selectedEntry() const;
  void activate(const sFileEntry& e);
  void choose(const std::string& path);
  void newFolder();
  void sortBy(int column);
  // A text of the "ciom::folderchoose" section, for the folder mode.
  const char* folderText(int n, const char* fallback);

  eMode myMode;
  std::vector<sFileFilter> myFilters;
  std::string myStart, myStartName;
  cFileListing myListing;
  std::vector<sPlace> myPlaceList;
  eFileSort mySort = fsName;
  bool myAscending = true, myShowHidden = false;
  std::string myTypedPattern; // a filter typed in the name box, until a type is chosen
  std::vector<std::string> myBack, myForward;
  std::optional<std::string> myChosen;

  cStaticChild myPathLabel, myNameLabel, myTypeLabel;
  cEditChild myPath, myName;
  cToolBarChild myTools{cButtonChild::lkFlat};
  cListViewChild myPlaces, myFiles;
  cComboBoxChild myTypes;
  cCheckBoxChild myHidden;
  cPicturesList myToolPictures, myFilePictures;
};
