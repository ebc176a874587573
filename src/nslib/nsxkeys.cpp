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
