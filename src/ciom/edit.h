// The single-line text field.
//
// The text is a bounded UTF-16 buffer (maxLen units, zero-terminated) with a caret (0 to
// length) and an inclusive selection (first and last selected unit, both -1 when none).
// A surrogate pair counts as one character: no caret move, deletion, cut or paste ever
// splits it. The box can be read-only, a password field (drawn as bullets and never
// copied), and shows a banner in grey while empty. It scrolls sideways to keep the caret
// in view and blinks the caret while focused.
//
// Keys: Delete (shift: cut), Backspace, Enter and Escape (a cEditKeyAction, code 0),
// ctrl+Insert copy, shift+Insert paste, ctrl+A, ctrl+C, ctrl+V, ctrl+X, Home/Up, End/Down,
// Left/Right (ctrl: by word), shift with any move selects; ctrl+Z undoes, ctrl+Y and
// ctrl+shift+Z redo. Mouse: a press places the caret, a drag or shift+press selects, a
// double click selects a word, a triple click everything; what the user selects is offered
// as X's PRIMARY selection, which the middle button pastes. Every change the user makes
// raises kChangedCode.
#pragma once

#include <vector>

#include "base/buffers.h"
#include "element.h"
#include "timer.h"

class cEditChild : public cChildElement {
public:
  enum eColorTypes { ctNormal = 0, ctHover, ctFocused, ctReadonly, ctDisabled, kColorTypes };
  static constexpr long long kDefaultMaxLen = 256;
  static constexpr long long kMaxMaxLen = 1LL << 24; // a longer box is refused
  static constexpr int kChangedCode = 6;             // raised after every edit by the user
  static constexpr int kPadding = 4;                 // between the frame and the text
  static constexpr unsigned kBlinkMs = 530;

  // Enter (397), or Escape (283) with nothing selected: a code-0 action with the key.
  class cEditKeyAction : public cChildAction {
  public:
    explicit cEditKeyAction(int key) : cChildAction(acNotify), key(key) {}
    int key;
  };

  cEditChild();

  static bool isHighSurrogate(unsigned short u) { return u >= 0xD800 && u <= 0xDBFF; }
  static bool isLowSurrogate(unsigned short u) { return u >= 0xDC00 && u <= 0xDFFF; }

  // Reallocates for n units and clears the text; false for a negative n or one above
  // kMaxMaxLen, or when memory runs out (the box keeps its old state then).
  bool setMaxLen(long long n);
  long long maxLen() const { return myText.count() - 1; }
  long long length() const { return myLength; }
  const unsigned short* units() const { return myText.data(); }

  // The text as UTF-8. Setting it (cut to the maximum length) puts the caret at the start,
  // selects nothing and forgets the undo history.
  const char* text() override;
  long long text(char* out, long long cap) override;
  bool setText(const char* text, long long len, bool repaintNow) override;
  bool setText(const char* text, long long len = -1) { return setText(text, len, true); }
  void wipeText() override;

  // "0x%llX" or "%lld", with groupSeparator (when not 0) between every three characters
  // from the right, the prefix and sign included: -123456 shows as -,123,456.
  void setU64(unsigned long long value, bool hex, char groupSeparator);
  // The text as a number: blanks skipped, decimal or 0x hexadecimal, the separator of the
  // last setU64 ignored, a leading minus negated; all bits set when there is no text.
  unsigned long long asU64();

  void setBanner(const char* banner);
  void setBannerColour(unsigned colour);
  const char* banner() const { return myBanner.c_str(); }
  void setReadonly(bool on);
  bool readonly() const { return myReadonly; }
  void setPwdMode(bool on);
  bool pwdMode() const { return myPassword; }
  void setSelectOnFocus(bool on) { mySelectOnFocus = on; }
  void setCursorForRO(bool on);

  // Colours: text and background per state; the border per state.
  void setColors(eColorTypes type, unsigned fg, unsigned bg);
  // Every state takes these three (the disabled state keeps its grey text).
  void resetColors(unsigned fg, unsigned bg, unsigned border);
  void setBorderColor(eColorTypes type, unsigned colour);
  unsigned fgColor(eColorTypes type) const { return myColours[type].fg; }
  unsigned bgColor(eColorTypes type) const { return myColours[type].bg; }
  unsigned borderColor(eColorTypes type) const { return myColours[type].border; }
  // The colours of the state the box is in now.
  unsigned fgColor() const { return myColours[textState()].fg; }
  unsigned bgColor() const { return myColours[textState()].bg; }
  unsigned borderColor() const { return myColours[borderState()].border; }
  unsigned selectionColor() const { return mySelection; }
  void setSelectionColor(unsigned colour);
  unsigned selectionInactiveColor() const { return mySelectionInactive; }
  void setSelectionInactiveColor(unsigned colour);

  // Fonts (shared objects, not owned); the standard font defaults to the element's.
  bool setStdFont(int kind, int size, const char* face, bool bold, bool underline, bool italic);
  void setStdFont(cFontObject* font);
  bool setBanFont(int kind, int size, const char* face, bool bold, bool underline, bool italic);
  // The height that shows a line of text in the standard font with the frame around it.
  int wantedHeight();
  // The field's frame: filled, edged, its corners softened towards `around`.
  static void drawFrame(cCanvas* canvas, const sRect& rect, unsigned fill, unsigned edge,
                        unsigned around);

  bool cb_copy();
  bool cb_cut();
  bool cb_paste();
  // X's other selection: what the user selects is offered as PRIMARY (never a password),
  // and the middle button pastes it at the pointer.
  void offerPrimary();
  bool pastePrimary(long long at);

