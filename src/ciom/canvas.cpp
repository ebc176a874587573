#include "canvas.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "base/str.h"

namespace {

long long unitsOf(const unsigned short* text, long long len) {
  return len >= 0 ? len : _wcslen(text);
}

const unsigned short kDots[] = {'.', '.', '.', 0};

bool isBlank(unsigned short c) {
  return c == ' ' || c == '\t' || c == '\r';
}

// One line of wrapped text: where its words start and end in the text, and their widths.
struct sWrappedLine {
  std::vector<long long> starts, ends;
  std::vector<int> widths;
  int width = 0; // words and single blanks between them
  bool lastOfParagraph = false;
};

} // namespace

int cCanvas::drawTextLimited(int x, int y, int w, int h, eTextAlign align, bool transparent,
                             int marginLeft, int marginRight, const char* text, long long len,
                             long long* shown, bool fillAround) {
  if (!text) return -1;
  _typebuf<unsigned short> wide;
  _pc2w(text, wide, len);
  long long units = 0;
  const int drawn =
      drawTextLimited(x, y, w, h, align, transparent, marginLeft, marginRight,
                      wide.count() ? &wide[0] : kDots + 3, wide.count(), &units, fillAround);
  if (shown) *shown = drawn < 0 ? 0 : w2utf8_require(wide.count() ? &wide[0] : kDots, units);
  return drawn;
}

int cCanvas::drawTextLimited(int x, int y, int w, int h, eTextAlign align, bool transparent,
                             int marginLeft, int marginRight, const unsigned short* text,
                             long long len, long long* shown, bool fillAround) {
  if (shown) *shown = 0;
  const int room = w - marginLeft - marginRight;
  if (!text || w <= 0 || marginLeft < 0 || marginRight < 0 || room <= 0) return -1;
  long long units = unitsOf(text, len);
  sSize size;
  if (!textSize(text, units, size)) return -1;
  std::vector<unsigned short> cut;
  const unsigned short* drawnText = text;
  long long drawnUnits = units;
  if (size.width > room) {
    // The longest prefix that fits with "..." after it.
    sSize dots;
    if (!textSize(kDots, 3, dots) || dots.width > room) return -1;
    std::vector<int> advances(static_cast<size_t>(units));
    if (units > 0 && !textRuler(text, units, advances.data())) return -1;
    long long keep = 0;
    int used = dots.width;
    while (keep < units && used + advances[static_cast<size_t>(keep)] <= room) {
      used += advances[static_cast<size_t>(keep++)];
    }
    // A surrogate pair is kept whole or not at all.
    if (keep > 0 && text[keep - 1] >= 0xD800 && text[keep - 1] < 0xDC00) --keep;
    cut.assign(text, text + keep);
    cut.insert(cut.end(), kDots, kDots + 3);
    drawnText = cut.data();
    drawnUnits = static_cast<long long>(cut.size());
    if (!textSize(drawnText, drawnUnits, size)) return -1;
    units = keep;
  }
  int tx = x + marginLeft;
  if (align == taCenter) tx += (room - size.width) / 2;
  if (align == taRight) tx += room - 1 - size.width;
  const int ty = y + (h - size.height) / 2;
  if (fillAround && !transparent) {
    const unsigned bg = bgColor();
    const sRect parts[] = {{x, y, tx - x, h},
                           {tx, y, size.width, ty - y},
                           {tx, ty + size.height, size.width, y + h - ty - size.height},
                           {tx + size.width, y, x + w - tx - size.width, h}};
    for (const sRect& part : parts) {
      if (!part.empty()) drawRect(&part, bg, bg);
    }
  }
  if (!drawText(tx, ty, transparent, drawnText, drawnUnits)) return -1;
  if (shown) *shown = units;
  return size.width;
}

bool cCanvas::drawTextWrapped(int x, int y, int w, int h, eTextAlign align, const char* text,
                              sSize& used, bool measureOnly, double lineFactor) {
  used = {};
  if (!text) return false;
  _guardchar<unsigned short> wide;
  _pc2w(text, wide);
  return drawTextWrapped(x, y, w, h, align, wide.c_str(), used, measureOnly, lineFactor);
}

