#include "nswtranslator.h"

#include <algorithm>
#include <cstring>

#include "cairocanvas.h"
#include "ciom/customform.h"
#include "nslib/nswnd.h"

cNSWTranslator::~cNSWTranslator() {
  // A root deleted before its window has nothing left to unbind.
  if (cChildElement::valid(myRoot) && myRoot->winTarget() == this)
    myRoot->setWinTarget(nullptr, 0, 0, 0, 0);
}

void cNSWTranslator::syncRootPosition() {
  int x = 0, y = 0, w = 0, h = 0;
  if (myRoot && getPosSize(x, y, w, h)) myRoot->setWindowPos(x, y);
}

// --- window events ----------------------------------------------------------------------

void cNSWTranslator::onInit() {
  if (!myRoot) return;
  syncRootPosition();
  myRoot->processConstruct();
}

bool cNSWTranslator::onClose() {
  return !myRoot || myRoot->processClose();
}

void cNSWTranslator::onSize(int w, int h) {
  if (!myRoot) return;
  syncRootPosition();
  myRoot->processSizeChanges(w, h, false);
}

void cNSWTranslator::onMove() {
  syncRootPosition();
}

void cNSWTranslator::onMouseButton(int x, int y, int button, bool down, bool shift, bool ctrl, bool,
                                   bool) {
  if (myRoot) myRoot->processMouseBtn(x, y, button, down, shift, ctrl);
}

void cNSWTranslator::onMouseMove(int x, int y, int, bool, bool, bool, bool) {
  if (myRoot) myRoot->processMouseMove(x, y);
}

void cNSWTranslator::onMouseWheel(int x, int y, int, int dy, int, bool shift, bool ctrl, bool,
                                  bool) {
  if (myRoot && dy) myRoot->processMouseWheel(x, y, shift, ctrl, dy);
}

void cNSWTranslator::onKey(int key, bool down, bool shift, bool ctrl, bool alt, bool) {
  if (myRoot && down) myRoot->processKey(key, shift, ctrl, alt);
}

void cNSWTranslator::onChar(unsigned short ch, bool shift, bool alt) {
  if (!myRoot || ch < 32 || ch == 127) return;
  myRoot->processChar(ch, shift, false, alt);
}

void cNSWTranslator::onAction(void* element) {
  if (myRoot) myRoot->processActionFirst(static_cast<cChildElement*>(element));
}

void cNSWTranslator::onPostAction(void* element) {
  if (myRoot) myRoot->processPostFirst(static_cast<cChildElement*>(element));
}

void cNSWTranslator::onPaint(void* context, int x, int y, int w, int h) {
  int cw = 0, ch = 0;
  if (!myRoot || !context || !clientArea(cw, ch)) return;
  cCairoCanvas canvas(static_cast<cairo_surface_t*>(context), cw, ch);
  // Only the damaged rectangle is drawn: the strips around it are excluded.
  const sRect strips[] = {
      {0, 0, cw, y}, {0, y + h, cw, ch - (y + h)}, {0, y, x, h}, {x + w, y, cw - (x + w), h}};
  for (const sRect& strip : strips) {
    if (strip.width > 0 && strip.height > 0) canvas.clip(&strip);
  }
  canvas.select();
  myRoot->processPaint(&canvas);
}

void cNSWTranslator::onFocus() {
  if (myRoot) myRoot->processOSFocus();
}

void cNSWTranslator::onFocusLost() {
  if (myRoot) myRoot->processOSFocusLost();
}

// --- requests from the elements ---------------------------------------------------------

void cNSWTranslator::_rt_destroy() {
  close();
}

void cNSWTranslator::_rt_modalresult(int result) {
  endModal(result);
}

void cNSWTranslator::_rt_minimize() {
  minimize();
}

void cNSWTranslator::_rt_maximize() {
  maximize();
}

bool cNSWTranslator::_rt_changepos(int x, int y, int w, int h) {
  if (!handle()) return false;
  move(x, y, w, h);
  return true;
}

void* cNSWTranslator::_rt_rawhandle() {
  return handle();
}

void cNSWTranslator::_rt_repaint(const sArea* area) {
  if (!area) {
    requestRepaint(0, 0, 0, 0);
    return;
  }
  const int w = area->right - area->left, h = area->bottom - area->top;
  if (w > 0 && h > 0) requestRepaint(area->left, area->top, w, h);
}

bool cNSWTranslator::_rt_send_action(void* element) {
  if (!handle()) return false;
  notifyAction(element);
  return true;
}

bool cNSWTranslator::_rt_receive_action(void* element) {
  if (!handle()) return false;
  notifyPostAction(element);
  return true;
}

bool cNSWTranslator::_rt_capturepointer(bool on) {
  if (!handle()) return false;
  if (on)
    captureMouse();
  else
    cancelCaptureMouse();
  return true;
}

bool cNSWTranslator::_rt_setpointer(int type) {
  return setPointer(type);
}

namespace {

bool fetchClip(eNSClipKind kind, _typebuf<unsigned char>& out) {
  std::vector<unsigned char> data;
  if (!nswg_clip_get(kind, data)) return false;
  out.assign(data.data(), static_cast<long long>(data.size()));
  return true;
}

} // namespace

bool cNSWTranslator::_rt_copy_text(const void* data, long long len) {
  return nswg_clip_set(nsClipText, data, len);
}

bool cNSWTranslator::_rt_request_copied_text(_typebuf<unsigned char>& out) {
  return fetchClip(nsClipText, out);
}

