#include "listview.h"

#include <algorithm>

#include "ciom/themeimages.h"
#include "theme.h"

namespace {

constexpr int kInk = 13, kWhite = 14, kAccent = 16, kFrame = 21;
constexpr int kUnfocusedInk = 4, kUnfocusedGround = 18; // the selection without the focus
constexpr int kRowFloor = 18;                           // a row is never lower than a picture

// The one-pixel edge of r, leaving the inside as it is.
void drawFrame(cCanvas* canvas, const sRect& r, unsigned colour) {
  const sRect edges[] = {{r.x, r.y, r.width, 1},
                         {r.x, r.y + r.height - 1, r.width, 1},
                         {r.x, r.y, 1, r.height},
                         {r.x + r.width - 1, r.y, 1, r.height}};
  for (const sRect& e : edges) canvas->drawRect(&e, colour, colour);
}

} // namespace

cListViewChild::cListViewChild() {
  setScrollSteps(20, kRowFloor);
}

// --- columns and rows --------------------------------------------------------------------

void cListViewChild::setColumns(std::vector<sColumn> columns) {
  myColumns = std::move(columns);
  for (sColumn& c : myColumns) c.width = std::max(c.width, kMinColumn);
  updateSize();
}

void cListViewChild::setColumnWidth(int column, int width) {
  if (column < 0 || column >= static_cast<int>(myColumns.size())) return;
  myColumns[static_cast<size_t>(column)].width = std::max(width, kMinColumn);
  updateSize();
}

void cListViewChild::fitColumns(int stretch) {
  myStretch = stretch;
  refit();
}

void cListViewChild::refit() {
  if (myStretch < 0 || myColumns.empty()) return;
  // Text widths follow their lengths closely enough that only the longest few cells of a
  // column need measuring, which keeps a list of many thousands quick to fit.
  constexpr size_t kMeasured = 8;
  const int pictures = [&] {
    int w = 0;
    if (myImages)
      for (const auto& [id, image] : myImages->images())
        if (const cPicture* p = image.get()) w = std::max(w, p->width() + kPictureGap);
    return w;
  }();
  // The header's sort mark stands beside a title: every column keeps room for it.
  const cPicture* mark = cCITheme::theme().getPict(tiSortUp);
  const int sortMarkRoom = mark ? mark->width() + kPadding : 0;
  int total = 0;
  for (size_t c = 0; c < myColumns.size(); ++c) {
    std::vector<const std::string*> longest;
    for (const sRow& r : myRows) {
      if (c < r.cells.size()) longest.push_back(&r.cells[c]);
    }
    const size_t keep = std::min(kMeasured, longest.size());
    std::partial_sort(longest.begin(), longest.begin() + static_cast<std::ptrdiff_t>(keep),
                      longest.end(), [](auto* a, auto* b) { return a->size() > b->size(); });
    longest.resize(keep);
    longest.push_back(&myColumns[c].title);
    int widest = 0;
    for (const std::string* text : longest) {
      sSize size{};
      if (!text->empty() && sizeOf(text->c_str(), size, stdFont()))
        widest = std::max(widest, size.width);
    }
    widest += 2 * kPadding + (c == 0 ? pictures : 0) + sortMarkRoom;
    myColumns[c].width = std::max(widest, kMinColumn);
    total += myColumns[c].width;
  }
  const size_t stretch = std::min(static_cast<size_t>(myStretch), myColumns.size() - 1);
  // The room beside a vertical bar, when the rows need one.
  const int room = viewSize().width;
  if (total < room) myColumns[stretch].width += room - total;
  updateSize();
}

void cListViewChild::showHeader(bool on) {
  myHeaderShown = on;
  updateSize();
}

void cListViewChild::setSortMark(int column, bool ascending) {
  mySortColumn = column;
  myAscending = ascending;
  repaint();
}

void cListViewChild::setImages(const cPicturesList* images) {
  myImages = images;
  myRowHeight = 0; // pictures may make rows taller
  updateSize();
}

