// What a document's edits can be undone and redone by. Each user action is one step of
// one or more changes to the tree, and each change is a toggle between its two states:
// undoing toggles a step's changes last to first, redoing first to last. A change holds
// what is not in the tree in its present state (the other content of a node, or a node
// taken out), so nodes keep their identity through any number of undos and redos.
#pragma once

#include <cstddef>
#include <deque>
#include <memory>
#include <vector>

#include "zorb/customsig.h"

class cEditHistory {
public:
  static constexpr size_t kSteps = 1000; // the oldest steps go beyond these

  class cChange {
  public:
    // node's names, modes and rules were other's.
    static cChange content(cScanSignature* node, std::unique_ptr<cScanSignature> other);
    // node was put into the tree.
    static cChange placed(cScanSignature* node);
    // node is out of the tree; it goes back under parent, after `after` (null: first).
    static cChange taken(std::unique_ptr<cScanSignature> node, cScanSignature* parent,
                         cScanSignature* after);
    // node was under parent, after `after` (null: first).
    static cChange moved(cScanSignature* node, cScanSignature* parent, cScanSignature* after);

    void toggle(cCustomSignaturesTree& tree);
    // The definition to show once toggled: the node, or its parent when it is out of the
    // tree (null: the top level).
    cScanSignature* touched() const;

  private:
    enum eKind { ckContent, ckPresence, ckPlace };
    cChange(eKind kind, cScanSignature* node) : myKind(kind), myNode(node) {}

    eKind myKind;
    cScanSignature* myNode;
    std::unique_ptr<cScanSignature> myHeld; // the other content, or the node while out
    cScanSignature* myParent = nullptr;     // where the node goes when toggled
    cScanSignature* myAfter = nullptr;
  };
  using tStep = std::vector<cChange>;

  // No steps, at a saved state or at none.
  void clear(bool saved);
  // A step done: what could be redone is gone.
  void add(tStep step);
  bool canUndo() const { return myDone > 0; }
  bool canRedo() const { return myDone < mySteps.size(); }
  // The definition the step touched (null: the top level); call only when there is one.
  cScanSignature* undo(cCustomSignaturesTree& tree);
  cScanSignature* redo(cCustomSignaturesTree& tree);
  void markSaved() { mySavedAt = static_cast<long long>(myDone); }
  bool atSaved() const { return mySavedAt == static_cast<long long>(myDone); }
  size_t steps() const { return mySteps.size(); }

private:
  static constexpr long long kNowhere = -1; // the saved state cannot be reached

  std::deque<tStep> mySteps;
  size_t myDone = 0;       // steps done; those after them can be redone
  long long mySavedAt = 0; // the count of steps done at the last save
};
