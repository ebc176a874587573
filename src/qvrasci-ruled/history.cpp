#include "history.h"

#include <utility>

using tChange = cEditHistory::cChange;

tChange tChange::content(cScanSignature* node, std::unique_ptr<cScanSignature> other) {
  cChange change(ckContent, node);
  change.myHeld = std::move(other);
  return change;
}

tChange tChange::placed(cScanSignature* node) {
  return cChange(ckPresence, node);
}

tChange tChange::taken(std::unique_ptr<cScanSignature> node, cScanSignature* parent,
                       cScanSignature* after) {
  cChange change(ckPresence, node.get());
  change.myHeld = std::move(node);
  change.myParent = parent;
  change.myAfter = after;
  return change;
}

tChange tChange::moved(cScanSignature* node, cScanSignature* parent, cScanSignature* after) {
  cChange change(ckPlace, node);
  change.myParent = parent;
  change.myAfter = after;
  return change;
}

void tChange::toggle(cCustomSignaturesTree& tree) {
  switch (myKind) {
  case ckContent:
    myNode->swapContent(*myHeld);
    return;
  case ckPresence:
    if (myHeld) {
      tree.insert(myParent, myAfter, std::move(myHeld));
    } else {
      myParent = myNode->parentSig();
      myAfter = static_cast<cScanSignature*>(myNode->prev());
      myHeld.reset(static_cast<cScanSignature*>(tree.remove(myNode).release()));
    }
    return;
  case ckPlace: {
    cScanSignature* parent = myNode->parentSig();
    auto* after = static_cast<cScanSignature*>(myNode->prev());
    tree.move(myNode, myParent, myAfter);
    myParent = parent;
    myAfter = after;
    return;
  }
  }
}

cScanSignature* tChange::touched() const {
  return myKind == ckPresence && myHeld ? myParent : myNode;
}

void cEditHistory::clear(bool saved) {
  mySteps.clear();
  myDone = 0;
  mySavedAt = saved ? 0 : kNowhere;
}

void cEditHistory::add(tStep step) {
  if (step.empty()) return;
  if (mySavedAt > static_cast<long long>(myDone)) mySavedAt = kNowhere; // it was redoable
  mySteps.erase(mySteps.begin() + static_cast<std::ptrdiff_t>(myDone), mySteps.end());
  mySteps.push_back(std::move(step));
  ++myDone;
  if (mySteps.size() > kSteps) {
    mySteps.pop_front();
    --myDone;
    mySavedAt = mySavedAt > 0 ? mySavedAt - 1 : kNowhere;
  }
}

cScanSignature* cEditHistory::undo(cCustomSignaturesTree& tree) {
  tStep& step = mySteps[--myDone];
  for (auto change = step.rbegin(); change != step.rend(); ++change) change->toggle(tree);
  return step.front().touched();
}

cScanSignature* cEditHistory::redo(cCustomSignaturesTree& tree) {
  tStep& step = mySteps[myDone++];
  for (cChange& change : step) change.toggle(tree);
  return step.front().touched();
}
