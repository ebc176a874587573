#include "timer.h"

namespace {

const cTimer::sDriver* gDriver = nullptr;

} // namespace

void cTimer::setDriver(const sDriver* driver) {
  gDriver = driver;
}

bool cTimer::start(unsigned ms, bool repeat) {
  stop();
  if (!gDriver || !gDriver->start) return false;
  myRepeat = repeat;
  myId = gDriver->start(ms, repeat, &cTimer::fired, this);
  return myId != 0;
}

void cTimer::stop() {
  if (myId && gDriver && gDriver->stop) gDriver->stop(myId);
  myId = 0;
}

void cTimer::fired(void* self) {
  auto* timer = static_cast<cTimer*>(self);
  // A one-shot timer is over before its function runs, which may start it again.
  if (!timer->myRepeat) timer->myId = 0;
  if (timer->myFire) timer->myFire();
}
