// A plain container: an element that holds other elements on its background colour.
#pragma once

#include "canvas.h"
#include "element.h"

class cPanelChild : public cChildElement {
public:
  void onPaint(cCanvas* canvas) override {
    if (!canvas || transparent()) return; // the parent's background shows through
    const sRect all{0, 0, width(), height()};
    canvas->drawRect(&all, defaultBackgroundColor(), defaultBackgroundColor());
  }
};
