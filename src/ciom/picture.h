// Pictures: 32-bit pixel buffers, row by row from the top.
//
// A pixel's bytes in memory are blue, green, red, alpha, so as a 32-bit value it reads
// 0xAARRGGBB; alpha is straight (not premultiplied). Every operation that makes or changes
// a picture returns false, leaving the output empty, when it cannot (bad sizes, no
// memory, a resource that does not decode).
#pragma once

#include <memory>

#include "base/buffers.h"
#include "geometry.h"

class cPicture {
public:
  enum eResizeMethod {
    rmStretch = 0, // nearest pixel: hard edges, for pixel art and patterns
    rmScaling = 1  // area average down, bilinear up: smooth, for photos and icons
  };
  static constexpr int kMaxSide = 65536;

  // A picture may carry its detail: the same artwork drawn for screens of kDetail times
  // the density, kDetail × width by kDetail × height pixels. Canvases on such screens draw
  // the detail in its place. Operations that change a picture change its detail alike;
  // those that could not keep the two alike (creating, blt onto a picture without one)
  // drop it.
  static constexpr int kDetail = 2;

  cPicture() = default;
  cPicture(const cPicture& other);
  cPicture& operator=(const cPicture& other);
  cPicture(cPicture&&) noexcept = default;
  cPicture& operator=(cPicture&&) noexcept = default;

  bool create(int w, int h);                 // transparent black
  bool create(unsigned pixel, int w, int h); // every pixel the same 0xAARRGGBB value
  bool create(const unsigned* pixels, int w, int h, bool bottomUp);
  // A built-in resource: width and height (signed 32-bit little-endian, 1 to 65536) and a
  // zlib stream of the w × h pixels, bottom row first.
  bool create(const unsigned char* resource, unsigned size);
  // Takes over the buffer's w × h pixels (the buffer is left empty); false when the buffer
  // does not hold exactly that many.
  bool create_on(_typebuf<unsigned>& pixels, int w, int h);
  void destroy();
  void swap(cPicture& other) noexcept;

  // Decodes a resource as this picture's detail; false (keeping none) when it does not
  // decode or does not measure exactly kDetail times this picture.
  bool createDetail(const unsigned char* resource, unsigned size);
  const cPicture* detail() const { return myDetail.get(); }

  unsigned* raw() { return myPixels.count() ? &myPixels[0] : nullptr; }
  const unsigned* raw() const { return myPixels.count() ? &myPixels[0] : nullptr; }
  int width() const { return myWidth; }
  int height() const { return myHeight; }
  bool empty() const { return myWidth == 0; }
  unsigned pixel(int x, int y) const { return raw()[static_cast<long long>(y) * myWidth + x]; }

  void makesolid(); // every alpha opaque

  // Puts the top-left w × h part of this picture into dst at x, y (clipped to both),
  // copying the pixels or, with blendIt, laying them over dst by their alpha. False when
  // nothing is left after clipping.
  bool blt(cPicture* dst, int x, int y, int w, int h, bool blendIt) const;
  bool resizing(eResizeMethod method, int w, int h, cPicture* out) const;
  bool stretch(int w, int h, cPicture* out) const;
  bool scaling(int w, int h, cPicture* out) const;
  // A horizontal stretch to width w that keeps `edge` columns at each side as they are
  // and repeats the middle: borders and buttons made from a small piece.
  bool hStretch(int w, int edge, cPicture* out) const;
  // The part inside rect (cut to the picture) into out.
  bool subPictTo(const sRect& rect, cPicture* out) const;

  void flip();       // upside down
  void flip_left();  // a quarter turn anticlockwise
  void flip_right(); // a quarter turn clockwise
  // Turns by a multiple of 90 degrees (clockwise for positive angles); false for others.
  bool rotate(int degrees);
  // Lays src over this picture at x, y by src's alpha; false when they do not meet.
  bool blend(int x, int y, const cPicture* src);

  // The disabled look: a light grey of the pixel's weight; alpha kept.
  void mkDisabled();
  // The highlighted look: every colour byte raised towards white; alpha kept.
  void mkActive();

private:
  bool allocate(int w, int h);
  // Gives out the detail that make() draws from this one's, when there is one and it
  // succeeds.
  template <class F> void deriveDetail(cPicture* out, F make) const;

  int myWidth = 0;
  int myHeight = 0;
  _typebuf<unsigned> myPixels;
  std::unique_ptr<cPicture> myDetail;
};
