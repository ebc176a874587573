// The edit box's text: the buffers, editing with undo, the clipboard and numbers.
#include "edit.h"

#include <algorithm>
#include <cstring>
#include <new>

#include "base/str.h"
#include "ciom/themeimages.h"
#include "theme.h"

namespace {

constexpr unsigned short kBullet = 0x2022;
constexpr size_t kUndoDepth = 100;
// What a deletion inserts: memcpy may not be handed a null pointer, even for no units.
constexpr unsigned short kNoUnits[1] = {0};

// Theme colours of the default look.
constexpr int kInk = 13, kWhite = 14, kGreyInk = 8, kBannerInk = 5, kReadonlyGround = 15;
constexpr int kHoverEdge = 25, kSelection = 16, kSelectionInactive = 21;

} // namespace

cEditChild::cEditChild()
    : myBlink([this] {
        myCaretOn = !myCaretOn;
        repaint();
      }) {
  setHoverLook(true);
  setMaxLen(kDefaultMaxLen);
  const cCITheme& theme = cCITheme::theme();
  const unsigned edge = theme.elementColour(tiEditEdge);
  for (sColours& c : myColours) c = {theme.getColor(kInk), theme.getColor(kWhite), edge};
  myColours[ctHover].border = theme.getColor(kHoverEdge);
  myColours[ctFocused].border = theme.elementColour(tiEditFocusEdge);
  myColours[ctReadonly].bg = theme.getColor(kReadonlyGround);
  myColours[ctDisabled] = {theme.getColor(kGreyInk), theme.elementColour(tiEditDisabledFill), edge};
  mySelection = theme.getColor(kSelection);
  mySelectionInactive = theme.getColor(kSelectionInactive);
  mySelectedText = theme.getColor(kWhite);
  myBannerColour = theme.getColor(kBannerInk);
}

void cEditChild::onInitData() {
  myScrollX = 0;
  myLayoutDirty = true;
}

void cEditChild::onConstruct() {
  myLineHeight = 0;
}

// --- buffers ---------------------------------------------------------------------------

bool cEditChild::setMaxLen(long long n) {
  if (n < 0 || n > kMaxMaxLen) return false;
  try {
    _typebuf<unsigned short> text, mask;
    _typebuf<int> pos;
    text.set(n + 1);
    mask.set(n + 1);
    pos.set(n + 1);
    std::fill(mask.begin(), mask.begin() + n, kBullet);
    myText = std::move(text);
    myMask = std::move(mask);
    myPos = std::move(pos);
  } catch (const std::bad_alloc&) {
    return false;
  }
  myLength = myCaret = 0;
  mySelFirst = mySelLast = -1;
  myUndo.clear();
  myRedo.clear();
  myLayoutDirty = myUtf8Dirty = true;
  repaint();
  return true;
}

const unsigned short* cEditChild::shown() const {
  return myPassword ? myMask.data() : myText.data();
}

const char* cEditChild::text() {
  if (myUtf8Dirty) {
    unitsToUtf8(myText.data(), myLength, myUtf8);
    myUtf8Dirty = false;
  }
  return myUtf8.c_str();
}

long long cEditChild::text(char* out, long long cap) {
  const char* t = text();
  const auto len = static_cast<long long>(std::strlen(t));
  if (out && cap > 0) _strncpy_s(out, cap, t, len);
  return len;
}

bool cEditChild::setText(const char* utf8, long long len, bool repaintNow) {
  _typebuf<unsigned short> wide;
  if (utf8) utf8ToUnits(utf8, len, wide);
  long long n = std::min(wide.count(), maxLen());
  if (n > 0 && n < wide.count() && isHighSurrogate(wide[n - 1])) --n; // a pair cut in half
  if (n > 0) std::copy(wide.begin(), wide.begin() + n, myText.begin());
  myText[n] = 0;
  myLength = n;
  myCaret = 0; // the start of a new text is what shows, as in other toolkits
  mySelFirst = mySelLast = -1;
  myPendingHigh = 0;
  myUndo.clear();
  myRedo.clear();
  myLastEdit = ekOther;
  myLayoutDirty = myUtf8Dirty = true;
  if (repaintNow) repaint();
  return true;
}

