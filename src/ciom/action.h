// Actions: the event objects that carry notifications between elements.
//
// Codes 0 to 5 belong to the element core; every widget numbers its own actions from 6
// upwards, so a receiver tells them apart by the source element first and the code second.
#pragma once

class cEvent;

class cChildAction {
public:
  enum eCode {
    acNotify = 0,       // something happened (a button press and the like)
    acFocus = 1,        // cFocusAction: the source has just received the focus
    acCtxRequest = 2,   // cCtxRequestAction: a context menu is asked for
    acDoubleClick = 3,  // cDoubleClickAction
    acFocusRequest = 4, // the source asks the root for the focus
    acHintClosed = 5,   // the source's tooltip closed
  };

  explicit cChildAction(int code = acNotify) : code(code) {}
  cChildAction(const cChildAction&) = delete;
  cChildAction& operator=(const cChildAction&) = delete;
  virtual ~cChildAction() = default;
  virtual void actionDone() {}

  int code;
};

class cFocusAction : public cChildAction {
public:
  // 2 when the focus was set directly, 0 (tab) or 1 (arrows) when it moved by keys.
  explicit cFocusAction(int origin) : cChildAction(acFocus), origin(origin) {}
  int origin;
};

class cCtxRequestAction : public cChildAction {
public:
  cCtxRequestAction(int x, int y, bool shift, bool ctrl, bool alt)
      : cChildAction(acCtxRequest), x(x), y(y), shift(shift), ctrl(ctrl), alt(alt) {}
  int x, y;
  bool shift, ctrl, alt;
};

class cDoubleClickAction : public cChildAction {
public:
  cDoubleClickAction(int x, int y) : cChildAction(acDoubleClick), x(x), y(y) {}
  int x, y;
};

// An action that a sender waits for: deleting it (after it was handled, or unread) signals
// the event.
class cSentChildAction : public cChildAction {
public:
  explicit cSentChildAction(int code) : cChildAction(code) {}
  ~cSentChildAction() override;
  cEvent* event = nullptr;
};
