// The definition set being edited: the tree, the file it came from and the form it is in,
// whether it is saved, and every change a user makes to it, each through one operation
// that is one step of the history (undone and redone whole). The main form shows a
// document and edits it only through these; they need no window.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "history.h"
#include "zorb/csigtext.h"
#include "zorb/customsig.h"
#include "zorb/rulesfile.h"

class cRulesDocument {
public:
  // What the content type row offers: the block is 8-bit text, 16-bit text, or anything.
  enum eContent { ctAscii = 1, ctUnicode = 2, ctBinary = 3 };
  // What a change of hit mode came to.
  enum eModeChange { mcChanged, mcUnchanged, mcNoRules };

  cCustomSignaturesTree& tree() { return myTree; }
  const cCustomSignaturesTree& tree() const { return myTree; }
  const std::string& path() const { return myPath; } // empty: never opened or saved
  eRulesForm form() const { return myForm; }
  bool saved() const { return myHistory.atSaved(); }
  bool empty() const { return !myTree.first(); }
  // Definitions by hit mode (0 containers, 1 passive, 2 active).
  int count(int hitMode) const;
  // Called after the saved flag or the path changed.
  void setListener(std::function<void()> listener) { myListener = std::move(listener); }

  // --- history
  bool canUndo() const { return myHistory.canUndo(); }
  bool canRedo() const { return myHistory.canRedo(); }
  // Undoes or redoes the last step; false when there is none. touched receives the
  // definition the step changed, or where it was (null: the top level).
  bool undo(cScanSignature*& touched) { return travel(false, touched); }
  bool redo(cScanSignature*& touched) { return travel(true, touched); }

  // --- files (an open or a new set starts a new history)
  // An empty set, with no file.
  void clear();
  // The file's definitions in place of the set's. When it cannot be read nothing changes.
  // When it is damaged what could be read stays, unsaved and without a name: a save under
  // the damaged file's name would put the part over the whole.
  sRulesFileResult open(const char* path);
  // The file's definitions after the set's, as one step; the set stays saved only if it was
  // empty and the file was whole.
  sRulesFileResult merge(const char* path);
  // Saves to path, atomically: as text for a name ending ".txt", else in the set's form.
  // Only a save that succeeded makes the set saved and gives it the name; after any failure
  // the set is as it was, and so is the file.
  sRulesFileResult save(const char* path);

  // --- definitions
  // A new container named name with the extension "undefined", last under parent (null:
  // the top level).
  cScanSignature* addDefinition(cScanSignature* parent, const char* name);
  // Removes the definition with everything under it.
  void deleteDefinition(cScanSignature* sig);
  // Puts sig (with everything under it) under parent (null: the top level), after `after`,
  // one of parent's children (null: first). False, and nothing changes, when parent lies
  // within sig or the place is the one it has.
  bool move(cScanSignature* sig, cScanSignature* parent, cScanSignature* after);
  // A copy of sig with everything under it, directly after sig; null when it cannot be made.
  cScanSignature* duplicate(cScanSignature* sig);
  // sig with everything under it as definition text; false, with the reason, when the text
  // form cannot hold one of its rules.
  static bool textOf(const cScanSignature* sig, std::string& text, std::string& why);
  // The definitions of a definition text, with or without its header line, last under
  // parent (null: the top level), as one step; first receives the first of them. When the
  // text is not definitions nothing changes and error says which line is wrong.
  bool paste(std::string_view text, cScanSignature* parent, cScanSignature*& first,
             sRulesTextError& error);
  // False when the name is empty or unchanged.
  bool rename(cScanSignature* sig, const char* name);
  // An extension that a file system takes: characters that paths or shells read otherwise
  // become harmless ones, and the text stops where its first "/" stood. False when the
  // text is empty or unchanged.
  bool setExtension(cScanSignature* sig, const char* text);
  // A definition without content rules of its own cannot hit: it stays a container.
  eModeChange setHitMode(cScanSignature* sig, int hitMode);
  void setAllRules(cScanSignature* sig, bool allRules);
  // Replaces the subset (null: none).
  void setSubset(cScanSignature* sig, std::unique_ptr<cScanSigSubset> subset);
  // The definition's own text rules: a text check with its text end, of one kind or none.
  static eContent content(const cScanSignature* sig);
  void setContent(cScanSignature* sig, eContent content);

  // --- rules
  cScanSigRule* addStartRule(cScanSignature* sig, std::unique_ptr<cScanSigRule> rule);
  cScanSigEndRule* addEndRule(cScanSignature* sig, std::unique_ptr<cScanSigEndRule> rule);
  // New values for a rule; false, and nothing changes, when the pattern does not compile or
  // the values are those it has.
  // The rules are sig's own.
  bool setStartRule(cScanSignature* sig, cScanSigRuleUniHexMatch* rule, const char* pattern,
                    unsigned int blockSize, unsigned int position);
  bool setEndRule(cScanSignature* sig, cScanSigEndRuleUniHex* rule, const char* pattern,
                  unsigned int distance);
  bool setSizeRule(cScanSignature* sig, cScanSigEndRuleMatchSize* rule, unsigned int offset,
                   unsigned char bytes, unsigned int increment, unsigned int multiplier,
                   bool bigEndian);
  void removeRule(cScanSignature* sig, cScanSigRule* rule);
  void removeRule(cScanSignature* sig, cScanSigEndRule* rule);

private:
  using tChange = cEditHistory::cChange;
  // Tells the listener, as it goes, when the saved flag changed while it stood.
  struct sSavedWatch {
    cRulesDocument& doc;
    const bool was = doc.saved();
    ~sSavedWatch() { doc.notifyIf(was != doc.saved()); }
  };

  bool travel(bool redo, cScanSignature*& touched);
  // Runs edit, which says whether it changed sig's names, modes or rules, as one step.
  template <class Edit> bool editContent(cScanSignature* sig, Edit edit);
  // Adds a step done; the listener hears when the set stops being saved.
  void commit(cEditHistory::tStep step);
  void commit(tChange change);
  void setPath(const std::string& path);
  void notifyIf(bool changed) {
    if (changed && myListener) myListener();
  }

  cCustomSignaturesTree myTree;
  cEditHistory myHistory;
  std::string myPath;
  eRulesForm myForm = rfBinary;
  std::function<void()> myListener;
};
