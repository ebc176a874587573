// Double-byte code pages 932, 936, 949 and 950: one decoder over their published tables.
#include "codec.h"
#include "tables/tables.h"

namespace base_codec {

namespace {

const base_tables::sDbcsTable* dbcsTable(int cp) {
  switch (cp) {
  case 932:
    return &base_tables::cp932;
  case 936:
    return &base_tables::cp936;
  case 949:
    return &base_tables::cp949;
  case 950:
    return &base_tables::cp950;
  default:
    return nullptr;
  }
}

unsigned short pairUnit(const base_tables::sDbcsTable& t, unsigned char lead, unsigned char trail) {
  if (trail < t.trailMin || trail > t.trailMax) return 0;
  const int width = t.trailMax - t.trailMin + 1;
  return t.cells[(lead - t.leadMin) * width + (trail - t.trailMin)];
}

} // namespace

void decodeDbcs(int cp, const unsigned char* s, long long n, sUnitSink& out) {
  const base_tables::sDbcsTable* t = dbcsTable(cp);
  if (!t) return;
  long long i = 0;
  while (i < n && !out.full()) {
    const unsigned char b = s[i];
    const unsigned short single = t->single[b];
    if (single || b == 0) {
      out.put(single);
      ++i;
    } else if (b < t->leadMin || b > t->leadMax) {
      out.put(kReplacement);
      ++i;
    } else if (i + 1 >= n) {
      break; // a lead byte cut off by the end of the text
    } else if (unsigned short u = pairUnit(*t, b, s[i + 1])) {
      out.put(u);
      i += 2;
    } else {
      // An unmapped pair: an ASCII trail byte is read again as a character of its own.
      out.put(kReplacement);
      i += s[i + 1] < 0x80 ? 1 : 2;
    }
  }
}

} // namespace base_codec
