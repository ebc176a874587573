// What a root element asks of its window. The window layer implements it; every
// operation here fails quietly (false, 0, -1 or null), which is what an element without a
// window gets.
#pragma once

#include "base/buffers.h"
#include "geometry.h"

class cChildElement;
class cCiomLangData;
class cFontObject;

// Mouse pointer shapes; other values are refused.
enum eMousePointerTypes {
  mpArrow = 0,
  mpIBeam = 1,
  mpCross = 2,
  mpHand = 3,
  mpSizeWE = 4,
  mpSizeNS = 5,
  mpSizeWE2 = 6,
  mpSizeNS2 = 7,
  mpGrab = 8,
  mpGrab2 = 9,
};

// Owns a window made for a root element (a popup, a tooltip) and closes it when deleted.
class cWindowHolder {
public:
  virtual ~cWindowHolder() = default;
};

class cWindowRequestTarget {
public:
  virtual void _rt_destroy() {}
  virtual void _rt_modalresult(int) {}
  virtual void _rt_minimize() {}
  virtual void _rt_maximize() {}
  virtual bool _rt_changepos(int, int, int, int) { return false; }
  virtual void* _rt_rawhandle() { return nullptr; }
  virtual void _rt_repaint(const sArea*) {}
  // The element has pending notifications / posted actions; true when a delivery on the
  // GUI thread is scheduled. May be called from any thread.
  virtual bool _rt_send_action(void*) { return false; }
  virtual bool _rt_receive_action(void*) { return false; }
  virtual bool _rt_capturepointer(bool) { return false; }
  virtual bool _rt_setpointer(int) { return false; }
  virtual bool _rt_copy_text(const void*, long long) { return false; }
  virtual bool _rt_request_copied_text(_typebuf<unsigned char>&) { return false; }
  virtual bool _rt_copy_raw(const void*, long long) { return false; }
  virtual bool _rt_request_copied_raw(_typebuf<unsigned char>&) { return false; }
  virtual bool _rt_request_has_copied(bool) { return false; }
  // The selection that the middle button pastes (X's PRIMARY): text, apart from the
  // clipboard.
  virtual bool _rt_copy_primary(const void*, long long) { return false; }
  virtual bool _rt_request_primary(_typebuf<unsigned char>&) { return false; }
  virtual void _rt_setminsize(int, int) {}
  virtual void _rt_setmaxsize(int, int) {}
  virtual bool _rt_winpossize(int&, int&, int&, int&) { return false; }
  virtual bool _rt_desktopsize(int&, int&) { return false; }
  // The largest window: the desktop.
  virtual bool _rt_maxwinsize(int& w, int& h) { return _rt_desktopsize(w, h); }
  virtual int _rt_screen_dpi() { return 96; }
  virtual bool _rt_blocksleep(const char*) { return false; }
  virtual void _rt_unblocksleep() {}
  virtual bool _rt_setcaption(const char*) { return false; }
  virtual cFontObject* _rt_createfont(int kind, int size, const char* face, bool bold,
                                      bool underline, bool italic);
  virtual const cCiomLangData* _rt_getnamedlangsection(const char*) { return nullptr; }
  // The size of text in font (lines at line feeds); false when it cannot be measured.
  virtual bool _rt_textbox(cFontObject*, const char*, sSize&) { return false; }
  // The advance of each unit of a UTF-16 text in font (0 for the second unit of a
  // surrogate pair); false when it cannot be measured.
  virtual bool _rt_textruler(cFontObject*, const unsigned short*, long long, int*) { return false; }
  virtual cWindowHolder* _rt_popup(int, int, int, int, cChildElement*, bool) { return nullptr; }
  virtual int _rt_modal(const char*, int, int, cChildElement*, bool) { return -1; }
  virtual int _rt_modal_popup(int, int, int, int, cChildElement*) { return -1; }
  virtual void _rt_focus() {}
  virtual ~cWindowRequestTarget() = default;
};