void cEditChild::wipeText() {
  setText("", 0, true);
}

// --- editing ---------------------------------------------------------------------------

cEditChild::sSnapshot cEditChild::snapshot() const {
  return {std::vector<unsigned short>(myText.begin(), myText.begin() + myLength), myCaret,
          mySelFirst, mySelLast};
}

void cEditChild::restore(const sSnapshot& shot) {
  const long long n = std::min(static_cast<long long>(shot.text.size()), maxLen());
  std::copy(shot.text.begin(), shot.text.begin() + n, myText.begin());
  myText[n] = 0;
  myLength = n;
  myCaret = std::min(shot.caret, n);
  const bool fits = shot.selLast < n;
  mySelFirst = fits ? shot.selFirst : -1;
  mySelLast = fits ? shot.selLast : -1;
  myLayoutDirty = myUtf8Dirty = true;
  restartBlink();
  repaint();
  notifyAction(new cChildAction(kChangedCode));
}

// Takes a snapshot for undo before a change; consecutive typing makes one step.
void cEditChild::remember(eEditKind kind) {
  if (kind == ekTyping && myLastEdit == ekTyping && !myUndo.empty()) return;
  myUndo.push_back(snapshot());
  if (myUndo.size() > kUndoDepth) myUndo.erase(myUndo.begin());
  myRedo.clear();
  myLastEdit = kind;
}

void cEditChild::changed(eEditKind kind) {
  myLastEdit = kind;
  myLayoutDirty = myUtf8Dirty = true;
  restartBlink();
  repaint();
  notifyAction(new cChildAction(kChangedCode));
}

// Goes back to the last snapshot of `from`, keeping the present one in `to`.
bool cEditChild::stepHistory(std::vector<sSnapshot>& from, std::vector<sSnapshot>& to) {
  if (from.empty() || myReadonly) return false;
  to.push_back(snapshot());
  const sSnapshot shot = std::move(from.back());
  from.pop_back();
  myLastEdit = ekOther;
  restore(shot);
  return true;
}

bool cEditChild::undo() {
  return stepHistory(myUndo, myRedo);
}

bool cEditChild::redo() {
  return stepHistory(myRedo, myUndo);
}

void cEditChild::replace(long long at, long long remove, const unsigned short* ins, long long n) {
  const long long cap = maxLen();
  unsigned short* t = myText.data();
  const long long tailStart = at + remove;
  const long long tailLen = myLength - tailStart;
  n = std::min(n, cap - at);
  if (n > 0 && isHighSurrogate(ins[n - 1])) --n; // a pair that does not fit whole stays out
  long long keep = std::min(tailLen, cap - at - n);
  if (keep > 0 && keep < tailLen && isHighSurrogate(t[tailStart + keep - 1])) --keep;
  std::memmove(t + at + n, t + tailStart, static_cast<size_t>(keep) * sizeof *t);
  if (n > 0) std::memcpy(t + at, ins, static_cast<size_t>(n) * sizeof *t);
  myLength = at + n + keep;
  t[myLength] = 0;
  myCaret = at + n;
  mySelFirst = mySelLast = -1;
}

bool cEditChild::insertUnits(const unsigned short* ins, long long n, eEditKind kind) {
  if (myReadonly || n <= 0) return false;
  remember(kind);
  if (hasSelection()) {
    replace(mySelFirst, mySelLast - mySelFirst + 1, kNoUnits, 0);
  }
  replace(myCaret, 0, ins, n);
  changed(kind);
  return true;
}

bool cEditChild::retype(const char* utf8) {
  if (myReadonly) return false;
  _typebuf<unsigned short> wide;
  if (utf8) utf8ToUnits(utf8, -1, wide);
  const long long n = wide.count();
  if (n == myLength && std::equal(wide.begin(), wide.end(), myText.begin())) return false;
  remember(ekOther);
  replace(0, myLength, n ? wide.begin() : kNoUnits, n);
  selectAll();
  changed(ekOther);
  return true;
}

