// The editor's main form in an offscreen window of 800 × 480: a rules file of 10,000
// definitions (100 containers of 100, each with a start rule and two end rules; made
// through the text form) opened and shown, first paint included (budget 1 s); another
// definition selected and its view painted (20 ms); a keystroke in the find field that
// looks through the whole set and shows the match (50 ms); and the start with the starter
// definitions (200 ms), measured in a forked process that makes its window maker, main
// form and window, opens the file given at start and paints, as the program does.
#include <benchmark/benchmark.h>

#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <memory>
#include <string>

#include "base/files.h"
#include "ciplatform/nswmaker.h"
#include "nslib/nsoffscreen.h"
#include "offscreen.h"
#include "qvrasci-ruled/ui.h"
#include "zorb/csigtext.h"

namespace {

constexpr int kWidth = 800, kHeight = 480;

// The 10,000 definitions, written once as a rules file.
const std::string& bigRules() {
  static const std::string path = [] {
    std::string text = "qvraci-rules text 1\n";
    for (int c = 0; c < 100; ++c) {
      text += "definition \"Container " + std::to_string(c) + "\" mode never {\n";
      for (int d = 0; d < 100; ++d) {
        const std::string n = std::to_string(c * 100 + d);
        text += "  definition \"File type " + n + "\" ext \"t" + n + "\" {\n" +
                "    start at 0: 'T' " + std::to_string(c % 10) + std::to_string(d % 10) +
                " ?? 'HEAD'\n    end size at 8 width 4 increment 16\n" +
                "    end after 4: 'TAIL'\n  }\n";
      }
      text += "}\n";
    }
    cCustomSignaturesTree tree;
    sRulesTextError error;
    if (!rulesFromText(text, tree, error)) std::abort();
    const std::string out = "/tmp/qvraci-bench-" + std::to_string(::getpid()) + ".qrrs";
    cFileIO file;
    if (!file.create(out.c_str(), fmWrite) || tree.save(&file) != 0) std::abort();
    return out;
  }();
  return path;
}

struct sEditor {
  std::unique_ptr<cRuledMainForm> form = std::make_unique<cRuledMainForm>();
  std::unique_ptr<cWindowHolder> window;
  sEditor() {
    window.reset(
        offscreenMaker().asyncwnd("editor", kWidth, kHeight, form.get(), nullptr, true, 0, 0));
    nsoff::runUntilIdle();
  }
  ~sEditor() {
    window.reset();
    form.reset();
    nsoff::runUntilIdle();
  }
};

void BM_Open10000DefinitionsAndPaint(benchmark::State& state) {
  const std::string& path = bigRules();
  for (auto _ : state) {
    state.PauseTiming();
    auto editor = std::make_unique<sEditor>();
    state.ResumeTiming();
    if (!editor->form->loadFile(path.c_str(), false)) state.SkipWithError("not loaded");
    nsoff::runUntilIdle(); // the first paint
    state.PauseTiming();
    editor.reset();
    state.ResumeTiming();
  }
}

void BM_SelectAnotherDefinition(benchmark::State& state) {
  sEditor editor;
  editor.form->loadFile(bigRules().c_str(), false);
  nsoff::runUntilIdle();
  cTreeViewChild& tree = editor.form->tree();
  // Every 37th definition of the first container's, in turn.
  cTreeViewChild::cTreeViewItem* container = tree.getUnderItm(tree.root());
  int step = 0;
  for (auto _ : state) {
    cTreeViewChild::cTreeViewItem* item = tree.getUnderItm(container);
    for (int i = step % 100; i > 0 && item; --i) item = item->nextItem();
    step += 37;
    tree.select(item, true);
    nsoff::runUntilIdle(); // the new view painted
    if (!editor.form->current()) state.SkipWithError("no definition shown");
  }
}

// The find field holds "File type 999"; each keystroke alternately adds a "9" (the match
// is then definition 9999, near the end of the tree, and is shown) or takes it away (the
// shown one still matches), so that half of them look through nearly the whole set.
void BM_FindAKeystroke(benchmark::State& state) {
  sEditor editor;
  editor.form->loadFile(bigRules().c_str(), false);
  nsoff::runUntilIdle();
  nsoff::key('F', {.ctrl = true});
  nsoff::type("File type 999");
  nsoff::runUntilIdle();
  bool longer = true;
  for (auto _ : state) {
    if (longer)
      nsoff::type("9");
    else
      nsoff::key(cChildElement::kKeyBackspace);
    nsoff::runUntilIdle(); // the match shown and painted
    longer = !longer;
    if (!editor.form->current()) state.SkipWithError("nothing found");
  }
  if (std::string(editor.form->current()->name.c_str()).find("File type 999") != 0)
    state.SkipWithError("the wrong definition found");
}

// Runs first, so that no window maker exists yet when the process forks.
void BM_StartWithTheStarterDefinitions(benchmark::State& state) {
  const std::string path = std::string(QVRACI_SOURCE_DIR) + "/examples/common.qrrs";
  for (auto _ : state) {
    const pid_t child = ::fork();
    if (child == 0) {
      auto form = std::make_unique<cRuledMainForm>();
      form->openAtStart(path.c_str());
      std::unique_ptr<cWindowHolder> window(
          offscreenMaker().asyncwnd("editor", kWidth, kHeight, form.get(), nullptr, true, 0, 0));
      nsoff::runUntilIdle(); // built, opened the file, painted
      std::_Exit(form->tree().count() > 1 ? 0 : 1);
    }
    int status = 0;
    if (child < 0 || ::waitpid(child, &status, 0) != child || status != 0)
      state.SkipWithError("the start failed");
  }
}

} // namespace

BENCHMARK(BM_StartWithTheStarterDefinitions)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Open10000DefinitionsAndPaint)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_SelectAnotherDefinition)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_FindAKeystroke)->Unit(benchmark::kMillisecond);

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  std::remove(bigRules().c_str());
  return 0;
}
