// A picture with active zones: rectangles that take clicks. Over a zone the pointer is a
// hand (and the zone's hint shows); a click on one (pressed and released in the same
// zone) raises a cZoneAction (code 6) with the zone's id.
#pragma once

#include <string>
#include <vector>

#include "element.h"
#include "pictlist.h"

class cPictureZonesChild : public cChildElement {
public:
  class cZoneAction : public cChildAction {
  public:
    static constexpr int kCode = 6;
    explicit cZoneAction(int zone) : cChildAction(kCode), zone(zone) {}
    int zone;
  };

  // The picture, drawn at the element's top left (owned or referred to).
  cChildPicture& picture() { return myPicture; }
  // Adds a zone, or moves the one with that id; the rectangle is in the element.
  void setZone(int id, const sRect& rect, const char* hint = nullptr);
  bool removeZone(int id);
  // The zone under x, y, or -1.
  int zoneAt(int x, int y) const;

  void onPaint(cCanvas* canvas) override;
  void onMouseButton(int x, int y, int button, bool down) override;
  void onMouseMoving(int x, int y) override;
  void onMouseLeft() override;

private:
  struct sZone {
    int id = 0;
    sRect rect;
    std::string hint;
  };

  cChildPicture myPicture;
  std::vector<sZone> myZones;
  int myPressedZone = -1, myHotZone = -1;
};
