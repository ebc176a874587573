// Fuzz target: every converter on any bytes. The first byte picks a code page, the rest
// is the text, read both as bytes and as UTF-16 units.
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "base/str.h"
#include "cihex/search.h"

namespace {

const int kPages[] = {0,   65001, 1252, 1251, 37,    437,   870,   10007, 28591, 28596,
                      932, 936,   949,  950,  50221, 50227, 51932, 51936, 1253,  -1};

void check(bool ok) {
  if (!ok) __builtin_trap();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size < 1 || size > 8192) return 0;
  const int cp = kPages[data[0] % (sizeof kPages / sizeof kPages[0])];
  const char* bytes = reinterpret_cast<const char*>(data + 1);
  const long long n = static_cast<long long>(size - 1);

  // Decoding: the sizing companion and the conversion agree, and the capacity holds.
  const long long need = __a2w_require(bytes, n, cp);
  std::vector<unsigned short> wide(static_cast<size_t>(need) + 1, 0xBEEF);
  check(__a2w(bytes, n, wide.data(), need, cp) == need);
  check(wide[static_cast<size_t>(need)] == 0xBEEF);
  std::vector<unsigned short> half(static_cast<size_t>(need / 2) + 1, 0xBEEF);
  check(__a2w(bytes, n, half.data(), need / 2, cp) <= need / 2);
  check(half[static_cast<size_t>(need / 2)] == 0xBEEF);

  // Encoding the decoded units, and the raw bytes taken as units.
  std::vector<unsigned short> units((size - 1) / 2 + 1, 0);
  std::memcpy(units.data(), bytes, (size - 1) / 2 * 2);
  for (const auto* text : {&wide, &units}) {
    const long long count = static_cast<long long>(text->size()) - 1;
    const long long out = __w2a_require(text->data(), count, cp);
    std::string encoded(static_cast<size_t>(out) + 1, '\x7f');
    check(__w2a(text->data(), count, encoded.data(), out, cp) == out);
    check(encoded[static_cast<size_t>(out)] == '\x7f');
  }

  _guardchar<char> composed;
  _precompose_glyphs(units.data(), static_cast<long long>(units.size()) - 1, composed, data[0] & 1);
  cStringKey key(bytes, n);
  check(key.utf8().size() == static_cast<size_t>(key.words()) * 4);

  const std::string text(bytes, static_cast<size_t>(n));
  _typebuf<unsigned char> hexBytes;
  sHexSearchRule::cnvHexToBytes(hexBytes, text.c_str(), -1);
  sHexSearchRule::_pattern pattern;
  sHexSearchRule::cnvText(pattern, text.c_str(), data[0] % 42 - 1, data[0] & 2);
  return 0;
}