void cListViewChild::setRows(std::vector<sRow> rows) {
  myRows = std::move(rows);
  mySelected = -1;
  updateSize();
  refit();
  scrollTo(scrollOffset().x, 0);
}

int cListViewChild::rowHeight() {
  if (myRowHeight > 0) return myRowHeight;
  sSize text{};
  // Before the list is in a window there is no font to measure with: guess, and keep
  // measuring until there is.
  const bool measured = sizeOf("Ag", text, stdFont());
  int h = std::max(text.height + 4, kRowFloor);
  if (myImages) {
    for (const auto& [id, image] : myImages->images()) {
      if (const cPicture* p = image.get()) h = std::max(h, p->height() + 2);
    }
  }
  if (measured) myRowHeight = h;
  return h;
}

void cListViewChild::updateSize() {
  const int rh = rowHeight();
  setScrollSteps(20, rh);
  int columnsWidth = 0;
  for (const sColumn& c : myColumns) columnsWidth += c.width;
  setVirtualSize(columnsWidth, headerHeight() + count() * rh);
  repaint();
}

void cListViewChild::onSizeChanged() {
  cScrollableElement::onSizeChanged();
  if (myRowHeight == 0) updateSize(); // now measured in the window's font
  refit();
  if (mySelected >= 0) scrollToRow(mySelected);
}

// --- selection ---------------------------------------------------------------------------

void cListViewChild::raise(int code, int index) {
  notifyAction(new cListAction(code, index));
}

void cListViewChild::select(int index, bool notify) {
  if (index < -1 || index >= count()) return;
  const bool changed = index != mySelected;
  mySelected = index;
  if (index >= 0) scrollToRow(index);
  repaint();
  if (changed && notify) raise(kSelected, index);
}

int cListViewChild::rowsPerPage() {
  return std::max(1, (viewSize().height - headerHeight()) / rowHeight());
}

void cListViewChild::scrollToRow(int index) {
  const int rh = rowHeight(), room = viewSize().height - headerHeight();
  const int top = index * rh, at = scrollOffset().y;
  if (top < at)
    scrollTo(scrollOffset().x, top);
  else if (top + rh > at + room)
    scrollTo(scrollOffset().x, top + rh - room);
}

int cListViewChild::rowAt(int x, int y) {
  const sSize view = viewSize();
  const int border = wantBorderWidth(), top = border + headerHeight();
  if (x < border || x >= border + view.width || y < top || y >= border + view.height) return -1;
  const int index = (y - top + scrollOffset().y) / rowHeight();
  return index < count() ? index : -1;
}

int cListViewChild::headerColumnAt(int x, int y) const {
  const int border = 1;
  if (!myHeaderShown || y < border || y >= border + kHeaderHeight) return -1;
  int edge = -scrollOffset().x + border;
  for (size_t i = 0; i < myColumns.size(); ++i) {
    edge += myColumns[i].width;
    if (x < edge) return static_cast<int>(i);
  }
  return -1;
}

int cListViewChild::dividerAt(int x, int y) const {
  if (!myHeaderShown || y < 1 || y >= 1 + kHeaderHeight) return -1;
  int edge = -scrollOffset().x + 1;
  for (size_t i = 0; i < myColumns.size(); ++i) {
    edge += myColumns[i].width;
    if (std::abs(x - edge) <= kGrip) return static_cast<int>(i);
  }
  return -1;
}

// --- mouse -------------------------------------------------------------------------------

void cListViewChild::onMouseButton(int x, int y, int button, bool down) {
  if (button != 1) return;
  if (down) {
    focus();
    if ((myResizing = dividerAt(x, y)) >= 0) {
      myResizeFrom = x;
      myResizeWidth = myColumns[static_cast<size_t>(myResizing)].width;
      capturePointer(false);
      return;
    }
    if ((myPressedColumn = headerColumnAt(x, y)) >= 0) {
      capturePointer(false);
      repaint();
      return;
    }
    const int index = rowAt(x, y);
    if (index < 0) return;
    select(index, true);
    if (mySingleClick) raise(kActivated, index);
    return;
  }
  if (myResizing >= 0) {
    myResizing = -1;
    releasePointer();
    return;
  }
  if (myPressedColumn >= 0) {
    const int column = myPressedColumn;
    myPressedColumn = -1;
    releasePointer();
    repaint();
    if (headerColumnAt(x, y) == column) raise(kHeaderClick, column);
  }
}

