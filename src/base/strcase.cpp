// Case mapping, the white-space test and canonical composition.
#include <algorithm>
#include <vector>

#include "codec.h"
#include "str.h"
#include "tables/tables.h"

namespace {

unsigned short mapCase(const base_tables::sCasePair* pairs, int count, unsigned short u) {
  const auto* end = pairs + count;
  const auto* it = std::lower_bound(
      pairs, end, u, [](const base_tables::sCasePair& p, unsigned short v) { return p.from < v; });
  return it != end && it->from == u ? it->to : u;
}

// The char forms widen the byte as a signed value, so bytes of 0x80 and above become
// units of 0xFF80 and above, which no case pair maps; only ASCII letters change.
unsigned short widen(char c) {
  return static_cast<unsigned short>(static_cast<short>(static_cast<signed char>(c)));
}

unsigned short swapped(unsigned short u) {
  return static_cast<unsigned short>((u >> 8) | (u << 8));
}

} // namespace

unsigned short __acp_lower(unsigned short u) {
  if (u < 0x80) return u >= 'A' && u <= 'Z' ? u + 32 : u;
  return mapCase(base_tables::lowerPairs, base_tables::lowerPairsCount, u);
}

unsigned short __acp_upper(unsigned short u) {
  if (u < 0x80) return u >= 'a' && u <= 'z' ? u - 32 : u;
  return mapCase(base_tables::upperPairs, base_tables::upperPairsCount, u);
}

char __acp_lower(char c) {
  return static_cast<char>(__acp_lower(widen(c)));
}
char __acp_upper(char c) {
  return static_cast<char>(__acp_upper(widen(c)));
}

bool __acp_isspace(unsigned short u) {
  return u == 9 || u == 10 || u == 13 || u == 32;
}
bool __acp_isspace(char c) {
  return __acp_isspace(static_cast<unsigned short>(static_cast<unsigned char>(c)));
}

unsigned short _get_precomposed_glyph(const unsigned short* pair) {
  if (!pair) return 0;
  const unsigned int key = pair[0] * 65536u + pair[1];
  const auto* begin = base_tables::compositions;
  const auto* end = begin + base_tables::compositionCount;
  const auto* it =
      std::lower_bound(begin, end, key, [](const base_tables::sComposition& c, unsigned int k) {
        return c.key < k;
      });
  return it != end && it->key == key ? it->composed : 0;
}

void _precompose_glyphs(const unsigned short* src, long long n, _guardchar<char>& out, bool swap) {
  out.clear();
  if (!src || n == 0) return;
  n = base_codec::measure(src, n);
  auto unitAt = [&](long long i) {
    const unsigned short u = swap ? swapped(src[i]) : src[i];
    return u < 32 ? static_cast<unsigned short>('.') : u;
  };
  std::vector<unsigned short> composed;
  composed.reserve(static_cast<size_t>(n) + 1);
  for (long long i = 0; i < n; ++i) {
    const unsigned short pair[2] = {unitAt(i),
                                    i + 1 < n ? unitAt(i + 1) : static_cast<unsigned short>(0)};
    const unsigned short glyph = i + 1 < n ? _get_precomposed_glyph(pair) : 0;
    composed.push_back(glyph ? glyph : pair[0]);
    if (glyph) ++i; // both units are consumed; the result is never composed again
  }
  composed.push_back(0);
  _w2pc(composed.data(), out, static_cast<long long>(composed.size()) - 1);
}
