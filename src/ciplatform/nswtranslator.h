// The bridge between one top-level window and the element tree bound to it: window events
// become element events, element requests become window operations.
#pragma once

#include <memory>

#include "ciom/element.h"
#include "ciom/langfile.h"
#include "ciom/wintarget.h"
#include "nswindow.h"

class cNSWTranslator : public cNSWindow, public cWindowRequestTarget {
public:
  cNSWTranslator() = default;
  ~cNSWTranslator() override;

  void setRoot(cChildElement* root) { myRoot = root; }
  // Before the window is built around a form: under a window manager its header band goes
  // (returns the height given up), without one the band carries the caption.
  int fitFormToFrame(const char* caption);
  cChildElement* root() const { return myRoot; }
  void setLangMan(const cCiomLang* lang) { myLang = lang; }
  const cCiomLang* langMan() const { return myLang; }

  void onInit() override;
  bool onClose() override;
  void onSize(int w, int h) override;
  void onMove() override;
  void onMouseButton(int x, int y, int button, bool down, bool shift, bool ctrl, bool alt,
                     bool super) override;
  void onMouseMove(int x, int y, int buttons, bool shift, bool ctrl, bool alt, bool super) override;
  void onMouseWheel(int x, int y, int dx, int dy, int dz, bool shift, bool ctrl, bool alt,
                    bool super) override;
  void onKey(int key, bool down, bool shift, bool ctrl, bool alt, bool super) override;
  void onChar(unsigned short ch, bool shift, bool alt) override;
  void onAction(void* element) override;
  void onPostAction(void* element) override;
  void onPaint(void* context, int x, int y, int w, int h) override;
  void onFocus() override;
  void onFocusLost() override;

  void _rt_destroy() override;
  void _rt_modalresult(int result) override;
  void _rt_minimize() override;
  void _rt_maximize() override;
  bool _rt_changepos(int x, int y, int w, int h) override;
  void* _rt_rawhandle() override;
  void _rt_repaint(const sArea* area) override;
  bool _rt_send_action(void* element) override;
  bool _rt_receive_action(void* element) override;
  bool _rt_capturepointer(bool on) override;
  bool _rt_setpointer(int type) override;
  bool _rt_copy_text(const void* data, long long len) override;
  bool _rt_request_copied_text(_typebuf<unsigned char>& out) override;
  bool _rt_copy_raw(const void* data, long long len) override;
  bool _rt_copy_primary(const void* data, long long len) override;
  bool _rt_request_primary(_typebuf<unsigned char>& out) override;
  bool _rt_request_copied_raw(_typebuf<unsigned char>& out) override;
  bool _rt_request_has_copied(bool text) override;
  void _rt_setminsize(int w, int h) override;
  void _rt_setmaxsize(int w, int h) override;
  bool _rt_winpossize(int& x, int& y, int& w, int& h) override;
  bool _rt_desktopsize(int& w, int& h) override;
  bool _rt_blocksleep(const char* reason) override;
  void _rt_unblocksleep() override;
  bool _rt_setcaption(const char* text) override;
  const cCiomLangData* _rt_getnamedlangsection(const char* name) override;
  bool _rt_textbox(cFontObject* font, const char* text, sSize& size) override;
  bool _rt_textruler(cFontObject* font, const unsigned short* text, long long len,
                     int* advances) override;
  cWindowHolder* _rt_popup(int x, int y, int w, int h, cChildElement* root, bool activate) override;
  int _rt_modal(const char* caption, int w, int h, cChildElement* root, bool sizeable) override;
  int _rt_modal_popup(int x, int y, int w, int h, cChildElement* root) override;
  void _rt_focus() override;

private:
  // The root keeps the window's desktop position in its rectangle.
  void syncRootPosition();

  cChildElement* myRoot = nullptr;
  const cCiomLang* myLang = nullptr;
};

// Owns the translator of a window made without a modal run (a main window, a popup, a
// tooltip) and closes the window when deleted. The root element stays its owner's: it is
// only unbound from the window.
class cNSWHolder : public cWindowHolder {
public:
  explicit cNSWHolder(std::unique_ptr<cNSWTranslator> translator);
  ~cNSWHolder() override;
  cNSWTranslator* translator() const { return myTranslator.get(); }

private:
  std::unique_ptr<cNSWTranslator> myTranslator;
};
