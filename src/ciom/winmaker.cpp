#include "winmaker.h"

#include <algorithm>

#include "base/locks.h"

namespace {

cCriticalSection& actionLock() {
  static cCriticalSection lock;
  return lock;
}

} // namespace

void cWindowMaker::gaSyncAdd(tActionQueue& queue, std::unique_ptr<cChildAction> action) {
  cSafeCriticalSectionAccess guard(&actionLock());
  queue.push_back(std::move(action));
}

void cWindowMaker::gaSyncMove(tActionQueue& from, tActionQueue& to) {
  cSafeCriticalSectionAccess guard(&actionLock());
  for (auto& action : from) to.push_back(std::move(action));
  from.clear();
}

std::unique_ptr<cChildAction> cWindowMaker::gaSyncTake(tActionQueue& queue,
                                                       const cChildAction* action) {
  cSafeCriticalSectionAccess guard(&actionLock());
  const auto it = std::find_if(queue.begin(), queue.end(),
                               [action](const auto& queued) { return queued.get() == action; });
  if (it == queue.end()) return nullptr;
  std::unique_ptr<cChildAction> taken = std::move(*it);
  queue.erase(it);
  return taken;
}