bool cNSWTranslator::_rt_copy_raw(const void* data, long long len) {
  return nswg_clip_set(nsClipRaw, data, len);
}

bool cNSWTranslator::_rt_copy_primary(const void* data, long long len) {
  return nswg_clip_set(nsClipPrimary, data, len);
}

bool cNSWTranslator::_rt_request_primary(_typebuf<unsigned char>& out) {
  return fetchClip(nsClipPrimary, out);
}

bool cNSWTranslator::_rt_request_copied_raw(_typebuf<unsigned char>& out) {
  return fetchClip(nsClipRaw, out);
}

bool cNSWTranslator::_rt_request_has_copied(bool text) {
  return nswg_clip_has(text ? nsClipText : nsClipRaw);
}

void cNSWTranslator::_rt_setminsize(int w, int h) {
  setMinSize(w, h);
}

void cNSWTranslator::_rt_setmaxsize(int w, int h) {
  setMaxSize(w, h);
}

bool cNSWTranslator::_rt_winpossize(int& x, int& y, int& w, int& h) {
  return getPosSize(x, y, w, h);
}

bool cNSWTranslator::_rt_desktopsize(int& w, int& h) {
  return desktopSize(w, h);
}

bool cNSWTranslator::_rt_blocksleep(const char* reason) {
  return blockSleep(reason);
}

void cNSWTranslator::_rt_unblocksleep() {
  unblockSleep();
}

bool cNSWTranslator::_rt_setcaption(const char* text) {
  if (auto* form = dynamic_cast<cCustomForm*>(myRoot); form && !nswnd_framed())
    form->setCaption(text);
  return setCaption(text);
}

int cNSWTranslator::fitFormToFrame(const char* caption) {
  auto* form = dynamic_cast<cCustomForm*>(myRoot);
  if (!form) return 0;
  if (nswnd_framed()) return form->dropHeaderBand();
  form->setCaption(caption);
  return 0;
}

const cCiomLangData* cNSWTranslator::_rt_getnamedlangsection(const char* name) {
  return myLang && name ? myLang->section(name) : nullptr;
}

bool cNSWTranslator::_rt_textbox(cFontObject* font, const char* text, sSize& size) {
  if (!font || !text) return false;
  cairo_surface_t* scratch = cairo_image_surface_create(CAIRO_FORMAT_ARGB32, 1, 1);
  bool ok = true;
  {
    cCairoCanvas canvas(scratch, 1, 1);
    ok = canvas.setTextMode(font);
    size = {};
    for (const char* line = text; ok && line;) {
      const char* end = std::strchr(line, '\n');
      const long long len = end ? end - line : static_cast<long long>(std::strlen(line));
      sSize one{};
      ok = canvas.textSize(line, len, one);
      size.width = std::max(size.width, one.width);
      size.height += one.height;
      line = end ? end + 1 : nullptr;
    }
  }
  cairo_surface_destroy(scratch);
  return ok;
}

bool cNSWTranslator::_rt_textruler(cFontObject* font, const unsigned short* text, long long len,
                                   int* advances) {
  if (!font || !text || !advances || len < 0) return false;
  if (len == 0) return true;
  cairo_surface_t* scratch = cairo_image_surface_create(CAIRO_FORMAT_ARGB32, 1, 1);
  bool ok = false;
  {
    cCairoCanvas canvas(scratch, 1, 1);
    ok = canvas.setTextMode(font) && canvas.textRuler(text, len, advances);
  }
  cairo_surface_destroy(scratch);
  return ok;
}

cWindowHolder* cNSWTranslator::_rt_popup(int x, int y, int w, int h, cChildElement* root,
                                         bool activate) {
  if (!root) return nullptr;
  auto translator = std::make_unique<cNSWTranslator>();
  translator->setRoot(root);
  translator->setLangMan(myLang);
  root->setWinTarget(translator.get(), x, y, w, h);
  if (!translator->create_popup(x, y, w, h, activate, this)) {
    root->setWinTarget(nullptr, 0, 0, 0, 0);
    return nullptr;
  }
  return new cNSWHolder(std::move(translator));
}

int cNSWTranslator::_rt_modal(const char* caption, int w, int h, cChildElement* root,
                              bool sizeable) {
  if (!root) return -1;
  // The hover state of this window ends while the dialog runs.
  if (myRoot) myRoot->processMouseMove(-1, -1);
  auto translator = std::make_unique<cNSWTranslator>();
  translator->setRoot(root);
  translator->setLangMan(myLang);
  h -= translator->fitFormToFrame(caption);
  root->setWinTarget(translator.get(), 0, 0, w, h);
  if (!translator->create_wnd(caption ? caption : "", w, h, sizeable, -1, -1)) {
    root->setWinTarget(nullptr, 0, 0, 0, 0);
    return -1;
  }
  cNSWHolder holder(std::move(translator));
  return holder.translator()->modal(handle() ? this : nullptr);
}

int cNSWTranslator::_rt_modal_popup(int x, int y, int w, int h, cChildElement* root) {
  std::unique_ptr<cWindowHolder> holder(_rt_popup(x, y, w, h, root, true));
  if (!holder) return -1;
  auto* translator = static_cast<cNSWHolder*>(holder.get())->translator();
  return translator->modal(handle() ? this : nullptr);
}

void cNSWTranslator::_rt_focus() {
  focus();
}

cNSWHolder::cNSWHolder(std::unique_ptr<cNSWTranslator> translator)
    : myTranslator(std::move(translator)) {}

cNSWHolder::~cNSWHolder() = default;
