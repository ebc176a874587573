// The element tree itself: the registry of live elements, attaching and detaching,
// geometry and anchors, flags, texts, language strings and the window requests.
#include "element.h"

#include <algorithm>
#include <cstring>
#include <mutex>
#include <unordered_set>

#include "hint.h"
#include "langfile.h"

namespace {

// Elements may be made and destroyed off the GUI thread (a worker's own form, say), and
// valid() is asked by deliveries; hence the lock.
struct sRegistry {
  std::mutex lock;
  std::unordered_set<const cChildElement*> live;
};

sRegistry& registry() {
  static sRegistry r;
  return r;
}

} // namespace

cChildElement::cChildElement() {
  sRegistry& r = registry();
  std::lock_guard guard(r.lock);
  r.live.insert(this);
}

cChildElement::~cChildElement() {
  {
    sRegistry& r = registry();
    std::lock_guard guard(r.lock);
    r.live.erase(this);
  }
  if (myParent) myParent->forgetChild(this);
  for (auto& [order, child] : myChildren) {
    if (child) child->myParent = nullptr;
  }
}

bool cChildElement::valid(const cChildElement* p) {
  sRegistry& r = registry();
  std::lock_guard guard(r.lock);
  return p && r.live.count(p) != 0;
}

void cChildElement::loadWants() {
  myDoubleBuffer = wantDoubleBuffer();
  myTabStop = wantTabStop();
  myFullRepaint = wantFullRepaint();
  myAcceptFocus = wantAcceptFoucs();
  myBorderWidth = std::max(0, wantBorderWidth());
  myNamesSection = wantLangResource() != nullptr;
  myPointer = defaultPointer();
}

// --- the tree ---------------------------------------------------------------------------

bool cChildElement::attach(cChildElement* child, int x, int y, int w, int h,
                           eControlPartType part) {
  if (!child || child == this || myOrderOf.count(child) || child->myParent || child->isChild(this))
    return false;
  const int order = myChildren.empty() ? 0 : myChildren.back().first + 1;
  if (myDetachedSlots > 16 && myDetachedSlots * 2 > myChildren.size()) {
    std::erase_if(myChildren, [](const auto& entry) { return !entry.second; });
    myDetachedSlots = 0;
  }
  myChildren.emplace_back(order, child);
  myOrderOf.emplace(child, order);
  child->myParent = this;
  child->myRect = {x, y, std::max(0, w), std::max(0, h)};
  child->loadWants();
  if (const char* section = child->wantLangResource())
    child->myLangData = requestNamedLangResource(section);
  child->onInitData();
  child->onConstruct();
  child->myFixedX = part == cptFixed || part == cptFixedHorz;
  child->myFixedY = part == cptFixed || part == cptFixedVert;
  if (part == cptClient) child->clampSize(child->myRect.width, child->myRect.height);
  child->myNeedsLayout = true;
  if (child->visible()) {
    const sArea whole = {0, 0, child->width(), child->height()};
    child->repaintReq(&whole);
  }
  return true;
}

bool cChildElement::dettach(cChildElement* child) {
  if (!child || !isDirectChild(child)) return false;
  if (cChildElement* top = root()) top->processDettach(child);
  const sRect was = placed(child);
  forgetChild(child);
  if (visible() && !was.empty()) repaint(&was);
  return true;
}

void cChildElement::forgetChild(cChildElement* child) {
  const auto it = myOrderOf.find(child);
  if (it == myOrderOf.end()) return;
  childAt(it->second)->second = nullptr;
  ++myDetachedSlots;
  myOrderOf.erase(it);
  myAnchors.erase(child);
  if (myFocusedChild == child) myFocusedChild = nullptr;
  if (myCapturedChild == child) myCapturedChild = nullptr;
  for (cChildElement* e = this; e; e = e->myParent) {
    if (e->myHovered == child) e->myHovered = nullptr;
  }
  child->myHot = false;
  child->myParent = nullptr;
}

void cChildElement::processDettach(cChildElement* element) {
  const auto inside = [element](cChildElement* p) {
    return p && (p == element || element->isChild(p));
  };
  if (inside(myHovered)) {
    cChildElement* was = myHovered;
    myHovered = nullptr;
    was->leaveHover();
  }
  cChildElement* focusPath = myFocusedChild;
  cChildElement* capturePath = myCapturedChild;
  if (inside(myFocusedChild)) myFocusedChild = nullptr;
  if (inside(myCapturedChild)) {
    myCapturedChild = nullptr;
    if (!myParent && myWinTarget) myWinTarget->_rt_capturepointer(false);
  }
  if (focusPath && focusPath != element) focusPath->processDettach(element);
  if (capturePath && capturePath != element && capturePath != focusPath)
    capturePath->processDettach(element);
}

