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

int editorCommandLine(int argc, char** argv, std::string& file, std::FILE* out, std::FILE* err) {
  constexpr int kUsageError = 2;
  bool options = true;
  for (int i = 1; i < argc && argv && argv[i]; ++i) {
    const std::string arg = argv[i];
    if (options && (arg == "--help" || arg == "-h")) {
      std::fprintf(out, "Usage: qvraci-ruled [RULES]\n"
                        "The rules editor; it opens RULES, a rules file (*.qrrs) or a definition "
                        "text, when one is named.\n"
                        "  --help     this text\n"
                        "  --version  the version\n");
      return 0;
    }
    if (options && arg == "--version") {
      std::fprintf(out, "qvraci-ruled 2.0\n");
      return 0;
    }
    if (options && arg == "--") {
      options = false;
    } else if (options && arg.size() > 1 && arg[0] == '-') {
      std::fprintf(err, "qvraci-ruled: unknown option %s (try --help)\n", arg.c_str());
      return kUsageError;
    } else if (!file.empty()) {
      std::fprintf(err, "qvraci-ruled: one rules file at a time (try --help)\n");
      return kUsageError;
    } else {
      file = arg;
    }
  }
  return -1;
}

int runUI(void* platformArg1, void* platformArg2, int platformFlags, int argc, char** argv) {
  std::string file;
  const int ended = editorCommandLine(argc, argv, file, stdout, stderr);
  if (ended >= 0) return ended;
  setAppPath(argc > 0 && argv ? argv[0] : nullptr);
  cException::init();
  std::unique_ptr<cWindowMaker> maker = cWindowMaker::newWindowMaker(
      platformArg1, platformArg2, static_cast<unsigned>(platformFlags), 0);
  if (!maker) {
    std::fprintf(stderr, "qvraci-ruled: %s\n", nswnd_error());
    return 1;
  }
  // SIGTERM and SIGINT close the editor within a moment instead of killing it.
  nswg_end_on_signals();
  initConfig();
  cLibLang::applyLang(currLangID());

  std::unique_ptr<cRuledMainForm> form = newMainForm();
  // A rules file named on the command line opens once the window is up.
  if (!file.empty()) form->openAtStart(file.c_str());
  sRect place{-1, -1, kMainWidth, kMainHeight};
  maker->recommendMainWindowSize(place);
  // No owner: the window is the application's own, and the run ends when it closes.
  return static_cast<cNSWMaker&>(*maker).modal(kMainTitle, place.width, place.height, form.get(),
                                               nullptr, true);
}
