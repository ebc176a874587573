#include "progress.h"

#include <algorithm>
#include <cstring>

#include "ciom/themeimages.h"
#include "theme.h"

namespace {

constexpr int kEnd = 3; // columns of each rounded end in the end pieces
constexpr int kInk = 13;

// A bar piece: the middle stretched, the rounded ends cut from the end piece.
void drawBar(cCanvas* canvas, int middle, int ends, const sRect& r) {
  if (r.width < 2 * kEnd) return;
  cCITheme::theme().drawStretched(canvas, middle, {r.x + kEnd, r.y, r.width - 2 * kEnd, r.height});
  const cPicture* p = cCITheme::theme().getPict(ends);
  if (!p) return;
  cPicture left, right;
  if (p->subPictTo({0, 0, kEnd, p->height()}, &left))
    canvas->drawBitmapResized(&left, r.x, r.y, kEnd, r.height, cPicture::rmStretch);
  if (p->subPictTo({kEnd, 0, kEnd, p->height()}, &right))
    canvas->drawBitmapResized(&right, r.x + r.width - kEnd, r.y, kEnd, r.height,
                              cPicture::rmStretch);
}

} // namespace

cProgressChild::cProgressChild()
    : myTimer([this] {
        myStripe = (myStripe + 1) % 16;
        repaint();
      }) {}

void cProgressChild::setProgress(long long done, long long total) {
  myTotal = std::max(1LL, total);
  myDone = std::clamp(done, 0LL, myTotal);
  repaint();
}

int cProgressChild::filledWidth() const {
  return static_cast<int>(static_cast<long double>(width()) * myDone / myTotal);
}

void cProgressChild::setBusy(bool on) {
  myBusy = on;
  if (on) {
    myTimer.start(kStripeMs);
  } else {
    myTimer.stop();
  }
  repaint();
}

void cProgressChild::onPaint(cCanvas* canvas) {
  if (!canvas) return;
  const sRect all{0, 0, width(), height()};
  canvas->drawRect(&all, defaultBackgroundColor(), defaultBackgroundColor());
  const int h = std::min(height(), kHeight);
  const sRect bar{0, (height() - h) / 2, width(), h};
  drawBar(canvas, tiHProgressTrack, tiHProgressEnds, bar);
  const int fill = myBusy ? bar.width : filledWidth();
  if (fill >= 2 * kEnd) drawBar(canvas, tiHProgressFill, tiHProgressEnds, {0, bar.y, fill, h});
  if (myBusy) {
    // The stripes, tiled along the bar and moved on by the timer.
    if (const cPicture* s = cCITheme::theme().getPict(tiProgressStripe)) {
      std::unique_ptr<cCanvas> inside(canvas->subCanvas(&bar));
      for (int x = myStripe - s->width(); inside && x < bar.width; x += s->width()) {
        const sPoint at{x, 0};
        inside->drawTransparent(&at, s, nullptr);
      }
    }
  }
  const char* t = text();
  if (t && *t && canvas->setTextMode(stdFont())) {
    canvas->setTextColors(cCITheme::theme().getColor(kInk), defaultBackgroundColor());
    canvas->drawTextLimited(0, 0, width(), height(), cCanvas::taCenter, true, 0, 0, t,
                            static_cast<long long>(std::strlen(t)), nullptr, false);
  }
}