bool cCanvas::drawTextWrapped(int x, int y, int w, int h, eTextAlign align,
                              const unsigned short* text, sSize& used, bool measureOnly,
                              double lineFactor) {
  used = {};
  if (!text || w <= 0) return false;
  const long long units = unitsOf(text, -1);
  std::vector<int> advances(static_cast<size_t>(units));
  const unsigned short blankText[] = {' '}, sample[] = {'A', 'y'};
  sSize blank, lineBox;
  if ((units > 0 && !textRuler(text, units, advances.data())) || !textSize(blankText, 1, blank) ||
      !textSize(sample, 2, lineBox))
    return false;
  const auto advance = [&](long long i) { return advances[static_cast<size_t>(i)]; };

  // Break into lines. Words are runs of non-blank characters; a word wider than a whole
  // line gets lines of its own, cut between characters.
  std::vector<sWrappedLine> lines(1);
  const auto append = [&](long long from, long long to, int width) {
    sWrappedLine& line = lines.back();
    line.width += (line.starts.empty() ? 0 : blank.width) + width;
    line.starts.push_back(from);
    line.ends.push_back(to);
    line.widths.push_back(width);
  };
  for (long long i = 0; i < units;) {
    if (text[i] == '\n') {
      lines.back().lastOfParagraph = true;
      lines.emplace_back();
      ++i;
      continue;
    }
    if (isBlank(text[i])) {
      ++i;
      continue;
    }
    long long end = i;
    int width = 0;
    while (end < units && text[end] != '\n' && !isBlank(text[end])) width += advance(end++);
    while (i < end) {
      const sWrappedLine& line = lines.back();
      if (!line.starts.empty() && line.width + blank.width + width <= w) {
        append(i, end, width);
        break;
      }
      if (!line.starts.empty()) lines.emplace_back();
      if (width <= w) {
        append(i, end, width);
        break;
      }
      long long cut = i;
      int part = 0;
      while (cut < end && (cut == i || part + advance(cut) <= w)) part += advance(cut++);
      append(i, cut, part);
      i = cut;
      width -= part;
      if (i < end) lines.emplace_back(); // the rest of the word starts the next line
    }
    i = end;
  }
  lines.back().lastOfParagraph = true;

  const int step = static_cast<int>(lineBox.height * lineFactor);
  for (size_t n = 0; n < lines.size(); ++n) {
    const sWrappedLine& line = lines[n];
    used.width = std::max(used.width, line.width);
    const int top = y + static_cast<int>(n) * step;
    if (measureOnly || line.starts.empty() || (h > 0 && top >= y + h)) continue;
    double lx = x;
    if (align == taCenter) lx = x + (w - line.width) * 0.5;
    if (align == taRight) lx = x + (w - line.width);
    double extraPerGap = 0;
    if (align == taJustify && !line.lastOfParagraph && line.starts.size() > 1) {
      extraPerGap =
          static_cast<double>(w - line.width) / static_cast<double>(line.starts.size() - 1);
    }
    for (size_t k = 0; k < line.starts.size(); ++k) {
      drawText(static_cast<int>(lx), top, true, text + line.starts[k],
               line.ends[k] - line.starts[k]);
      lx += line.widths[k] + blank.width + extraPerGap;
    }
  }
  used.height = static_cast<int>(lines.size()) * step;
  return true;
}

bool cCanvas::drawBitmapResized(const cPicture* picture, int x, int y, int w, int h,
                                cPicture::eResizeMethod method) {
  if (!picture || picture->empty() || w <= 0 || h <= 0) return false;
  if (picture->width() == w && picture->height() == h) return drawBitmap(x, y, picture, w, h);
  cPicture resized;
  return picture->resizing(method, w, h, &resized) && drawBitmap(x, y, &resized, w, h);
}

bool cCanvas::inDrawArea(const sRect* rect) {
  return rect && !rect->empty() && rect->x < width() && rect->y < height() && rect->right() > 0 &&
         rect->bottom() > 0;
}

void cCanvas::drawDots(int x, int y, int w, unsigned colour) {
  for (int dx = 0; dx < w; dx += 2) {
    const sRect dot{x + dx, y, 1, 1};
    drawRect(&dot, colour, colour);
  }
}
