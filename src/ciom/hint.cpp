#include "hint.h"

#include <algorithm>
#include <cstring>

#include "theme.h"

const char* cHintMaster::line(const char* text, _guardchar<char>& out) {
  if (!text) {
    out.clear();
    return nullptr;
  }
  const char* end = std::strchr(text, '\n');
  out.set(text, end ? end - text : static_cast<long long>(std::strlen(text)));
  return end ? end + 1 : nullptr;
}

bool cHintMaster::show(cChildElement* element, const char* text, const sPoint* pos,
                       unsigned background, unsigned textColour) {
  if (!element || !text) return false;
  cFontObject* font = element->stdFont();
  if (!font) return false;
  int widest = 0, lines = 0, lineHeight = 0;
  _guardchar<char> one;
  for (const char* rest = text; rest;) {
    rest = line(rest, one);
    sSize size;
    if (!element->sizeOf(one.c_str(), size, font)) return false;
    widest = std::max(widest, size.width);
    lineHeight = std::max(lineHeight, size.height);
    ++lines;
  }
  if (widest <= 0) return false;

  sPoint at;
  if (pos) {
    at = *pos;
  } else {
    element->absPos(at);
    at.x += 2;
    at.y += element->height() + 2;
  }
  const cCITheme& theme = cCITheme::theme();
  setText(text, -1, false);
  myBackground = background == kThemeColour ? theme.getColor(kBackgroundColour) : background;
  myTextColour = textColour == kThemeColour ? theme.getColor(kTextColour) : textColour;
  myLineHeight = lineHeight;
  cWindowHolder* window = popup(at.x, at.y, widest + 8, lines * lineHeight + 4, element, false);
  if (!window) return false;
  set(window);
  return true;
}

void cHintMaster::hide() {
  set(nullptr);
}

void cHintMaster::set(cWindowHolder* window) {
  myWindow.reset(window);
}

void cHintMaster::onPaint(cCanvas* canvas) {
  const sRect all = {0, 0, width(), height()};
  canvas->setLineMode(myTextColour, 1);
  canvas->drawRect(&all, myBackground, myTextColour);
  if (!canvas->setTextMode(stdFont())) return;
  canvas->setTextColors(myTextColour, myBackground);
  _guardchar<char> one;
  int y = 2;
  for (const char* rest = text(); rest; y += myLineHeight) {
    rest = line(rest, one);
    canvas->drawText(4, y, true, one.c_str(), one.length());
  }
}
