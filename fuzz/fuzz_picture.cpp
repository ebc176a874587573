// Fuzz target: built-in picture resources from any bytes, and the operations on what loads.
#include <cstddef>
#include <cstdint>

#include "ciom/picture.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  cPicture p;
  if (!p.create(data, static_cast<unsigned>(size))) {
    if (!p.empty()) __builtin_trap();
    return 0;
  }
  if (p.width() < 1 || p.height() < 1 || p.width() > cPicture::kMaxSide) __builtin_trap();
  cPicture out;
  if (p.width() <= 256 && p.height() <= 256) {
    p.scaling(p.width() / 2 + 1, p.height() * 2, &out);
    p.hStretch(p.width() * 3, p.width() / 3, &out);
    p.subPictTo({p.width() / 2, -1, p.width(), p.height()}, &out);
    p.rotate(90);
    p.blend(1, -1, &out);
  }
  p.mkDisabled();
  p.mkActive();
  return 0;
}