cChildElement* cChildElement::root() {
  cChildElement* e = this;
  while (e->myParent) e = e->myParent;
  return e;
}

cWindowRequestTarget* cChildElement::target() {
  return root()->myWinTarget;
}

void cChildElement::setWinTarget(cWindowRequestTarget* target, int x, int y, int w, int h) {
  myWinTarget = target;
  if (!target) return;
  loadWants();
  myRect = {x, y, std::max(0, w), std::max(0, h)};
  if (const char* section = wantLangResource()) myLangData = requestNamedLangResource(section);
}

void cChildElement::setWindowPos(int x, int y) {
  if (myParent) return;
  myRect.x = x;
  myRect.y = y;
}

std::vector<std::pair<int, cChildElement*>>::iterator cChildElement::childAt(int order) {
  return std::lower_bound(myChildren.begin(), myChildren.end(), order,
                          [](const auto& entry, int o) { return entry.first < o; });
}

std::vector<cChildElement*> cChildElement::childList() const {
  std::vector<cChildElement*> list;
  list.reserve(myChildren.size() - myDetachedSlots);
  for (const auto& [order, child] : myChildren) {
    if (child) list.push_back(child);
  }
  return list;
}

cChildElement* cChildElement::getFirstChild() const {
  for (const auto& [order, child] : myChildren) {
    if (child) return child;
  }
  return nullptr;
}

cChildElement* cChildElement::getNextChild(const cChildElement* child) const {
  const auto it = myOrderOf.find(child);
  if (it == myOrderOf.end()) return nullptr;
  auto next = const_cast<cChildElement*>(this)->childAt(it->second) + 1;
  while (next != myChildren.end() && !next->second) ++next;
  return next == myChildren.end() ? nullptr : next->second;
}

bool cChildElement::isDirectChild(const cChildElement* p) const {
  return p && myOrderOf.count(p) != 0;
}

bool cChildElement::isChild(const cChildElement* p) const {
  for (const cChildElement* e = p ? p->myParent : nullptr; e; e = e->myParent) {
    if (e == this) return true;
  }
  return false;
}

// --- geometry ---------------------------------------------------------------------------

void cChildElement::childRect(sRect* rect) const {
  if (rect) *rect = myRect;
}

bool cChildElement::childRect(const cChildElement* child, sRect* rect) const {
  if (!rect || !isDirectChild(child)) return false;
  *rect = child->myRect;
  return true;
}

sRect cChildElement::placed(const cChildElement* child) const {
  sPoint offset;
  const_cast<cChildElement*>(this)->virtualOffset(&offset);
  return placed(child, offset);
}

sRect cChildElement::placed(const cChildElement* child, const sPoint& offset) {
  sRect r = child->myRect;
  if (!child->myFixedX) r.x -= offset.x;
  if (!child->myFixedY) r.y -= offset.y;
  return r;
}

void cChildElement::processPosQuery(sPoint& p) {
  p.x += myRect.x;
  p.y += myRect.y;
  if (!myParent) return;
  sPoint offset;
  myParent->virtualOffset(&offset);
  if (!myFixedX) p.x -= offset.x;
  if (!myFixedY) p.y -= offset.y;
  myParent->processPosQuery(p);
}

void cChildElement::absPos(sPoint& p) {
  p = {};
  processPosQuery(p);
}

bool cChildElement::inme(int x, int y) const {
  return x >= myRect.x && y >= myRect.y && x < myRect.x + myRect.width &&
         y < myRect.y + myRect.height;
}

void cChildElement::virtualSize(sSize* size) {
  if (size) *size = {myRect.width, myRect.height};
}

void cChildElement::virtualOffset(sPoint* offset) {
  if (offset) *offset = {};
}

void cChildElement::clientRect(sRect* rect) {
  if (!rect) return;
  const int b = myBorderWidth;
  *rect = {b, b, std::max(0, myRect.width - 2 * b), std::max(0, myRect.height - 2 * b)};
}

void cChildElement::setMinSize(int w, int h) {
  myMinSize = {w, h};
  if (!myParent && myWinTarget) myWinTarget->_rt_setminsize(w, h);
}

void cChildElement::setMaxSize(int w, int h) {
  myMaxSize = {w, h};
  if (!myParent && myWinTarget) myWinTarget->_rt_setmaxsize(w, h);
}

