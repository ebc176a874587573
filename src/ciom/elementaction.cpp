// Delivering actions: notifications bubble from their source up to the first handler,
// posted actions go to their element's own onAction, sent actions are posted and waited
// for. The queues are filled from any thread and emptied on the GUI thread.
#include "base/event.h"
#include "element.h"
#include "hint.h"

cSentChildAction::~cSentChildAction() {
  if (event) event->set();
}

bool cChildElement::notifyAction(cChildAction* action) {
  std::unique_ptr<cChildAction> owned(action ? action : new cChildAction(cChildAction::acNotify));
  cWindowMaker::gaSyncAdd(myNotifyQueue, std::move(owned));
  return processActionNotify(this);
}

bool cChildElement::processActionNotify(cChildElement* element) {
  if (myParent) return myParent->processActionNotify(element);
  return myWinTarget && myWinTarget->_rt_send_action(element);
}

// Moves the element's queue out under the lock and hands each action to handle, deleting
// it after; a handler may destroy the element, and what is left is then dropped unread.
template <class fHandle>
bool cChildElement::deliverQueue(cChildElement* element, tActionQueue cChildElement::*queue,
                                 fHandle handle) {
  if (!valid(element)) return false;
  tActionQueue taken;
  cWindowMaker::gaSyncMove(element->*queue, taken);
  bool all = true;
  for (auto& action : taken) {
    if (!valid(element)) return false;
    all = handle(action.get()) && all;
    action->actionDone();
    action.reset();
  }
  return all;
}

bool cChildElement::processActionFirst(cChildElement* element) {
  return deliverQueue(element, &cChildElement::myNotifyQueue,
                      [element](cChildAction* a) { return element->processAction(element, a); });
}

bool cChildElement::processAction(cChildElement* source, cChildAction* action) {
  if (onAction(source, action)) return true;
  return myParent && myParent->processAction(source, action);
}

bool cChildElement::postAction(cChildAction* action) {
  if (!action) return false;
  cWindowMaker::gaSyncAdd(myPostQueue, std::unique_ptr<cChildAction>(action));
  return processPostNotify(this);
}

bool cChildElement::processPostNotify(cChildElement* element) {
  if (myParent) return myParent->processPostNotify(element);
  return myWinTarget && myWinTarget->_rt_receive_action(element);
}

bool cChildElement::processPostFirst(cChildElement* element) {
  return deliverQueue(element, &cChildElement::myPostQueue,
                      [element](cChildAction* a) { return element->onAction(element, a); });
}

bool cChildElement::sendAction(cSentChildAction* action) {
  if (!action) return false;
  cEvent done;
  if (!done.create(nullptr, false, false)) {
    delete action;
    return false;
  }
  action->event = &done;
  cWindowMaker::gaSyncAdd(myPostQueue, std::unique_ptr<cChildAction>(action));
  if (!processPostNotify(this)) {
    // Refused: take it back, unless a delivery already under way has it.
    std::unique_ptr<cChildAction> back = cWindowMaker::gaSyncTake(myPostQueue, action);
    if (back) {
      action->event = nullptr;
      return false;
    }
  }
  return done.wait();
}

bool cChildElement::onAction(cChildElement* source, cChildAction* action) {
  if (!action) return false;
  if (action->code == cChildAction::acHintClosed && source == this) {
    myHintPopup.reset();
    return true;
  }
  if (action->code == cChildAction::acFocusRequest) {
    root()->processFocusDirect(source);
    return true;
  }
  return false;
}
