// A static element: a line of text and/or a picture, neither focusable nor clickable.
// The text is the element's own (setText); the font defaults to the standard font.
#pragma once

#include "canvas.h"
#include "element.h"
#include "pictlist.h"

class cStaticChild : public cChildElement {
public:
  static constexpr unsigned kDefaultColour = 0xFF000000; // the theme's text colour

  void setTextColour(unsigned colour);
  // Null: the standard font. The font is a shared object; the element does not own it.
  void setFont(cFontObject* font);
  void setAlign(cCanvas::eTextAlign align);
  // Room left of the picture and text.
  void setMargin(int left);
  // The picture stands centred in the element when there is no text, else at its left
  // with the text after it.
  cChildPicture& picture() { return myPicture; }
  // What the text and picture need, measured with the element's font.
  bool wantedSize(sSize& size);

  void onPaint(cCanvas* canvas) override;

private:
  cFontObject* font();

  unsigned myColour = kDefaultColour;
  cFontObject* myFont = nullptr;
  cCanvas::eTextAlign myAlign = cCanvas::taLeft;
  int myMargin = 0;
  cChildPicture myPicture;
};
