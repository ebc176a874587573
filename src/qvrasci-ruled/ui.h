// The editor's main form: the definition tree on the left; on the right a small rule bar
// over a property sheet that shows the statistics of the whole set (root selected) or the
// properties and rules of the selected definition. A tool bar at the top carries the file
// commands and the sample test. The form shows a document (document.h) and changes it only
// through the document's operations; every action edits it, loads or saves it, or tests it
// on sample files.
//
// ui.cpp builds the form and its two views, ui_item.cpp adds and removes definitions and
// rules, ui_edit.cpp edits the rows of a definition, ui_io.cpp loads and saves, ui_find.cpp
// finds definitions, and uisamples.cpp tests the definitions on sample files.
#pragma once

#include <map>
#include <string>
#include <utility>
#include <vector>

#include "ciom/customform.h"
#include "ciom/edit.h"
#include "ciom/filechoose.h"
#include "ciom/panel.h"
#include "ciom/pictlist.h"
#include "ciom/propsheet.h"
#include "ciom/split.h"
#include "ciom/static.h"
#include "ciom/toolbar.h"
#include "ciom/treeview.h"
#include "document.h"

// A text in the main window's footer, with the texts of "ruled::status".
class cStatusLine : public cStaticChild {
public:
  enum eText { txNoFile = 0, txUnsaved = 1 };
  const char* wantLangResource() override { return "ruled::status"; }
};

class cRuledMainForm : public cCustomForm {
public:
  using tItem = cTreeViewChild::cTreeViewItem;

  enum eTool { kNew = 10, kOpen = 20, kSave = 30, kAbout = 40, kTest = 50 };
  enum eRuleTool { kNewType = 10, kMerge = 20, kNewStart = 30, kNewEnd = 40, kRemove = 50 };
  // The tree's pictures, by hit mode (container, passive, active) after the root's.
  enum eTreePicture { tpRoot = 1, tpContainer = 2, tpPassive = 3, tpActive = 4 };
  // Sections and rows of the signature view.
  enum eSection { kGeneral = 1, kHitConditions = 2, kStartRules = 3, kEndRules = 4 };
  enum eRow {
    rName = 1,
    rExtension = 2,
    rContentType = 1,
    rScope = 2,
    rScopeDetail = 3,
    rHitMode = 4,
    rAllRules = 5,
  };
  // The root view's only section and its rows.
  enum eStatistics { kStatistics = 1, rActive = 1, rPassive = 2, rContainers = 3 };
  static constexpr int kWorkSize = 16384;
  static constexpr unsigned kInheritedColour = 0xA0A0A0;

  cRuledMainForm() = default;

  // The tool bar lives in the header band, with or without a window manager's title bar.
  bool fillsHeaderBand() const override { return true; }

  // --- the parts, for those who drive the form
  cToolBarChild& tools() { return myTools; }
  cToolBarChild& ruleTools() { return myRuleTools; }
  cTreeViewChild& tree() { return myTree; }
  cPropSheetChild& sheet() { return mySheet; }
  cRulesDocument& document() { return myDoc; }
  cScanSignature* current() const { return myCurrent; }
  const std::string& lastFolder() const { return myLastFolder; }

  // A rules file to open once the window is up (the command line's).
  void openAtStart(const char* path) { myStartFile = path ? path : ""; }

  // --- views
  void activateMain();
  void activate(cScanSignature* sig);
  // Selects a definition in the tree (its parents opened) and shows it beside; null: the
  // root and the statistics.
  void showDefinition(const cScanSignature* sig);
  // The tree built anew from a document just loaded, the root selected.
  void redrawRules();
  // The tree built anew after an edit of its shape, then sig shown (null: the root).
  void rebuildTree(const cScanSignature* show);
  // Undoes the last step, or redoes the next, and shows the definition it touched.
  void undo(bool redo);

  // --- finding definitions (ui_find.cpp)
  void openFind();
  void closeFind();
  // Selects the next (previous) definition that matches the find field's text, from the
  // selected one itself when fromCurrent.
  void findNext(bool backward, bool fromCurrent);
  cEditChild& findField() { return myFind; }

  // --- the tree's contents
  void newSig(tItem* item);
  // Asks, then removes the definition with everything under it.
  void delSig(tItem* item);
  // The selected definition with everything under it to the clipboard as definition text;
  // a cut then removes it.
  void copySig(bool cut);
  // Definitions from the clipboard's text under the selected definition (the top level for
  // the root); text that is not definitions is refused with the line that is wrong.
  void pasteSigs();
  void duplicateSig();
  // The selected definition one place down or up among its siblings.
  void moveSig(bool down);
  // A definition dragged in the tree goes where it was dropped.
  void moveDropped(const cTreeViewChild::cTreeDropAction& drop);
  void newStr();
  void newEnd();
  void rmRule();