void cEditChild::deleteRange(long long from, long long to) {
  replace(from, to - from, kNoUnits, 0);
}

bool cEditChild::deleteSelection() {
  if (!hasSelection()) return false;
  remember(ekOther);
  deleteRange(mySelFirst, mySelLast + 1);
  changed(ekOther);
  return true;
}

// --- clipboard -------------------------------------------------------------------------

bool cEditChild::cb_copy() {
  if (!hasSelection() || myPassword) return false;
  _guardchar<char> utf8;
  unitsToUtf8(myText.data() + mySelFirst, mySelLast - mySelFirst + 1, utf8);
  return clipboardCopyText(utf8.c_str(), utf8.length());
}

bool cEditChild::cb_cut() {
  // A password is neither copied nor cut: deleting what could not be copied loses it.
  if (!cb_copy()) return false;
  return !myReadonly && deleteSelection();
}

bool cEditChild::cb_paste() {
  if (myReadonly) return false;
  _guardchar<char> utf8;
  if (!clipboardRequestText(utf8) || utf8.empty()) return false;
  return insertPasted(utf8);
}

void cEditChild::offerPrimary() {
  if (!hasSelection() || myPassword) return;
  _guardchar<char> utf8;
  unitsToUtf8(myText.data() + mySelFirst, mySelLast - mySelFirst + 1, utf8);
  primaryCopyText(utf8.c_str(), utf8.length());
}

bool cEditChild::pastePrimary(long long at) {
  if (myReadonly) return false;
  _guardchar<char> utf8;
  if (!primaryRequestText(utf8) || utf8.empty()) return false;
  // Inserted where the pointer is, beside the selection (often the very text pasted),
  // which is dropped rather than replaced.
  cancelSelection();
  myCaret = std::clamp<long long>(at, 0, myLength);
  return insertPasted(utf8);
}

bool cEditChild::insertPasted(const _guardchar<char>& utf8) {
  _typebuf<unsigned short> wide;
  utf8ToUnits(utf8.c_str(), utf8.length(), wide);
  // One line: a line break (CR LF counts once) or a tab becomes a blank, other control
  // characters are dropped.
  std::vector<unsigned short> clean;
  clean.reserve(static_cast<size_t>(wide.count()));
  for (long long i = 0; i < wide.count(); ++i) {
    const unsigned short u = wide[i];
    if (u == '\r' && i + 1 < wide.count() && wide[i + 1] == '\n') continue;
    if (u == '\n' || u == '\r' || u == '\t') {
      clean.push_back(' ');
    } else if (u >= 0x20 && (u < 0x7F || u > 0x9F)) {
      clean.push_back(u);
    }
  }
  return insertUnits(clean.data(), static_cast<long long>(clean.size()), ekOther);
}

// --- numbers ---------------------------------------------------------------------------

void cEditChild::setU64(unsigned long long value, bool hex, char groupSeparator) {
  char plain[60];
  if (hex) {
    _sprintf_s(plain, sizeof plain, "0x%llX", value);
  } else {
    _sprintf_s(plain, sizeof plain, "%lld", static_cast<long long>(value));
  }
  char grouped[60 * 2];
  const auto n = static_cast<long long>(std::strlen(plain));
  long long out = 0;
  for (long long i = 0; i < n; ++i) {
    if (groupSeparator && i > 0 && (n - i) % 3 == 0) grouped[out++] = groupSeparator;
    grouped[out++] = plain[i];
  }
  grouped[out] = 0;
  myGroupSeparator = groupSeparator;
  setText(grouped, out, true);
}

