// Fuzz target: the configuration file from any bytes. Whatever init() makes of them, a
// write afterwards must leave a file that loads again with the value written.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>
#include <unistd.h>

#include "qvra/config.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size > 65536) return 0;
  static const std::string path = "/tmp/qvraci-fuzz-config-" + std::to_string(getpid());
  FILE* f = std::fopen(path.c_str(), "wb");
  if (!f) return 0;
  std::fwrite(data, 1, size, f);
  std::fclose(f);

  int value = 0;
  {
    cQVRAConfigFile store;
    store.init(path.c_str());
    store.tagInt(value, 1);
    _typebuf<unsigned char> out;
    store.tag(7, out);
    if (!store.setInt(0x5A5A, 1234567)) __builtin_trap();
  }
  cQVRAConfigFile again;
  if (!again.init(path.c_str()) || !again.tagInt(value, 1234567) || value != 0x5A5A) {
    __builtin_trap();
  }
  return 0;
}