  // --- files: the dialogs, then the work
  void loadSigs(bool merge);
  void saveSigs();
  // Loads path, replacing the set or merging into it; errors are shown. False when the
  // file could not be opened.
  bool loadFile(const char* path, bool merge);
  // Saves to path beside and over the old file; errors are shown.
  void saveFile(const char* path);
  // Asks for a folder of sample files and tests the definitions, as they stand, on them.
  void testSamples();

  void processPropAction(cPropSheetChild::cPropSheetAction* action);

  // A text resource's format with each %s or %d replaced by the next argument (nothing
  // when they run out), %% by %; nothing else is read from it.
  static std::string format(const char* pattern, std::initializer_list<std::string> args);
  // The text number of a field's size name, by its size code 0..6.
  static int fieldSizeText(int code);
  // The tree's picture for a definition, by its hit mode.
  static int treePicture(const cScanSignature* sig);

  const char* wantLangResource() override { return "ruled::main"; }
  void onConstruct() override;
  bool onAfterConstruct() override;
  bool onAction(cChildElement* source, cChildAction* action) override;
  bool processKey(int key, bool shift, bool ctrl, bool alt) override;
  bool onFormCancel() override { return false; } // Escape does not close the editor
  bool onClose() override;

  // Pictures shared by every main form: the tool bar's, the tree's, and the rule bar's in
  // their normal, active and disabled looks.
  static cPicturesList myToolImages, myTreeImages, myCtbImages, myCtbImagesAct, myCtbImagesDsb;

private:
  static void loadPictures();
  // Where the file dialogs start next time, also after a restart.
  void setLastFolder(const std::string& folder);
  // The file dialogs' filters: both forms of rules files.
  std::vector<sFileFilter> rulesFilters(bool open);
  // The message text, with the file and the reason from result on a line of its own.
  void fileError(int text, const sRulesFileResult& result);
  void buildTools();
  // The window refuses to shrink below what shows every control.
  void setMinimumSize();
  void buildFind();
  // The find field's background: its own, or a warning while nothing matches.
  void markFound(bool found);
  void onTool(int id);
  void onRuleTool(int id);
  void onTreeAction(cTreeViewChild::cTreeItemAction* action);
  void contextMenu(cTreeViewChild::cTreeItemCtxAction* action);
  // The rule bar with these buttons shown (in the order of their ids).
  void showRuleTools(std::initializer_list<int> ids);
  // True when the user may drop the set: it is saved, or they say yes.
  bool mayDiscard();
  // The footer: the file's path, and whether the set has unsaved changes.
  void showState();
  void clearSelection();
  // Removes the definition at once; the selection moves to a neighbour.
  void removeSig(tItem* item);
  bool treeFocused();
  // ctrl+F, F3 and shift+F3 anywhere; Enter and Escape in the find field.
  bool findKey(int key, bool shift, bool ctrl, bool alt);
  // The tree's own commands: the clipboard, moves among siblings, Delete.
  bool treeKey(int key, bool shift, bool ctrl, bool alt);

  // Signature view parts.
  void showGeneral(cScanSignature* sig);
  void showContentType(cScanSignature* sig);
  void showScope(cScanSignature* sig);
  void showHitMode(cScanSignature* sig);
  void showStartRules(cScanSignature* sig);
  void showEndRules(cScanSignature* sig);
  // A rule row's text: its description, in the work buffer.
  const char* describe(const cScanSigRule* rule);
  const char* describe(const cScanSigEndRule* rule);

  // Edits of the signature view's rows (ui_edit.cpp).
  void editName();
  void editExtension();
  void editHitMode();
  void editScope();
  void editContentType();
  void editStartRule(cScanSigRule* rule);
  void editEndRule(cScanSigEndRule* rule);
  // A popup menu of texts at x, y on the desktop, as (id, text number) pairs; width 0 makes
  // it a little wider than its widest text. The chosen id, or -1.
  int menu(const std::vector<std::pair<int, int>>& choices, int x, int y, int width, int hot);
  // A drop-down of texts (ids 1, 2, ...) under a row's value; the chosen id, or -1.
  int propExtend(int section, int row, std::initializer_list<int> texts, int current);
  void setTreePicture(cScanSignature* sig);

  cToolBarChild myTools{cButtonChild::lkFlat};
  cSplitterChild mySplit;
  cTreeViewChild myTree;
  cPanelChild myRight;
  cToolBarChild myRuleTools{cButtonChild::lkFlat};
  cPropSheetChild mySheet;
  cStatusLine myFile, myUnsaved;
  cPanelChild myFindBar;
  cStaticChild myFindLabel;
  cEditChild myFind;
  unsigned myFindBackground = 0xFFFFFF;

  cRulesDocument myDoc;
  std::string myLastFolder, myStartFile, mySampleFolder;
  char myWork[kWorkSize] = {};
  cScanSignature* myCurrent = nullptr;
  std::map<int, cScanSigRule*> myStrRows;
  std::map<int, cScanSigEndRule*> myEndRows;
  cScanSigRule* mySelStr = nullptr;
  cScanSigEndRule* mySelEnd = nullptr;
};
