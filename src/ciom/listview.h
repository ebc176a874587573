// A list of rows in columns under a header, as file dialogs show a folder. Rows are plain
// data painted by the list itself, so a list of tens of thousands costs only the rows in
// view. One row at a time is selected.
//
// The list does not sort: a click on a column header raises kHeaderClick with the column,
// and the owner orders its rows, hands them back with setRows and shows the order with
// setSortMark. A column's right edge in the header can be dragged to resize it.
//
// Keys: Up/Down, Home/End, Page Up/Down move the selection; Enter raises kActivated;
// letters typed select the next row whose first cell starts with them. A double click on
// a row raises kActivated, or a single click when the list is set to act on one (as a
// side bar of places does). Every other key goes on to the parent.
#pragma once

#include <string>
#include <vector>

#include "pictlist.h"
#include "scrollable.h"
#include "typeahead.h"

class cListViewChild : public cScrollableElement {
public:
  enum eCode { kSelected = 6, kActivated = 7, kHeaderClick = 8 };
  static constexpr int kMinColumn = 24; // a column is never dragged narrower
  static constexpr int kPadding = 4;    // room left and right of a cell's text
  static constexpr int kPictureGap = 4; // between a row's picture and its text

  struct sColumn {
    std::string title;
    int width = 100;
    bool right = false; // right-aligned cells (sizes, counts)
  };
  struct sRow {
    std::vector<std::string> cells; // one per column; missing cells are empty
    int image = -1;                 // in the picture list; below 0: none
    long long tag = 0;              // the owner's
  };

  // Codes 6 and 7 carry the row (-1 when none); code 8 the column.
  class cListAction : public cChildAction {
  public:
    cListAction(int code, int index) : cChildAction(code), index(index) {}
    int index;
  };

  cListViewChild();

  void setColumns(std::vector<sColumn> columns);
  const std::vector<sColumn>& columns() const { return myColumns; }
  void setColumnWidth(int column, int width);
  // From now on each column is as wide as its title or its widest cell (measured in the
  // list's font, the widest by length), and the view's spare width goes to column stretch;
  // columns wider than the view together scroll sideways. Kept up as rows and the size
  // change, until the user drags a column's edge.
  void fitColumns(int stretch);
  void showHeader(bool on);
  // -1: no column marked.
  void setSortMark(int column, bool ascending);
  int sortColumn() const { return mySortColumn; }
  bool sortAscending() const { return myAscending; }
  // Pictures owned elsewhere (the list must not outlive them).
  void setImages(const cPicturesList* images);
  // A single click on a row activates it as well as selecting it.
  void setSingleClick(bool on) { mySingleClick = on; }

  // Replaces every row; nothing is selected and the view goes back to the top.
  void setRows(std::vector<sRow> rows);
  int count() const { return static_cast<int>(myRows.size()); }
  const sRow& row(int index) const { return myRows[static_cast<size_t>(index)]; }

  int selected() const { return mySelected; }
  // Selects a row (-1: none) and scrolls it into view; with notify, kSelected follows
  // when the selection changed.
  void select(int index, bool notify);

  int headerHeight() const { return myHeaderShown ? kHeaderHeight : 0; }
  int rowHeight();
  // The row under a point of the element (-1: none), and the column whose header holds it.
  int rowAt(int x, int y);
  int headerColumnAt(int x, int y) const;

  void onPaint(cCanvas* canvas) override;
  void onMouseButton(int x, int y, int button, bool down) override;
  void onMouseDoubleClick(int x, int y) override;
  void onMouseMoving(int x, int y) override;
  void onMouseLeft() override;
  bool onKey(int key, bool shift, bool ctrl, bool alt) override;
  bool onChar(unsigned short ch, bool shift, bool ctrl, bool alt) override;
  void onSetFocus(bool, bool) override { repaint(); }
  void onLooseFocus(bool, bool) override { repaint(); }
  void onSizeChanged() override;
  bool wantTabStop() override { return true; }
  bool wantAcceptFoucs() override { return true; }
  bool wantCaptureArrows() override { return true; }
  bool wantDoubleBuffer() override { return true; }
  int wantBorderWidth() override { return 1; }

private:
  static constexpr int kHeaderHeight = 20, kGrip = 3;

  void updateSize();
  void refit(); // the fitted widths, when fitting
  void raise(int code, int index);
  void scrollToRow(int index);
  int rowsPerPage();
  int dividerAt(int x, int y) const; // the column whose right edge is at x, or -1
  void paintHeader(cCanvas* canvas, const sRect& view);
  void paintRow(cCanvas* canvas, int index, int y, const sRect& view);
  int typeAhead(unsigned short ch);

  std::vector<sColumn> myColumns;
  std::vector<sRow> myRows;
  const cPicturesList* myImages = nullptr;
  int mySelected = -1;
  int mySortColumn = -1;
  bool myAscending = true;
  bool myHeaderShown = true;
  bool mySingleClick = false;
  int myRowHeight = 0;
  int myHotColumn = -1, myPressedColumn = -1;
  int myResizing = -1, myResizeFrom = 0, myResizeWidth = 0;
  int myStretch = -1; // the column that takes the spare width while fitting; -1: not fitting
  cTypeAhead myTyped;
};
