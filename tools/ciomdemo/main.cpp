// ciomdemo: opens the toolkit's demonstration form.
//
//   ciomdemo                 the form; Escape or closing the window ends it
//   ciomdemo --show NAME     presses one button at once and ends after it; NAME is info,
//                            warning, error, confirm, warnconfirm, popup, controls,
//                            definitions, open or save (the file dialog, in the working
//                            folder)
//   ciomdemo --shots DIR     (with QVRACI_PLATFORM=offscreen) walks through the form, a
//                            tooltip, a message box, the popup menu and the controls
//                            (typed into, the list scrolled, the drop-down list open), the
//                            definitions and the file dialog, and writes a picture of the
//                            desktop at each step into DIR
//
// Every answer is printed on its own line ("confirm: yes", "popup: Delete", ...).
#include <cstdio>
#include <cstring>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "ciplatform/nswmaker.h"
#include "controlsform.h"
#include "defsform.h"
#include "demoform.h"
#include "nslib/nsoffscreen.h"

namespace {

constexpr int kEnter = 397, kEscape = 283, kDown = 340, kLeft = 337, kEnd = 343, kTab = 265;

int usage() {
  std::fprintf(stderr, "usage: ciomdemo [--show info|warning|error|confirm|warnconfirm|popup|"
                       "controls|definitions|open|save] [--shots DIR]\n");
  return 2;
}

int buttonNamed(const char* name) {
  const char* names[] = {"info",  "warning",  "error",       "confirm", "warnconfirm",
                         "popup", "controls", "definitions", "open",    "save"};
  for (int i = 0; i < 10; ++i) {
    if (std::strcmp(name, names[i]) == 0) return cDemoForm::kInfo + i;
  }
  return 0;
}

sPoint centre(cChildElement* e) {
  sPoint at;
  e->absPos(at);
  return {at.x + e->width() / 2, at.y + e->height() / 2};
}

// The screenshot tour over the offscreen backend. Modal windows are answered by the idle
// hook, which takes the picture first.
bool shots(cDemoForm& form, const std::string& dir) {
  bool ok = true;
  const auto shot = [&](const char* name) {
    const std::string path = dir + "/demo-offscreen-" + name + ".png";
    if (!nsoff::writeDesktopPng(path.c_str())) {
      std::fprintf(stderr, "ciomdemo: cannot write %s\n", path.c_str());
      ok = false;
    }
  };
  std::vector<std::function<void()>> steps;
  size_t next = 0;
  nsoff::setIdleHook([&] {
    if (next >= steps.size()) return false;
    steps[next++]();
    return true;
  });
  const auto pressAndAnswer = [&](int id, std::vector<std::function<void()>> answer) {
    steps = std::move(answer);
    next = 0;
    const sPoint at = centre(form.buttons().button(id));
    nsoff::click(at.x, at.y);
    nsoff::runUntilIdle();
  };

  nsoff::runUntilIdle();
  shot("form");
  const sPoint label = centre(&form.hintLabel());
  nsoff::move(label.x - 60, label.y);
  nsoff::runUntilIdle();
  shot("tooltip");
  nsoff::move(0, 0);
  pressAndAnswer(cDemoForm::kWarning, {[&] { shot("warning"); }, [] { nsoff::key(kEnter); }});
  pressAndAnswer(cDemoForm::kConfirm, {[&] { shot("confirm"); }, [] { nsoff::key(kEnter); }});
  pressAndAnswer(cDemoForm::kPopup, {[] {
                                       nsoff::key(kDown);
                                       nsoff::key(kDown);
                                     },
                                     [&] { shot("popup"); }, [] { nsoff::key(kEscape); }});

  // The controls: text typed and selected, the list scrolled, then the drop-down list.
  cControlsForm* controls = nullptr;
  form.setControlsHook([&](cControlsForm* f) { controls = f; });
  pressAndAnswer(cDemoForm::kControls,
                 {[&] {
                    nsoff::key(kEnd);
                    nsoff::type(" \xc3\xa9t\xc3\xa9 \xe6\x97\xa5\xe6\x9c\xac");
                    nsoff::key(kLeft, {true, false, false, false});
                    nsoff::key(kLeft, {true, false, false, false});
                  },
                  [&] {
                    controls->list().scrollTo(0, 95);
                    controls->list().label(6)->select();
                  },
                  [&] { shot("controls"); },
                  [&] {
                    const sPoint at = centre(&controls->hits());
                    nsoff::click(at.x, at.y);
                  },
                  [] { nsoff::key(kDown); }, [&] { shot("controls-list"); },
                  [] { nsoff::key(kEnter); }, [] { nsoff::key(kEscape); }});
  form.setControlsHook(nullptr);

  // The definitions: a branch collapsed with its expander, another definition chosen with
  // the keyboard, then a drop-down list of its sheet opened and a choice made.
  cDefinitionsForm* defs = nullptr;
  form.setDefinitionsHook([&](cDefinitionsForm* f) { defs = f; });
  const auto clickOn = [](cChildElement* e) {
    if (!e) return;
    const sPoint at = centre(e);
    nsoff::click(at.x, at.y);
  };
  const auto named = [&](const char* text) {
    cTreeItem* p = defs->tree().root();
    while (p && static_cast<cTreeViewChild::cTreeViewItem*>(p)->text != text) p = p->nextInOrder();
    return static_cast<cTreeViewChild::cTreeViewItem*>(p);
  };
  pressAndAnswer(cDemoForm::kDefinitions,
                 {[&] { clickOn(named("Archives")->control.get()); },
                  [&] {
                    clickOn(named("JPEG (JFIF)")->element.get());
                    nsoff::key(kDown);
                  },
                  [&] { shot("definitions"); },
                  [&] {
                    clickOn(defs->properties().sheet().editControl(cDefinitionsForm::kEnd,
                                                                   cDefinitionsForm::kEndRule));
                  },
                  [] { nsoff::key(kDown); }, [&] { shot("definitions-list"); },
                  [] { nsoff::key(kEnter); }, [] { nsoff::key(kEscape); }});
  form.setDefinitionsHook(nullptr);

  // The file dialog: opening a file whose name is completed; saving under a name typed.
  pressAndAnswer(cDemoForm::kOpenFile, {[] {
                                          nsoff::type("c");
                                          nsoff::key(kTab); // completes the name
                                        },
                                        [&] { shot("open"); }, [] { nsoff::key(kEnter); }});
  pressAndAnswer(cDemoForm::kSaveFile, {[] {
                                          nsoff::key(kEnd);
                                          nsoff::type(" 2");
                                        },
                                        [&] { shot("save"); }, [] { nsoff::key(kEnter); }});
  nsoff::setIdleHook(nullptr);
  return ok;
}

} // namespace