void cChildElement::clampSize(int& w, int& h) const {
  if (myMinSize.width != -1) w = std::max(w, myMinSize.width);
  if (myMinSize.height != -1) h = std::max(h, myMinSize.height);
  if (myMaxSize.width != -1) w = std::min(w, myMaxSize.width);
  if (myMaxSize.height != -1) h = std::min(h, myMaxSize.height);
}

bool cChildElement::move(int x, int y, int w, int h) {
  w = std::max(0, w);
  h = std::max(0, h);
  const sRect before = myParent ? myParent->placed(this) : myRect;
  const bool resized = w != myRect.width || h != myRect.height;
  if (!resized && x == myRect.x && y == myRect.y) return true;
  myRect.x = x;
  myRect.y = y;
  if (!myParent && myWinTarget) myWinTarget->_rt_changepos(x, y, w, h);
  if (resized) processSizeChanges(w, h, false);
  if (myParent && visible()) {
    myParent->repaint(&before);
    const sRect after = myParent->placed(this);
    myParent->repaint(&after);
  }
  return true;
}

void cChildElement::processSizeChanges(int w, int h, bool force) {
  const bool changed = w != myRect.width || h != myRect.height;
  myRect.width = std::max(0, w);
  myRect.height = std::max(0, h);
  if (!changed && !force && !myNeedsLayout) return;
  myNeedsLayout = false;
  // In order-number order, so that children learn of their new sizes in a fixed order.
  for (cChildElement* c : childList()) {
    const auto anchored = myAnchors.find(c);
    if (anchored == myAnchors.end()) continue;
    const sRect r = resolveAnchor(c, anchored->second);
    c->myRect.x = r.x;
    c->myRect.y = r.y;
    if (r.width != c->myRect.width || r.height != c->myRect.height)
      c->processSizeChanges(r.width, r.height, false);
  }
  onSizeChanged();
}

sRect cChildElement::resolveAnchor(const cChildElement* child, const sAnchor& a) {
  sSize content;
  virtualSize(&content);
  // A fixed part lies over the visible area, not over the scrolled content.
  const int W = child->myFixedX ? myRect.width : content.width;
  const int H = child->myFixedY ? myRect.height : content.height;
  sRect r = {a.x < 0 ? a.x + W + 1 : a.x, a.y < 0 ? a.y + H + 1 : a.y, a.w < 0 ? a.w + W + 1 : a.w,
             a.h < 0 ? a.h + H + 1 : a.h};
  child->clampSize(r.width, r.height);
  r.width = std::max(0, r.width);
  r.height = std::max(0, r.height);
  return r;
}

bool cChildElement::anchor(cChildElement* child, int x, int y, int w, int h) {
  if (!child || child == this) return false;
  const sAnchor a = {x, y, w, h};
  if (!isDirectChild(child)) {
    if (child->myParent) return false;
    const sRect r = resolveAnchor(child, a);
    if (!attach(child, r.x, r.y, r.width, r.height, cptClient)) return false;
  } else {
    const sRect r = resolveAnchor(child, a);
    child->move(r.x, r.y, r.width, r.height);
  }
  myAnchors[child] = a;
  return true;
}

// --- flags ------------------------------------------------------------------------------

bool cChildElement::enabled() const {
  for (const cChildElement* e = this; e; e = e->myParent) {
    if (!e->myEnabled) return false;
  }
  return true;
}

bool cChildElement::visible() const {
  for (const cChildElement* e = this; e; e = e->myParent) {
    if (!e->myVisible) return false;
  }
  return true;
}

void cChildElement::enable() {
  if (myEnabled) return;
  myEnabled = true;
  if (!enabled()) return;
  processEnableChange(true);
  repaint();
}

void cChildElement::disable(bool repaintNow) {
  if (!myEnabled) return;
  const bool was = enabled();
  myEnabled = false;
  if (!was) return;
  processEnableChange(false);
  if (repaintNow) repaint();
}

void cChildElement::processEnableChange(bool state) {
  onEnableChanged(state);
  for (cChildElement* child : childList()) {
    if (child->myEnabled) child->processEnableChange(state);
  }
}

void cChildElement::show(bool repaintNow) {
  if (myVisible) return;
  myVisible = true;
  if (repaintNow) repaint();
}

void cChildElement::hide(bool repaintNow) {
  if (!myVisible) return;
  // The area is repainted by the parent, since this element no longer paints.
  if (repaintNow && myParent && myParent->visible()) {
    const sRect was = myParent->placed(this);
    myVisible = false;
    myParent->repaint(&was);
  }
  myVisible = false;
}