unsigned long long cEditChild::asU64() {
  // The separators of the last setU64 go first: they may stand inside the 0x prefix.
  std::vector<unsigned short> t;
  for (long long k = 0; k < myLength; ++k) {
    if (!myGroupSeparator || myText[k] != static_cast<unsigned char>(myGroupSeparator))
      t.push_back(myText[k]);
  }
  const auto n = static_cast<long long>(t.size());
  long long i = 0;
  while (i < n && __acp_isspace(t[i])) ++i;
  if (i >= n) return ~0ULL;
  const bool negative = t[i] == '-';
  if (negative) ++i;
  unsigned base = 10;
  if (i + 1 < n && t[i] == '0' && (t[i + 1] == 'x' || t[i + 1] == 'X')) {
    base = 16;
    i += 2;
  }
  unsigned long long value = 0;
  for (; i < n; ++i) {
    const unsigned short u = t[i];
    unsigned digit = 0;
    if (u >= '0' && u <= '9') {
      digit = u - '0';
    } else if (base == 16 && u >= 'a' && u <= 'f') {
      digit = u - 'a' + 10;
    } else if (base == 16 && u >= 'A' && u <= 'F') {
      digit = u - 'A' + 10;
    } else {
      break;
    }
    if (value > (~0ULL - digit) / base) return ~0ULL; // too large: all bits set
    value = value * base + digit;
  }
  return negative ? 0 - value : value;
}

// --- settings --------------------------------------------------------------------------

void cEditChild::setBannerColour(unsigned colour) {
  myBannerColour = colour;
  repaint();
}

void cEditChild::setBanner(const char* banner) {
  myBanner.set(banner);
  repaint();
}

void cEditChild::setReadonly(bool on) {
  myReadonly = on;
  myPendingHigh = 0;
  repaint();
}

void cEditChild::setPwdMode(bool on) {
  myPassword = on;
  myLayoutDirty = true;
  repaint();
}

void cEditChild::setCursorForRO(bool on) {
  if (myCursorForRO == on) return;
  myCursorForRO = on;
  repaint();
}

void cEditChild::setColors(eColorTypes type, unsigned fg, unsigned bg) {
  if (type < 0 || type >= kColorTypes) return;
  myColours[type].fg = fg;
  myColours[type].bg = bg;
  repaint();
}

void cEditChild::resetColors(unsigned fg, unsigned bg, unsigned border) {
  const unsigned grey = myColours[ctDisabled].fg;
  for (sColours& c : myColours) c = {fg, bg, border};
  myColours[ctDisabled].fg = grey;
  repaint();
}

void cEditChild::setBorderColor(eColorTypes type, unsigned colour) {
  if (type < 0 || type >= kColorTypes) return;
  myColours[type].border = colour;
  repaint();
}

void cEditChild::setSelectionColor(unsigned colour) {
  mySelection = colour;
  repaint();
}

void cEditChild::setSelectionInactiveColor(unsigned colour) {
  mySelectionInactive = colour;
  repaint();
}

bool cEditChild::setStdFont(int kind, int size, const char* face, bool bold, bool underline,
                            bool italic) {
  cFontObject* font = createFont(kind, size, face, bold, underline, italic);
  if (!font) return false;
  setStdFont(font);
  return true;
}

void cEditChild::setStdFont(cFontObject* font) {
  myFont = font;
  myLineHeight = 0;
  myLayoutDirty = true;
  repaint();
}

bool cEditChild::setBanFont(int kind, int size, const char* face, bool bold, bool underline,
                            bool italic) {
  cFontObject* font = createFont(kind, size, face, bold, underline, italic);
  if (!font) return false;
  myBannerFont = font;
  repaint();
  return true;
}

cEditChild::eColorTypes cEditChild::textState() const {
  if (!enabled()) return ctDisabled;
  if (myReadonly) return ctReadonly;
  if (hasFocus()) return ctFocused;
  return hot() ? ctHover : ctNormal;
}

cEditChild::eColorTypes cEditChild::borderState() const {
  if (!enabled()) return ctDisabled;
  if (hasFocus()) return ctFocused;
  if (hot()) return ctHover;
  return myReadonly ? ctReadonly : ctNormal;
}
