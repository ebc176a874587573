// A form: the root element of a dialog or main window. A themed frame (a header band and
// a footer band for the buttons) around a content panel, the dialog buttons in the footer,
// Enter and Escape as accept and cancel, and a hook that runs once the window is up.
#pragma once

#include <string>

#include "panel.h"
#include "pictlist.h"
#include "picture.h"
#include "toolbar.h"

class cCustomForm : public cChildElement {
public:
  // The form sends itself this action once it is built; onAfterConstruct answers it.
  static constexpr int kAfterConstructCode = 6;

  virtual void drawSkin(cCanvas* canvas, int w, int h);
  // Runs once, from the message loop, after the window exists; true consumes the action.
  virtual bool onAfterConstruct() { return false; }
  // Escape and Enter without modifiers; true consumes the key. A form with a cancelling
  // dialog button ends its modal run with 0 on Escape.
  virtual bool onFormCancel();
  virtual bool onFormAccept() { return false; }

  // The dialog buttons, at the right of the footer band: an accepting one (the default)
  // and a cancelling one, either left out when its text is null, with the theme's OK and
  // Cancel pictures when asked for. Their presses go to onDialogButton.
  enum eDialogButton { kAcceptButton = 1, kCancelButton = 2 };
  static constexpr int kDialogButtonWidth = 75; // the least
  void addDialogButtons(const char* accept, const char* cancel, bool pictures = false);
  cToolBarChild& dialogButtons() { return myDialogButtons; }
  cButtonChild* dialogButton(int id) { return myDialogButtons.button(id); }
  // A dialog button was pressed: the accepting one accepts and the cancelling one cancels,
  // as Enter and Escape do, unless a form answers otherwise. True when handled.
  virtual bool onDialogButton(int id);

  // Before the window is built: the window manager draws this form's title bar, so the
  // form's own header band would stand empty under it and shrinks to a thin edge. Returns
  // the height the form gives up (none when the form fills its band itself).
  int dropHeaderBand();
  // Without a window manager nobody else shows the window's title: the band carries it.
  void setCaption(const char* text);
  const std::string& caption() const { return myCaption; }
  // A form that puts its own elements into the header band keeps it and draws no caption.
  virtual bool fillsHeaderBand() const { return false; }
  void setTopMargin(int margin);
  void setBottomMargin(int margin);
  int topMargin() const { return myTopMargin; }
  int bottomMargin() const { return myBottomMargin; }
  // With on set, drawSkin fills the form with colour instead of drawing the theme's frame.
  void setCustomDraw(unsigned colour, bool on);
  cPanelChild* clientArea() { return &myPanel; }
  // Anchors a row of dialog buttons of the given width at the bottom right, centred in
  // the footer band, at the theme's button height (returned).
  int anchorFooterButtons(cChildElement* buttons, int width);

  bool processKey(int key, bool shift, bool ctrl, bool alt) override;
  void onConstruct() override;
  void onPaint(cCanvas* canvas) override;
  bool onBackgroundRequest(cCanvas* canvas, sRect* rect) override;
  void onSizeChanged() override;
  bool onAction(cChildElement* source, cChildAction* action) override;

private:
  void placePanel();
  void paintSkin(cCanvas* canvas, int dx, int dy, int w, int h);
  void paintCaption(cCanvas* canvas, int dx, int dy, int w);
  // A theme element scaled to w × h, kept until the size or the theme's picture changes.
  struct sScaled {
    const cPicture* art = nullptr;
    cPicture picture;
  };
  static const cPicture* sized(sScaled& cache, int element, int w, int h);

  int myTopMargin = 0, myBottomMargin = 0;
  unsigned myCustomColour = 0;
  bool myCustomDraw = false;
  bool myHeaderDropped = false;
  std::string myCaption;
  cPanelChild myPanel;
  cToolBarChild myDialogButtons{cButtonChild::lkPush};
  cPicturesList myDialogPictures;
  sScaled myHeader, myFooter; // the skin's bands at the form's size
};
