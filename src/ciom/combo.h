// A drop-down list: a field that shows the chosen item and opens the list of items in a
// popup below it (above it when there is no room below). Items have an id, a text and a
// pointer of the caller's, and are listed in id order. Nothing is typed into the field.
//
// The list opens on a click, alt+Down, F4 or Space, and is chosen from with the arrows,
// Enter, typed letters or a click; Escape or a click outside closes it unchanged. While
// closed, Up and Down (Home, End, typed letters) choose directly. A choice the user makes
// raises kChangedCode; setSelected raises nothing.
//
// The field is drawn from an edit box, its "edit part": its colours are the field's, and
// its text is what the field shows (the chosen item's text, or whatever the caller sets).
#pragma once

#include <map>
#include <string>

#include "edit.h"

class cComboBoxChild : public cChildElement {
public:
  static constexpr int kChangedCode = 6;
  static constexpr int kButtonWidth = 20;
  static constexpr int kMaxVisibleItems = 12;

  cComboBoxChild();

  // Adds an item, or replaces the one with that id (its text shows at once when chosen).
  void addItem(int id, const char* text, void* assoc = nullptr);
  bool removeItem(int id);
  void clear();
  size_t count() const { return myItems.size(); }
  bool hasItem(int id) const { return myItems.count(id) != 0; }
  const char* itemText(int id) const;
  // Chooses an item without raising anything; false for an id that is not listed.
  bool setSelected(int id);
  int selected() const { return mySelected; } // -1 when nothing is chosen
  void* selectedAssoc() const;
  cEditChild* edit() { return &myEdit; }

  // Opens the list and waits for the user; true when another item was chosen.
  bool openList();
  bool listOpen() const { return myOpen; }

  void onPaint(cCanvas* canvas) override;
  void onMouseButton(int x, int y, int button, bool down) override;
  bool onKey(int key, bool shift, bool ctrl, bool alt) override;
  bool onChar(unsigned short ch, bool shift, bool ctrl, bool alt) override;
  void onSetFocus(bool shift, bool ctrl) override;
  void onLooseFocus(bool shift, bool ctrl) override;
  void onEnableChanged(bool state) override;
  bool wantTabStop() override { return true; }
  bool wantAcceptFoucs() override { return true; }
  bool wantCaptureArrows() override { return true; }

private:
  struct sItem {
    std::string text;
    void* assoc = nullptr;
  };

  // Chooses id as the user did: shows it and raises kChangedCode when it changed.
  void choose(int id);
  void step(int by); // to the neighbour (by -1 or 1), or the first / last (by -2 or 2)

  std::map<int, sItem> myItems;
  int mySelected = -1;
  cEditChild myEdit;
  bool myOpen = false;
};
