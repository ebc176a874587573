// The canvas over any Cairo surface: an X11 window's, an offscreen pixmap or an image.
//
// Each canvas has its own Cairo context on the shared surface, translated to the canvas
// origin and clipped to its visible area, so a sub-canvas never disturbs its parent's
// state. The clipping list holds the visible area first and then the excluded rectangles;
// select() applies it to the context. Text goes through Pango in the current cPangoFont.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include <cairo.h>

#include "cairopixels.h"
#include "ciom/canvas.h"

class cPangoFont;

class cCairoCanvas : public cCanvas {
public:
  // One item of the clipping list, in canvas coordinates.
  class cClippingItem {
  public:
    explicit cClippingItem(const sArea& area) : myArea(area) {}
    const sArea& area() const { return myArea; }
    bool contains(const sPoint& p) const;
    bool intersects(const sArea& other) const;
    bool isIn(const sArea& other) const; // wholly inside other

  private:
    sArea myArea;
  };

  // A canvas over the whole of a w × h surface; it keeps its own reference to it.
  cCairoCanvas(cairo_surface_t* surface, int w, int h);
  ~cCairoCanvas() override;
  cCairoCanvas(const cCairoCanvas&) = delete;
  cCairoCanvas& operator=(const cCairoCanvas&) = delete;

  int width() override { return myWidth; }
  int height() override { return myHeight; }
  bool drawText(int x, int y, bool transparent, const char* text, long long len) override;
  bool drawText(int x, int y, bool transparent, const unsigned short* text, long long len) override;
  bool drawRect(const sRect* rect, unsigned fill, unsigned border) override;
  bool drawBitmap(const sPoint* at, const cPicture* picture, const sSize* size) override;
  bool drawBitmap(int x, int y, const cPicture* picture, int w, int h) override;
  bool drawTransparent(const sPoint* at, const cPicture* picture, const sSize* size) override;
  bool drawLine(const sPoint* a, const sPoint* b) override;
  bool draw(int x, int y, cCanvas* source, int sx, int sy, int w, int h) override;
  bool clip(const sRect* rect) override;
  bool unclip(const sRect* rect) override;
  void setLineMode(unsigned colour, int width) override;
  bool setTextMode(int kind, int size, const char* face, bool bold, bool underline,
                   bool italic) override;
  bool setTextMode(cFontObject* font) override;
  cFontObject* createFont(int kind, int size, const char* face, bool bold, bool underline,
                          bool italic) override;
  void setTextColors(unsigned foreground, unsigned background) override;
  unsigned bgColor() override { return myTextBackground; }
  bool textSize(const char* text, long long len, sSize& size) override;
  bool textSize(const unsigned short* text, long long len, sSize& size) override;
  bool textRuler(const char* text, long long len, int* advances) override;
  bool textRuler(const unsigned short* text, long long len, int* advances) override;
  bool canDrawAt(const sRect* rect) override;
  bool snapshot(cPicture* picture, const sRect* rect) override;
  cCanvas* subCanvas(const sRect* rect) override;
  cCanvas* offscreen(int w, int h, int, int) override;
  bool select() override;

  cairo_surface_t* surface() const { return mySurface.get(); }
  // Where the canvas origin lies on the surface.
  sPoint origin() const { return myOrigin; }
  const std::vector<cClippingItem>& clipping() const { return myClipping; }

protected:
  // A canvas whose origin lies at origin on the surface, drawing only inside visible
  // (canvas coordinates).
  cCairoCanvas(cairo_surface_t* surface, sPoint origin, const sArea& visible);

private:
  bool ready() const { return myContext != nullptr; }
  void setColour(unsigned colour);
  // Text in the current font: UTF-8 that Pango accepts, or null.
  bool drawUtf8(int x, int y, bool transparent, const char* text, int bytes);
  bool measureUtf8(const char* text, int bytes, sSize& size);
  std::vector<int> clusterWidths(const std::string& utf8);
  bool picture(int x, int y, const cPicture* picture, int w, int h, bool opaque);

  tCairoSurface mySurface;
  cairo_t* myContext = nullptr;
  sPoint myOrigin;
  int myWidth = 0, myHeight = 0;
  std::vector<cClippingItem> myClipping; // the visible area, then the exclusions
  unsigned myLineColour = 0;
  int myLineWidth = 1;
  unsigned myTextColour = 0, myTextBackground = 0xFFFFFF;
  cPangoFont* myFont = nullptr;
};