void cListViewChild::onMouseDoubleClick(int x, int y) {
  const int index = rowAt(x, y);
  if (!mySingleClick && index >= 0 && index == mySelected) raise(kActivated, index);
}

void cListViewChild::onMouseMoving(int x, int y) {
  if (myResizing >= 0) {
    myStretch = -1; // the user's widths from now on
    setColumnWidth(myResizing, myResizeWidth + x - myResizeFrom);
    return;
  }
  changePointerReq(dividerAt(x, y) >= 0 ? mpSizeWE : mpArrow);
  const int hot = myPressedColumn >= 0 ? myPressedColumn : headerColumnAt(x, y);
  if (hot != myHotColumn) {
    myHotColumn = hot;
    repaint();
  }
}

void cListViewChild::onMouseLeft() {
  cScrollableElement::onMouseLeft();
  if (myHotColumn >= 0) {
    myHotColumn = -1;
    repaint();
  }
}

// --- keys --------------------------------------------------------------------------------

bool cListViewChild::onKey(int key, bool shift, bool ctrl, bool alt) {
  if (shift || ctrl || alt || count() == 0) return cScrollableElement::onKey(key, shift, ctrl, alt);
  const int last = count() - 1, at = mySelected;
  int to = -2;
  switch (key) {
  case kKeyUp:
    to = at < 0 ? 0 : std::max(0, at - 1);
    break;
  case kKeyDown:
    to = std::min(last, at + 1);
    break;
  case kKeyHome:
    to = 0;
    break;
  case kKeyEnd:
    to = last;
    break;
  case kKeyPageUp:
    to = std::max(0, at - rowsPerPage());
    break;
  case kKeyPageDown:
    to = std::min(last, std::max(0, at) + rowsPerPage());
    break;
  case kKeyEnter:
    if (at < 0) return false;
    raise(kActivated, at);
    return true;
  default:
    return cScrollableElement::onKey(key, shift, ctrl, alt);
  }
  select(to, true);
  return true;
}

bool cListViewChild::onChar(unsigned short ch, bool, bool ctrl, bool alt) {
  if (ctrl || alt || ch <= 0x20 || count() == 0) return false;
  const int index = typeAhead(ch);
  if (index >= 0) select(index, true);
  return true;
}

int cListViewChild::typeAhead(unsigned short ch) {
  const bool longer = myTyped.add(ch, ticks());
  const int n = count();
  const int start = mySelected < 0 ? 0 : (longer ? mySelected : (mySelected + 1) % n);
  for (int k = 0; k < n; ++k) {
    const int i = (start + k) % n;
    const sRow& r = myRows[static_cast<size_t>(i)];
    if (!r.cells.empty() && myTyped.matches(r.cells[0].c_str())) return i;
  }
  return -1;
}

// --- painting ----------------------------------------------------------------------------

void cListViewChild::onPaint(cCanvas* canvas) {
  if (!canvas) return;
  const cCITheme& theme = cCITheme::theme();
  const unsigned white = theme.getColor(kWhite);
  const sRect all{0, 0, width(), height()};
  canvas->drawRect(&all, white, white);
  const sSize size = viewSize();
  const sRect view{1, 1, size.width, size.height};
  if (canvas->setTextMode(stdFont()) && count() > 0) {
    const int rh = rowHeight(), top = view.y + headerHeight();
    const int first = scrollOffset().y / rh;
    const int last = std::min(count() - 1, (scrollOffset().y + view.height) / rh);
    for (int i = first; i <= last; ++i) paintRow(canvas, i, top + i * rh - scrollOffset().y, view);
  }
  if (myHeaderShown) paintHeader(canvas, view);
  // The frame last: it covers what the rows and header drew past the edges.
  drawFrame(canvas, all, theme.getColor(kFrame));
}