int main(int argc, char** argv) {
  int show = 0;
  const char* shotDir = nullptr;
  for (int i = 1; i < argc; ++i) {
    if (std::strcmp(argv[i], "--show") == 0 && i + 1 < argc) {
      if (!(show = buttonNamed(argv[++i]))) return usage();
    } else if (std::strcmp(argv[i], "--shots") == 0 && i + 1 < argc) {
      shotDir = argv[++i];
    } else {
      return usage();
    }
  }
  std::unique_ptr<cWindowMaker> maker = cWindowMaker::newWindowMaker(nullptr, nullptr, 0, 0);
  if (!maker) {
    std::fprintf(stderr, "ciomdemo: %s\n", nswnd_error());
    return 1;
  }
  if (shotDir && !nswnd_offscreen()) {
    std::fprintf(stderr, "ciomdemo: --shots needs QVRACI_PLATFORM=offscreen\n");
    return 2;
  }
  auto& ns = static_cast<cNSWMaker&>(*maker);
  cDemoForm form;
  std::unique_ptr<cWindowHolder> holder(
      ns.asyncwnd("Toolkit demonstration", 900, 210, &form, nullptr, true, -1, -1));
  if (!holder) {
    std::fprintf(stderr, "ciomdemo: cannot open a window\n");
    return 1;
  }
  if (shotDir) return shots(form, shotDir) ? 0 : 1;
  if (show) {
    form.setQuitAfterOne(true);
    form.press(show);
  }
  ns.msgloop();
  return 0;
}
