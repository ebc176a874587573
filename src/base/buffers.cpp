#include "buffers.h"

namespace base_detail {

void throwOutOfBounds(const char* message, unsigned int line) {
  throw cException("src/base/buffers", line, 0, message);
}

} // namespace base_detail
