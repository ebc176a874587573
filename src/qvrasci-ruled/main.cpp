// qvraci-ruled: the rules editor.
#include <dlfcn.h>

#include "mainci.h"

int main(int argc, char** argv) {
  Dl_info info{};
  if (dladdr(reinterpret_cast<void*>(&main), &info)) gAppInstance = info.dli_fbase;
  return runUI(nullptr, nullptr, 0, argc, argv);
}
