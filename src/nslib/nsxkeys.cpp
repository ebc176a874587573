// Keys and text of the X11 backend in the toolkit's codes.
#include <X11/keysym.h>

#include "nsxlib.h"

namespace {

bool latinPrintable(unsigned long sym) {
  return sym >= 0x20 && sym <= 0x7E;
}

int fromLatin(unsigned long sym) {
  return sym >= 'a' && sym <= 'z' ? static_cast<int>(sym - 'a' + 'A') : static_cast<int>(sym);
}

} // namespace

int nsxToolkitKey(unsigned long sym, const std::vector<unsigned long>& otherGroups) {
  if (latinPrintable(sym)) return fromLatin(sym);
  if (sym == XK_Return || sym == XK_KP_Enter) return 397;
  if (sym == XK_ISO_Left_Tab) return 265;
  // F8 and above have no code; nor have modifier keys and locks other than Num Lock.
  if (sym >= XK_F8 && sym <= XK_F35) return 0;
  if (sym >= XK_Shift_L && sym <= XK_Hyper_R) return 0;
  if (sym >= 0xFF00 && sym <= 0xFFFF) return static_cast<int>(sym - 0xFE00);
  // A letter key of another script still reports its Latin cap when a layout has one.
  if (sym > 0xFF) {
    for (unsigned long other : otherGroups) {
      if (latinPrintable(other)) return fromLatin(other);
    }
  }
  return 0;
}

void nsxTextUnits(const char* utf8, int len, std::vector<unsigned short>& units) {
  const auto* s = reinterpret_cast<const unsigned char*>(utf8);
  const unsigned char* end = s + len;
  while (s < end) {
    unsigned c = *s++;
    int more = c >= 0xF0 ? 3 : c >= 0xE0 ? 2 : c >= 0xC0 ? 1 : 0;
    if (c >= 0x80 && c < 0xC0) continue; // a stray continuation byte
    if (more) c &= 0x3F >> more;
    for (; more && s < end && (*s & 0xC0) == 0x80; --more) c = c << 6 | (*s++ & 0x3F);
    if (more) continue; // cut short
    if (c < 0x20 || (c >= 0x7F && c <= 0x9F) || c > 0x10FFFF) continue;
    if (c >= 0x10000) {
      c -= 0x10000;
      units.push_back(static_cast<unsigned short>(0xD800 | c >> 10));
      units.push_back(static_cast<unsigned short>(0xDC00 | (c & 0x3FF)));
    } else {
      units.push_back(static_cast<unsigned short>(c));
    }
  }
}