bool cChildElement::canTabStop() {
  return myTabStop;
}

void cChildElement::setTabStop(bool on) {
  myTabStop = on;
}

bool cChildElement::canArrowTabStop() {
  return myArrowTabStop;
}

void cChildElement::setArrowTabStop(bool on) {
  myArrowTabStop = on;
}

void cChildElement::setTransparent(bool on) {
  myTransparent = on;
}

bool cChildElement::setPointer(eMousePointerTypes pointer) {
  if (pointer < mpArrow || pointer > mpGrab2) return false;
  myPointer = pointer;
  return true;
}

bool cChildElement::changePointerReq(eMousePointerTypes pointer) {
  cWindowRequestTarget* t = target();
  return t && t->_rt_setpointer(pointer);
}

// --- texts ------------------------------------------------------------------------------

const char* cChildElement::text() {
  return myText.isNull() ? "" : myText.c_str();
}

const char* cChildElement::hint() {
  return myHint.isNull() ? nullptr : myHint.c_str();
}

long long cChildElement::text(char* out, long long cap) {
  const char* t = text();
  const auto n = static_cast<long long>(std::strlen(t));
  if (out && cap > 0) {
    const long long copied = std::min(n, cap - 1);
    std::memcpy(out, t, static_cast<size_t>(copied));
    out[copied] = 0;
  }
  return n;
}

bool cChildElement::setText(const char* text, long long len, bool repaintNow) {
  if (!text) {
    myText.clear();
  } else {
    const long long n = len < 0 ? static_cast<long long>(std::strlen(text)) : len;
    myText.set(text, n);
  }
  if (repaintNow) repaint();
  return true;
}

void cChildElement::wipeText() {
  // Texts may be passwords: overwrite before freeing.
  if (!myText.isNull()) {
    std::fill(myText.data(), myText.data() + myText.length(), '\0');
    myText.clear();
  }
}

bool cChildElement::setHint(const char* hint) {
  myHint.set(hint);
  return true;
}

bool cChildElement::setCaption(const char* text, long long len) {
  setText(text, len, true);
  if (!myParent && myWinTarget) return myWinTarget->_rt_setcaption(this->text());
  return true;
}

// --- language ---------------------------------------------------------------------------

const cCiomLangData* cChildElement::requestNamedLangResource(const char* section) {
  cWindowRequestTarget* t = target();
  return t && section ? t->_rt_getnamedlangsection(section) : nullptr;
}

const char* cChildElement::string(int n) {
  for (cChildElement* e = this; e; e = e->myParent) {
    if (e->myLangData) return e->myLangData->string(n);
    if (e->myNamesSection) return nullptr;
  }
  return nullptr;
}

const char* cChildElement::string(cChildElement* other, int n) {
  if (!myLangData && myNamesSection) myLangData = requestNamedLangResource(wantLangResource());
  if (myLangData) return myLangData->string(n);
  return other ? other->string(n) : nullptr;
}

// --- fonts and window services ----------------------------------------------------------

cFontObject* cWindowRequestTarget::_rt_createfont(int kind, int size, const char* face, bool bold,
                                                  bool underline, bool italic) {
  return cFontObject::get(kind, size, face, bold, underline, italic);
}

cFontObject* cChildElement::createFont(int kind, int size, const char* face, bool bold,
                                       bool underline, bool italic) {
  cWindowRequestTarget* t = target();
  return t ? t->_rt_createfont(kind, size, face, bold, underline, italic)
           : cFontObject::get(kind, size, face, bold, underline, italic);
}

cFontObject* cChildElement::stdFont() {
  return createFont(5, 13, _glbalStdFont(), false, false, false);
}

cFontObject* cChildElement::stdFontBold() {
  return createFont(6, 13, _glbalStdFont(), true, false, false);
}

cFontObject* cChildElement::stdFontItalic() {
  return createFont(5, 13, _glbalStdFont(), false, false, true);
}

cFontObject* cChildElement::stdFontUnderlined() {
  return createFont(5, 13, _glbalStdFont(), false, true, false);
}

bool cChildElement::sizeOf(const char* text, sSize& size, cFontObject* font) {
  size = {};
  cWindowRequestTarget* t = target();
  return t && text && t->_rt_textbox(font ? font : stdFont(), text, size);
}

bool cChildElement::rulerOf(const unsigned short* text, long long len, int* advances,
                            cFontObject* font) {
  cWindowRequestTarget* t = target();
  return t && text && advances && len >= 0 &&
         t->_rt_textruler(font ? font : stdFont(), text, len, advances);
}

