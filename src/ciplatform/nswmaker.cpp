#include "nswmaker.h"

#include "cairooffscreen.h"
#include "ciom/timer.h"
#include "nslib/nswnd.h"
#include "pangofont.h"

std::unique_ptr<cWindowMaker> cWindowMaker::newWindowMaker(void* arg1, void* arg2, unsigned flags,
                                                           int) {
  auto maker = std::make_unique<cNSWMaker>();
  if (!maker->create(arg1, arg2, flags)) return nullptr;
  // The toolkit's texts join the tables registered before, once per process.
  static cCIOMLang toolkitTable;
  const eCIOMStdLangs last = cLibLang::appliedLang();
  if (last <= lngTraditionalChinese)
    cLibLang::applyLang(last);
  else
    cLibLang::applyDefaultLang();
  maker->setLangMan(&cLibLang::gCiomLang());
  return maker;
}

bool cNSWMaker::create(void*, void*, unsigned) {
  // Elements measure text while they are built, before any window has painted.
  cPangoFont::install();
  if (!cNSWindow::init()) return false;
  static const cTimer::sDriver timers{&nswg_timer_start, &nswg_timer_stop};
  cTimer::setDriver(&timers);
  return true;
}

cCanvas* cNSWMaker::offscreen(int w, int h) {
  return cCairoOffscreenCanvas::make(nullptr, w, h).release();
}

bool cNSWMaker::recommendMainWindowSize(sRect& rect) {
  int x = 0, y = 0, w = 0, h = 0;
  if (!cNSWindow::recommendMainWindowSize(x, y, w, h)) return false;
  rect = {x, y, w, h};
  return true;
}

bool cNSWMaker::desktopSize(sSize& size) {
  return cNSWindow::desktopSize(size.width, size.height);
}

int cNSWMaker::modal(const char* caption, int w, int h, cChildElement* root,
                     cWindowRequestTarget* owner, bool sizeable) {
  if (owner) return owner->_rt_modal(caption, w, h, root, sizeable);
  cNSWTranslator none;
  none.setLangMan(myLang);
  return none._rt_modal(caption, w, h, root, sizeable);
}

cWindowHolder* cNSWMaker::asyncwnd(const char* caption, int w, int h, cChildElement* root,
                                   cWindowRequestTarget*, bool sizeable, int x, int y) {
  if (!root) return nullptr;
  auto translator = std::make_unique<cNSWTranslator>();
  translator->setRoot(root);
  translator->setLangMan(myLang);
  h -= translator->fitFormToFrame(caption);
  root->setWinTarget(translator.get(), x, y, w, h);
  if (!translator->create_wnd(caption ? caption : "", w, h, sizeable, x, y)) {
    root->setWinTarget(nullptr, 0, 0, 0, 0);
    return nullptr;
  }
  translator->show();
  return new cNSWHolder(std::move(translator));
}

void cNSWMaker::destroy(cWindowHolder* holder) {
  delete holder;
}

void cNSWMaker::msgloop() {
  cNSWindow::msgloop();
}
