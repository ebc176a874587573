// The platform's window maker: windows for root elements over the nswnd_ operation list.
#pragma once

#include "ciom/langtable.h"
#include "ciom/winmaker.h"
#include "nswtranslator.h"

class cNSWMaker : public cWindowMaker {
public:
  // Opens the platform layer; false when it cannot (nswnd_error() says why).
  bool create(void* arg1, void* arg2, unsigned flags);

  cCanvas* offscreen(int w, int h) override;
  // The recommended main window: centred (x = y = -1), 70 % of the usable screen.
  bool recommendMainWindowSize(sRect& rect) override;
  bool desktopSize(sSize& size) override;

  // Runs root in a modal window over owner's, or as a window of its own without an owner;
  // returns the modal result (-1 for no root or no window).
  int modal(const char* caption, int w, int h, cChildElement* root, cWindowRequestTarget* owner,
            bool sizeable);
  // A window for root that lives until destroy(); null when it cannot be made. x and y
  // both -1 centre it.
  cWindowHolder* asyncwnd(const char* caption, int w, int h, cChildElement* root,
                          cWindowRequestTarget* owner, bool sizeable, int x, int y);
  void destroy(cWindowHolder* holder);
  void msgloop();

  void setLangMan(const cCiomLang* lang) { myLang = lang; }
  const cCiomLang* langMan() const { return myLang; }

private:
  const cCiomLang* myLang = nullptr;
};
