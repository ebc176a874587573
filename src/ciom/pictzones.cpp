#include "pictzones.h"

#include <algorithm>

void cPictureZonesChild::setZone(int id, const sRect& rect, const char* hint) {
  auto it =
      std::find_if(myZones.begin(), myZones.end(), [id](const sZone& z) { return z.id == id; });
  if (it == myZones.end()) it = myZones.insert(myZones.end(), sZone{id, {}, {}});
  it->rect = rect;
  it->hint = hint ? hint : "";
}

bool cPictureZonesChild::removeZone(int id) {
  return std::erase_if(myZones, [id](const sZone& z) { return z.id == id; }) != 0;
}

int cPictureZonesChild::zoneAt(int x, int y) const {
  for (const sZone& z : myZones) {
    if (x >= z.rect.x && y >= z.rect.y && x < z.rect.x + z.rect.width &&
        y < z.rect.y + z.rect.height)
      return z.id;
  }
  return -1;
}

void cPictureZonesChild::onPaint(cCanvas* canvas) {
  if (!canvas) return;
  const sRect all{0, 0, width(), height()};
  if (!transparent()) canvas->drawRect(&all, defaultBackgroundColor(), defaultBackgroundColor());
  if (const cPicture* p = myPicture.image()) {
    const sPoint at{0, 0};
    canvas->drawTransparent(&at, p, nullptr);
  }
}

void cPictureZonesChild::onMouseButton(int x, int y, int button, bool down) {
  if (button != 1) return;
  const int zone = zoneAt(x, y);
  if (down) {
    myPressedZone = zone;
    return;
  }
  if (zone >= 0 && zone == myPressedZone) notifyAction(new cZoneAction(zone));
  myPressedZone = -1;
}

void cPictureZonesChild::onMouseMoving(int x, int y) {
  const int zone = zoneAt(x, y);
  changePointerReq(zone >= 0 ? mpHand : mpArrow);
  if (zone == myHotZone) return;
  myHotZone = zone;
  // The zone's hint, shown as the element's own while the pointer is over the zone.
  const auto it =
      std::find_if(myZones.begin(), myZones.end(), [zone](const sZone& z) { return z.id == zone; });
  const bool hinted = it != myZones.end() && !it->hint.empty();
  cChildElement::onMouseLeft();
  setHint(hinted ? it->hint.c_str() : nullptr);
  if (hinted) cChildElement::onMouseOver();
}

void cPictureZonesChild::onMouseLeft() {
  myHotZone = -1;
  myPressedZone = -1;
  cChildElement::onMouseLeft();
}