  long long caret() const { return myCaret; }
  long long selFirst() const { return mySelFirst; }
  long long selLast() const { return mySelLast; }
  bool hasSelection() const { return mySelFirst >= 0; }
  // Selects units first..last (inclusive, widened so no pair is split) and puts the
  // caret after them; first > last selects nothing.
  void select(long long first, long long last);
  void selectAll();
  void cancelSelection();
  // Deletes the selected units; true when something was deleted.
  bool deleteSelection();
  // Replaces the whole text as the user would (one undoable step, kChangedCode raised)
  // and selects it; false for a read-only box or a text already equal.
  bool retype(const char* utf8);
  // Moves the caret to index (kept in range, never inside a pair), selecting nothing.
  void setCaret(long long index);
  // The caret moved from `from` to `to` with shift held: grows, shrinks or replaces the
  // selection as described in the header.
  void processSelectKbd(long long from, long long to);
  // The x of the caret position before unit i, in the element's coordinates.
  int symbolPos(int i);
  // The caret position nearest to x (element coordinates).
  long long indexAt(int x);
  int scrollX() const { return myScrollX; }
  bool caretShown() const { return myCaretOn; }
  bool undo();
  bool redo();

  void onConstruct() override;
  void onInitData() override;
  void onPaint(cCanvas* canvas) override;
  void onSetFocusEvent(eEventOrigin origin, bool shift, bool ctrl) override;
  void onSetFocus(bool shift, bool ctrl) override;
  void onLooseFocus(bool shift, bool ctrl) override;
  bool onChar(unsigned short unit, bool shift, bool ctrl, bool alt) override;
  bool onKey(int key, bool shift, bool ctrl, bool alt) override;
  bool processMouseBtn(int x, int y, int button, bool down, bool shift, bool ctrl) override;
  void onMouseButton(int x, int y, int button, bool down) override;
  void onMouseDoubleClick(int x, int y) override;
  void onMouseMoving(int x, int y) override;
  void onEnableChanged(bool state) override;
  void onSizeChanged() override;
  bool wantDoubleBuffer() override { return true; }
  bool wantTabStop() override { return true; }
  bool wantFullRepaint() override { return true; }
  bool wantCaptureArrows() override { return true; }
  bool wantAcceptFoucs() override { return true; }
  eMousePointerTypes defaultPointer() override { return mpIBeam; }

private:
  struct sColours {
    unsigned fg = 0, bg = 0, border = 0;
  };
  struct sSnapshot {
    std::vector<unsigned short> text;
    long long caret = 0, selFirst = -1, selLast = -1;
  };
  enum eEditKind { ekOther, ekTyping };

  eColorTypes textState() const;
  eColorTypes borderState() const;
  // The text shown: the text or, in password mode, as many bullets.
  const unsigned short* shown() const;
  // Fills the position table (pixels from the text's start to each caret index).
  bool layout(cCanvas* canvas);
  void keepCaretVisible();
  int textAreaWidth() const;
  int lineHeight(cCanvas* canvas);
  void paintFrame(cCanvas* canvas);
  void paintText(cCanvas* canvas);

  // Replaces units [at, at + remove) by ins (n units) as far as the maximum length lets
  // the inserted units in; what follows is kept as far as it still fits.
  void replace(long long at, long long remove, const unsigned short* ins, long long n);
  bool insertUnits(const unsigned short* ins, long long n, eEditKind kind);
  // Pasted text as one line (breaks become blanks, control characters go) at the caret.
  bool insertPasted(const _guardchar<char>& utf8);
  void deleteRange(long long from, long long to); // caret positions, from < to
  void changed(eEditKind kind);
  void remember(eEditKind kind);
  void restore(const sSnapshot& shot);
  bool stepHistory(std::vector<sSnapshot>& from, std::vector<sSnapshot>& to);
  sSnapshot snapshot() const;

  long long nextPos(long long i) const; // one character right / left of caret position i
  long long prevPos(long long i) const;
  long long wordRight(long long i) const;
  long long wordLeft(long long i) const;
  bool blankAt(long long i) const;
  void moveCaret(long long to, bool shift);
  // Selects between a fixed end and the caret's new place at.
  void selectBetween(long long anchor, long long at);
  void restartBlink();

  _typebuf<unsigned short> myText, myMask;
  _typebuf<int> myPos;
  long long myLength = 0, myCaret = 0, mySelFirst = -1, mySelLast = -1;
  bool myLayoutDirty = true, myUtf8Dirty = true;
  _guardchar<char> myUtf8, myBanner;
  bool myReadonly = false, myPassword = false, mySelectOnFocus = true, myCursorForRO = true;
  sColours myColours[kColorTypes];
  unsigned mySelection = 0, mySelectionInactive = 0, mySelectedText = 0, myBannerColour = 0;
  cFontObject* myFont = nullptr;
  cFontObject* myBannerFont = nullptr;
  int myScrollX = 0, myLineHeight = 0;
  char myGroupSeparator = 0;
  unsigned short myPendingHigh = 0; // a high surrogate typed, waiting for its low half
  bool myDragging = false, myFocusByMouse = false, myActive = true;
  long long myAnchor = 0; // where a drag or shift+click selection started
  bool myClickShift = false;
  unsigned myDoubleClickAt = 0; // when the last double click came, for a triple click
  int myDoubleClickX = 0;
  bool myTripleClick = false;
  bool myCaretOn = false;
  cTimer myBlink;
  std::vector<sSnapshot> myUndo, myRedo;
  eEditKind myLastEdit = ekOther;
};
