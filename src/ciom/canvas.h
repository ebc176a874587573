// The drawing interface that elements paint through.
//
// Integer pixel coordinates with the origin at the element's top left; colours 0x00BBGGRR
// (red in the low byte; the top byte is ignored, every colour opaque). Text in char form
// is UTF-8, in unsigned short form UTF-16; a length of -1 means up to the terminating zero.
// The platform implements the drawing, clipping and measuring; this base class builds
// limited and wrapped text, resized pictures and the draw-area test on top of them. Every
// drawing operation returns false when it draws nothing.
#pragma once

#include "font.h"
#include "geometry.h"
#include "picture.h"

class cCanvas {
public:
  enum eTextAlign { taLeft = 0, taCenter = 1, taRight = 2, taJustify = 3 };

  virtual ~cCanvas() = default;

  virtual int width() = 0;
  virtual int height() = 0;
  virtual bool drawText(int x, int y, bool transparent, const char* text, long long len) = 0;
  virtual bool drawText(int x, int y, bool transparent, const unsigned short* text,
                        long long len) = 0;
  // Text in a box of w × h between two margins, centred vertically, cut with "..." when it
  // is wider than the room; right-aligned text stops one pixel short of the right margin.
  // With fillAround (and not transparent) the box around the text is filled with the text
  // background. Returns the width drawn, or -1 when nothing could be; `shown`, when given,
  // receives how many units of the text were drawn.
  virtual int drawTextLimited(int x, int y, int w, int h, eTextAlign align, bool transparent,
                              int marginLeft, int marginRight, const char* text, long long len,
                              long long* shown, bool fillAround);
  virtual int drawTextLimited(int x, int y, int w, int h, eTextAlign align, bool transparent,
                              int marginLeft, int marginRight, const unsigned short* text,
                              long long len, long long* shown, bool fillAround);
  // Text broken into lines of at most w pixels at blanks (a word wider than a line is cut
  // between characters; a line feed always breaks), lines lineFactor × the line height
  // apart. Justified lines spread the spare width over their gaps, except the last line of
  // a paragraph. `used` receives the widest line and the height of all lines; with
  // measureOnly nothing is drawn. Lines starting below y + h are not drawn.
  virtual bool drawTextWrapped(int x, int y, int w, int h, eTextAlign align, const char* text,
                               sSize& used, bool measureOnly, double lineFactor);
  virtual bool drawTextWrapped(int x, int y, int w, int h, eTextAlign align,
                               const unsigned short* text, sSize& used, bool measureOnly,
                               double lineFactor);
  // Every other pixel of a one-pixel row w wide: the focus mark under a label's text.
  void drawDots(int x, int y, int w, unsigned colour);
  // With border equal to fill the whole rectangle is filled; else its inside (inset by one
  // pixel) is filled and a frame in border colour covers exactly the edge pixels.
  virtual bool drawRect(const sRect* rect, unsigned fill, unsigned border) = 0;
  virtual bool drawBitmap(const sPoint* at, const cPicture* picture, const sSize* size) = 0;
  virtual bool drawBitmap(int x, int y, const cPicture* picture, int w, int h) = 0;
  virtual bool drawTransparent(const sPoint* at, const cPicture* picture, const sSize* size) = 0;
  virtual bool drawLine(const sPoint* a, const sPoint* b) = 0;
  // Copies from another (offscreen) canvas; w and h of -1 take the whole source.
  virtual bool draw(int x, int y, cCanvas* source, int sx, int sy, int w, int h) = 0;
  virtual bool drawBitmapResized(const cPicture* picture, int x, int y, int w, int h,
                                 cPicture::eResizeMethod method);
  // Exclusions: nothing is drawn inside a clipped rectangle from the next select().
  virtual bool clip(const sRect* rect) = 0;
  virtual bool unclip(const sRect* rect) = 0;
  virtual void setLineMode(unsigned colour, int width) = 0;
  virtual bool setTextMode(int kind, int size, const char* face, bool bold, bool underline,
                           bool italic) = 0;
  virtual bool setTextMode(cFontObject* font) = 0;
  virtual cFontObject* createFont(int kind, int size, const char* face, bool bold, bool underline,
                                  bool italic) = 0;
  virtual void setTextColors(unsigned foreground, unsigned background) = 0;
  virtual unsigned bgColor() = 0;
  virtual bool textSize(const char* text, long long len, sSize& size) = 0;
  virtual bool textSize(const unsigned short* text, long long len, sSize& size) = 0;
  // The advance of each character: one int per code point (UTF-8; a byte that is not
  // UTF-8 counts as one) or per unit (UTF-16).
  virtual bool textRuler(const char* text, long long len, int* advances) = 0;
  virtual bool textRuler(const unsigned short* text, long long len, int* advances) = 0;
  // False when the rectangle lies wholly in excluded area.
  virtual bool canDrawAt(const sRect* rect) = 0;
  // Whether the rectangle meets the canvas at all.
  virtual bool inDrawArea(const sRect* rect);
  virtual bool snapshot(cPicture* picture, const sRect* rect) = 0;
  // The caller owns what these return; null when no canvas can be made.
  virtual cCanvas* subCanvas(const sRect* rect) = 0;
  virtual cCanvas* offscreen(int w, int h, int, int) = 0;
  virtual bool select() = 0;
};
