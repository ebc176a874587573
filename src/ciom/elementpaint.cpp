// Invalidation and painting: areas climb to the window; painting runs top-down, each
// element painting only where its children do not, then each child on a canvas of its own.
#include <algorithm>
#include <memory>
#include <vector>

#include "element.h"

namespace {

sRect cut(const sRect& a, const sRect& b) {
  const int l = std::max(a.x, b.x), t = std::max(a.y, b.y);
  const int r = std::min(a.x + a.width, b.x + b.width),
            d = std::min(a.y + a.height, b.y + b.height);
  return r > l && d > t ? sRect{l, t, r - l, d - t} : sRect{};
}

// Excludes the four strips of a size × size area that lie around inner, then selects.
void excludeAround(cCanvas* canvas, const sSize& size, const sRect& inner) {
  const int right = inner.x + inner.width, bottom = inner.y + inner.height;
  const sRect strips[] = {{0, 0, inner.x, size.height},
                          {0, 0, size.width, inner.y},
                          {right, 0, size.width - right, size.height},
                          {0, bottom, size.width, size.height - bottom}};
  for (const sRect& strip : strips) {
    if (!strip.empty()) canvas->clip(&strip);
  }
  canvas->select();
}

} // namespace

void cChildElement::repaint(const sRect* rect) {
  const sArea area = rect ? sArea{rect->x, rect->y, rect->x + rect->width, rect->y + rect->height}
                          : sArea{0, 0, myRect.width, myRect.height};
  repaintReq(&area);
}

void cChildElement::repaintReq(const sArea* area) {
  if (!area || !myVisible) return;
  sArea a = myFullRepaint ? sArea{0, 0, myRect.width, myRect.height} : *area;
  if (!myParent) {
    a = {std::max(a.left, 0), std::max(a.top, 0), std::min(a.right, myRect.width),
         std::min(a.bottom, myRect.height)};
    if (myWinTarget && a.right > a.left && a.bottom > a.top) myWinTarget->_rt_repaint(&a);
    return;
  }
  const sRect at = myParent->placed(this);
  a = {std::max(a.left + at.x, 0), std::max(a.top + at.y, 0),
       std::min(a.right + at.x, myParent->width()), std::min(a.bottom + at.y, myParent->height())};
  if (a.right <= a.left || a.bottom <= a.top) return;
  myParent->repaintReq(&a);
}

void cChildElement::processErase(cCanvas* canvas) {
  if (canvas) onErase(canvas);
}

bool cChildElement::requestCustomBackground(cCanvas* canvas, sRect* rect) {
  if (!myParent || !rect) return false;
  const sRect at = myParent->placed(this);
  sRect inParent = {rect->x + at.x, rect->y + at.y, rect->width, rect->height};
  return myParent->requestCustomBackgroundInt(canvas, &inParent);
}

bool cChildElement::requestCustomBackgroundInt(cCanvas* canvas, sRect* rect) {
  return onBackgroundRequest(canvas, rect) || requestCustomBackground(canvas, rect);
}

void cChildElement::paintSelf(cCanvas* canvas) {
  if (myTransparent) {
    sRect whole = {0, 0, myRect.width, myRect.height};
    requestCustomBackground(canvas, &whole);
  }
  onPaint(canvas);
}

void cChildElement::processPaint(cCanvas* canvas) {
  if (!canvas) return;
  const sRect own = {0, 0, myRect.width, myRect.height};
  sRect client;
  clientRect(&client);
  const sRect room = cut(client, own);

  // Children that show are taken out of the drawable area first.
  std::vector<std::pair<cChildElement*, sRect>> shown;
  sPoint offset;
  virtualOffset(&offset);
  for (const auto& [order, child] : myChildren) {
    if (!child || !child->myVisible) continue;
    const sRect r = cut(placed(child, offset), room);
    if (r.empty() || !canvas->inDrawArea(&r)) continue;
    canvas->clip(&r);
    shown.emplace_back(child, r);
  }
  canvas->select();

  std::unique_ptr<cCanvas> buffer(
      myDoubleBuffer ? canvas->offscreen(myRect.width, myRect.height, -1, -1) : nullptr);
  if (buffer) {
    paintSelf(buffer.get());
    canvas->draw(0, 0, buffer.get(), 0, 0, -1, -1);
  } else {
    paintSelf(canvas);
  }

  // The margins outside the client area belong to this element (its border).
  excludeAround(canvas, {own.width, own.height}, client);

  for (const auto& [child, r] : shown) {
    canvas->unclip(&r);
    canvas->select();
    if (canvas->canDrawAt(&r)) {
      const sRect whole = placed(child, offset);
      std::unique_ptr<cCanvas> sub(canvas->subCanvas(&whole));
      if (sub) {
        // The child's canvas starts at its own origin but shows only its visible part.
        excludeAround(sub.get(), {whole.width, whole.height},
                      {r.x - whole.x, r.y - whole.y, r.width, r.height});
        child->processPaint(sub.get());
      }
    }
    canvas->clip(&r);
  }
}