void cListViewChild::paintRow(cCanvas* canvas, int index, int y, const sRect& view) {
  const cCITheme& theme = cCITheme::theme();
  const sRow& r = myRows[static_cast<size_t>(index)];
  const int rh = rowHeight();
  unsigned ink = theme.getColor(kInk), ground = theme.getColor(kWhite);
  if (index == mySelected) {
    const bool focusedNow = focused();
    ink = focusedNow ? theme.getColor(kWhite) : theme.getColor(kUnfocusedInk);
    ground = focusedNow ? theme.getColor(kAccent) : theme.getColor(kUnfocusedGround);
    const sRect band{view.x, y, view.width, rh};
    canvas->drawRect(&band, ground, ground);
  }
  canvas->setTextColors(ink, ground);
  int x = view.x - scrollOffset().x;
  for (size_t c = 0; c < myColumns.size(); ++c) {
    const sColumn& column = myColumns[c];
    if (x >= view.x + view.width) break;
    if (x + column.width > view.x) {
      int textX = x;
      if (c == 0 && myImages) {
        const cPicture* p = r.image >= 0 ? myImages->image(r.image) : nullptr;
        if (p) {
          const sPoint at{x + kPadding, y + (rh - p->height()) / 2};
          canvas->drawTransparent(&at, p, nullptr);
          textX += p->width() + kPictureGap;
        }
      }
      if (c < r.cells.size() && !r.cells[c].empty()) {
        canvas->drawTextLimited(textX, y, x + column.width - textX, rh,
                                column.right ? cCanvas::taRight : cCanvas::taLeft, true, kPadding,
                                kPadding, r.cells[c].c_str(),
                                static_cast<long long>(r.cells[c].size()), nullptr, false);
      }
    }
    x += column.width;
  }
}

void cListViewChild::paintHeader(cCanvas* canvas, const sRect& view) {
  const cCITheme& theme = cCITheme::theme();
  const sRect band{view.x, view.y, view.width, kHeaderHeight};
  theme.drawStretched(canvas, tiHeaderFace, band);
  if (!canvas->setTextMode(stdFont())) return;
  canvas->setTextColors(theme.getColor(kInk), theme.getColor(kWhite));
  int x = view.x - scrollOffset().x;
  for (int c = 0; c < static_cast<int>(myColumns.size()); ++c) {
    const sColumn& column = myColumns[static_cast<size_t>(c)];
    const sRect cell{x, view.y, column.width, kHeaderHeight};
    const int face = c == myPressedColumn ? tiHeaderFacePressed
                     : c == myHotColumn   ? tiHeaderFaceHot
                                          : tiHeaderFace;
    if (face != tiHeaderFace) theme.drawStretched(canvas, face, cell);
    int room = column.width;
    if (c == mySortColumn) {
      if (const cPicture* mark = theme.getPict(myAscending ? tiSortUp : tiSortDown)) {
        const sPoint at{x + column.width - kPadding - mark->width(),
                        view.y + (kHeaderHeight - mark->height()) / 2};
        canvas->drawTransparent(&at, mark, nullptr);
        room -= mark->width() + kPadding;
      }
    }
    canvas->drawTextLimited(x, view.y, room, kHeaderHeight - 1,
                            column.right ? cCanvas::taRight : cCanvas::taLeft, true, kPadding,
                            kPadding, column.title.c_str(),
                            static_cast<long long>(column.title.size()), nullptr, false);
    if (const cPicture* divider = theme.getPict(tiHeaderDivider)) {
      const sPoint at{x + column.width - divider->width(), view.y};
      canvas->drawTransparent(&at, divider, nullptr);
    }
    x += column.width;
  }
}
