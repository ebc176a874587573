#include "theme.h"

#include "canvas.h"

namespace {

std::unique_ptr<cCITheme>& globalTheme() {
  static std::unique_ptr<cCITheme> theme;
  return theme;
}

} // namespace

cCITheme::cCITheme(const cStaticCIThemeDef* def) {
  if (!def) return;
  if (def->dimensions) std::copy_n(def->dimensions, myDimensions.size(), myDimensions.begin());
  if (def->colours) std::copy_n(def->colours, myColours.size(), myColours.begin());
  if (!def->images) return;
  for (int i = 0; i < kImages; ++i) {
    const sStaticCIThemeImage& from = def->images[i];
    sImageDef& to = myImages[i];
    to.colour = from.colour;
    auto picture = std::make_unique<cPicture>();
    if (from.resource && picture->create(from.resource, from.size)) {
      if (from.detail) picture->createDetail(from.detail, from.detailSize);
      to.width = picture->width();
      to.height = picture->height();
      to.picture = std::move(picture);
    } else if (from.width == 1 && from.height == 1) {
      to.width = to.height = 1;
    }
  }
}

cCITheme& cCITheme::theme() {
  auto& theme = globalTheme();
  if (!theme) theme = std::make_unique<cCITheme>(&builtIn());
  return *theme;
}

void cCITheme::setTheme(const cStaticCIThemeDef* def) {
  globalTheme() = std::make_unique<cCITheme>(def);
}

int cCITheme::getDimension(int dim, int type) const {
  if (dim < 0 || dim >= kDimensions || type < 0 || type > 3) return 0;
  const int at = dim * 3 + type;
  return at < static_cast<int>(myDimensions.size()) ? myDimensions[at] : 0;
}

void cCITheme::setDimension(int dim, int value) {
  if (dim >= 0 && dim < kDimensions) myDimensions[dim * 3] = value;
}

unsigned cCITheme::getColor(int colour) const {
  return colour >= 0 && colour < kColours ? myColours[colour] : 0;
}

void cCITheme::setColor(int colour, unsigned value) {
  if (colour >= 0 && colour < kColours) myColours[colour] = value;
}

const unsigned* cCITheme::getImage(int elem, sSize& size) const {
  if (elem < 0 || elem >= kImages) return nullptr;
  const sImageDef& def = myImages[elem];
  size = {def.width, def.height};
  if (def.width == 1 && def.height == 1) return &def.colour;
  return def.picture ? def.picture->raw() : nullptr;
}

unsigned cCITheme::elementColour(int elem) const {
  sSize size;
  const unsigned* p = getImage(elem, size);
  if (!p || size.width != 1 || size.height != 1) return 0;
  const unsigned argb = *p; // stored as a pixel, 0xAARRGGBB
  return ((argb >> 16) & 0xFF) | (argb & 0xFF00) | ((argb & 0xFF) << 16);
}

void cCITheme::drawStretched(cCanvas* canvas, int elem, const sRect& rect) const {
  if (const cPicture* p = getPict(elem); canvas && p && !rect.empty())
    canvas->drawBitmapResized(p, rect.x, rect.y, rect.width, rect.height, cPicture::rmStretch);
}

cPicture* cCITheme::getPict(int elem) const {
  return elem >= 0 && elem < kImages ? myImages[elem].picture.get() : nullptr;
}

bool cCITheme::setImage(int elem, const unsigned* pixels, int w, int h, bool bottomUp) {
  if (!pixels || w <= 0 || h <= 0 || elem < 0 || elem >= kImages) return false;
  sImageDef& def = myImages[elem];
  if (w == 1 && h == 1) {
    def = {1, 1, pixels[0], nullptr};
    return true;
  }
  auto picture = std::make_unique<cPicture>();
  if (!picture->create(pixels, w, h, bottomUp)) return false;
  def = {w, h, 0, std::move(picture)};
  return true;
}
