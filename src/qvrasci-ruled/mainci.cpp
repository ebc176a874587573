#include "mainci.h"

#include <cstdio>
#include <cstring>
#include <memory>
#include <new>

#include "base/except.h"
#include "base/folders.h"
#include "ciplatform/nswmaker.h"
#include "config.h"
#include "nslib/nswnd.h"
#include "ui.h"

void* gAppInstance = nullptr;
_guardchar<char> gAppPath;
_guardchar<char> gAppFolder;

void setAppPath(const char* argv0) {
  gAppPath.set(argv0);
  cFolderContents::adjustPath(gAppPath);
  const char* slash = argv0 ? std::strrchr(argv0, '/') : nullptr;
  if (slash)
    gAppFolder.set(argv0, slash - argv0);
  else
    gAppFolder.set("./");
}

namespace {

// The main form is made zero-filled, as every form's members may expect.
std::unique_ptr<cRuledMainForm> newMainForm() {
  void* raw = ::operator new(sizeof(cRuledMainForm));
  std::memset(raw, 0, sizeof(cRuledMainForm));
  return std::unique_ptr<cRuledMainForm>(new (raw) cRuledMainForm());
}

} // namespace

int runUI(void* platformArg1, void* platformArg2, int platformFlags, int argc, char** argv) {
  setAppPath(argc > 0 && argv ? argv[0] : nullptr);
  cException::init();
  std::unique_ptr<cWindowMaker> maker = cWindowMaker::newWindowMaker(
      platformArg1, platformArg2, static_cast<unsigned>(platformFlags), 0);
  if (!maker) {
    std::fprintf(stderr, "qvraci-ruled: %s\n", nswnd_error());
    return 1;
  }
  initConfig();
  cLibLang::applyLang(currLangID());

  std::unique_ptr<cRuledMainForm> form = newMainForm();
  // A rules file named on the command line opens once the window is up.
  if (argc > 1 && argv && argv[1]) form->openAtStart(argv[1]);
  sRect place{-1, -1, kMainWidth, kMainHeight};
  maker->recommendMainWindowSize(place);
  // No owner: the window is the application's own, and the run ends when it closes.
  return static_cast<cNSWMaker&>(*maker).modal(kMainTitle, place.width, place.height, form.get(),
                                               nullptr, true);
}