bool cChildElement::desktopSize(sSize& size) {
  cWindowRequestTarget* t = target();
  return t && t->_rt_desktopsize(size.width, size.height);
}

bool cChildElement::maxWinSize(sSize& size) {
  cWindowRequestTarget* t = target();
  return t && t->_rt_maxwinsize(size.width, size.height);
}

int cChildElement::screenDPI() {
  cWindowRequestTarget* t = target();
  return t ? t->_rt_screen_dpi() : 96;
}

bool cChildElement::blockSystemSleep(const char* reason) {
  cWindowRequestTarget* t = target();
  return t && t->_rt_blocksleep(reason);
}

void cChildElement::unblockSystemSleep() {
  if (cWindowRequestTarget* t = target()) t->_rt_unblocksleep();
}

bool cChildElement::clipboardCopyText(const char* text, long long len) {
  cWindowRequestTarget* t = target();
  if (!t || !text) return false;
  return t->_rt_copy_text(text, len < 0 ? static_cast<long long>(std::strlen(text)) : len);
}

bool cChildElement::clipboardCopy(const void* data, long long len) {
  cWindowRequestTarget* t = target();
  return t && data && len >= 0 && t->_rt_copy_raw(data, len);
}

bool cChildElement::clipboardRequestText(_typebuf<char>& out) {
  out.clear();
  _typebuf<unsigned char> bytes;
  cWindowRequestTarget* t = target();
  if (!t || !t->_rt_request_copied_text(bytes)) return false;
  out.set(bytes.count());
  if (bytes.count()) std::memcpy(out.data(), bytes.data(), static_cast<size_t>(bytes.count()));
  return true;
}

bool cChildElement::requestText(fTextRequest request, _guardchar<char>& out) {
  out.clear();
  _typebuf<unsigned char> bytes;
  cWindowRequestTarget* t = target();
  if (!t || !(t->*request)(bytes)) return false;
  out.set(reinterpret_cast<const char*>(bytes.count() ? bytes.data() : nullptr), bytes.count());
  if (out.isNull()) out.set("");
  return true;
}

bool cChildElement::clipboardRequestText(_guardchar<char>& out) {
  return requestText(&cWindowRequestTarget::_rt_request_copied_text, out);
}

bool cChildElement::primaryCopyText(const char* text, long long len) {
  cWindowRequestTarget* t = target();
  if (!t || !text) return false;
  return t->_rt_copy_primary(text, len < 0 ? static_cast<long long>(std::strlen(text)) : len);
}

bool cChildElement::primaryRequestText(_guardchar<char>& out) {
  return requestText(&cWindowRequestTarget::_rt_request_primary, out);
}

bool cChildElement::clipboardRequest(_typebuf<unsigned char>& out) {
  out.clear();
  cWindowRequestTarget* t = target();
  return t && t->_rt_request_copied_raw(out);
}

bool cChildElement::clipboardTest(bool text) {
  cWindowRequestTarget* t = target();
  return t && t->_rt_request_has_copied(text);
}

int cChildElement::modal(const char* caption, int w, int h, cChildElement* owner, bool sizeable) {
  cWindowRequestTarget* t = (owner ? owner : this)->target();
  return t ? t->_rt_modal(caption, w, h, this, sizeable) : -1;
}

cWindowHolder* cChildElement::popup(int x, int y, int w, int h, cChildElement* owner,
                                    bool activate) {
  cWindowRequestTarget* t = (owner ? owner : this)->target();
  return t ? t->_rt_popup(x, y, w, h, this, activate) : nullptr;
}

int cChildElement::modal_popup(int x, int y, int w, int h, cChildElement* owner) {
  cWindowRequestTarget* t = (owner ? owner : this)->target();
  return t ? t->_rt_modal_popup(x, y, w, h, this) : -1;
}

void cChildElement::end_modal(int result) {
  if (cWindowRequestTarget* t = target()) t->_rt_modalresult(result);
}

bool cChildElement::requestOSWinFocus() {
  cWindowRequestTarget* t = target();
  if (!t) return false;
  t->_rt_focus();
  return true;
}

// --- lifecycle --------------------------------------------------------------------------

void cChildElement::processConstruct() {
  onInitData();
  onConstruct();
}

bool cChildElement::processClose() {
  if (!onClose()) return false;
  for (cChildElement* child : childList()) {
    if (valid(child) && !child->processClose()) return false;
  }
  return true;
}
