// The editor's big controls in an offscreen window of 800 × 600: a tree view of 10,000
// items in three levels (stored, laid out and painted once; then scrolled by one row and
// repainted), a property sheet of 200 rows (built and painted once), and the file dialog
// opened on a folder of 10,000 files (listed, sorted and painted).
#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <string>

#include "ciom/customform.h"
#include "ciom/filechoose.h"
#include "ciom/panel.h"
#include "ciom/propsheet.h"
#include "ciom/treeview.h"
#include "ciplatform/nswmaker.h"
#include "nslib/nsoffscreen.h"
#include "offscreen.h"

namespace {

constexpr int kWidth = 800, kHeight = 600;

class cTreeRoot : public cPanelChild {
public:
  cTreeViewChild tree;
  void onConstruct() override { attach(&tree, 0, 0, kWidth, kHeight); }
};

// 100 top-level items, each with 10 children of 9 grandchildren: 10,000 items.
void fill(cTreeViewChild& tree) {
  char name[64];
  tree.startChanges();
  for (int i = 0; i < 100; ++i) {
    std::snprintf(name, sizeof name, "Container %d", i);
    auto* top = new cTreeViewChild::cTreeViewItem(name, nullptr, -1);
    tree.storeUnder(nullptr, top);
    for (int j = 0; j < 10; ++j) {
      std::snprintf(name, sizeof name, "Definition group %d.%d", i, j);
      auto* mid = new cTreeViewChild::cTreeViewItem(name, nullptr, -1);
      tree.storeUnder(top, mid);
      for (int k = 0; k < 9; ++k) {
        std::snprintf(name, sizeof name, "File type %d.%d.%d (JPEG, EXIF)", i, j, k);
        tree.storeUnder(mid, new cTreeViewChild::cTreeViewItem(name, nullptr, -1));
      }
    }
  }
  tree.endChanges();
}

void BM_TreeBuildAndPaint(benchmark::State& state) {
  for (auto _ : state) {
    state.PauseTiming();
    auto root = std::make_unique<cTreeRoot>();
    std::unique_ptr<cWindowHolder> window(
        offscreenMaker().asyncwnd("tree", kWidth, kHeight, root.get(), nullptr, true, 0, 0));
    nsoff::runUntilIdle();
    state.ResumeTiming();
    fill(root->tree);
    nsoff::runUntilIdle(); // the first paint
    state.PauseTiming();
    window.reset();
    root.reset();
    nsoff::runUntilIdle();
    state.ResumeTiming();
  }
}

void BM_TreeScrollOneRow(benchmark::State& state) {
  cTreeRoot root;
  std::unique_ptr<cWindowHolder> window(
      offscreenMaker().asyncwnd("tree", kWidth, kHeight, &root, nullptr, true, 0, 0));
  nsoff::runUntilIdle();
  fill(root.tree);
  nsoff::runUntilIdle();
  root.tree.scrollTo(0, root.tree.scrollRange().height / 2);
  nsoff::runUntilIdle();
  int step = root.tree.root()->element->height();
  for (auto _ : state) {
    root.tree.scrollBy(0, step);
    step = -step;
    nsoff::runUntilIdle();
  }
  window.reset();
  nsoff::runUntilIdle();
}

class cSheetRoot : public cPanelChild {
public:
  cPropSheetChild sheet;
  void onConstruct() override { attach(&sheet, 0, 0, kWidth, kHeight); }
};

// 10 sections of 20 rows, the kinds in turn.
void BM_PropSheetBuild200(benchmark::State& state) {
  char caption[32];
  for (auto _ : state) {
    state.PauseTiming();
    auto root = std::make_unique<cSheetRoot>();
    std::unique_ptr<cWindowHolder> window(
        offscreenMaker().asyncwnd("sheet", kWidth, kHeight, root.get(), nullptr, true, 0, 0));
    nsoff::runUntilIdle();
    state.ResumeTiming();
    cPropSheetChild& sheet = root->sheet;
    sheet.startChanges();
    for (int section = 1; section <= 10; ++section) {
      sheet.setSection(section, "Section");
      for (int row = 1; row <= 20; ++row) {
        std::snprintf(caption, sizeof caption, "Property %d.%d", section, row);
        sheet.setProperty(section, row, caption, "What it means", "Its value",
                          static_cast<cPropSheetChild::ePropTypes>(row % 7));
      }
    }
    sheet.endChanges();
    nsoff::runUntilIdle();
    state.PauseTiming();
    window.reset();
    root.reset();
    nsoff::runUntilIdle();
    state.ResumeTiming();
  }
}

// A folder of 10,000 empty files, made on first use and removed at exit.
struct sBigFolder {
  std::string dir;
  sBigFolder() {
    char pattern[] = "/tmp/qvraci-bench-XXXXXX";
    if (!mkdtemp(pattern)) return;
    dir = pattern;
    for (int i = 0; i < 10000; ++i)
      std::ofstream(dir + "/scan-" + std::to_string(i * 7919 % 10000) + ".qrrs");
  }
  ~sBigFolder() {
    if (!dir.empty()) std::system(("rm -rf '" + dir + "'").c_str());
  }
};

const std::string& bigFolder() {
  static const sBigFolder folder;
  return folder.dir;
}

// The dialog is modal: the first idle moment after its first paint closes it again.
void BM_FileDialogOpen10000(benchmark::State& state) {
  const std::string& dir = bigFolder();
  cCustomForm owner;
  std::unique_ptr<cWindowHolder> window(
      offscreenMaker().asyncwnd("owner", kWidth, kHeight, &owner, nullptr, true, 0, 0));
  nsoff::runUntilIdle();
  int rows = 0;
  for (auto _ : state) {
    cFileChooseDialog dialog(cFileChooseDialog::fmOpen, {{"Rules", "qrrs", "*.qrrs"}}, dir.c_str(),
                             nullptr);
    nsoff::setIdleHook([&] {
      rows = dialog.files().count();
      nsoff::setIdleHook(nullptr);
      nsoff::key(283); // Escape
      return true;
    });
    dialog.run(&owner, "bench");
  }
  state.counters["rows"] = rows;
  window.reset();
  nsoff::runUntilIdle();
}

} // namespace

BENCHMARK(BM_FileDialogOpen10000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_PropSheetBuild200)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_TreeBuildAndPaint)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_TreeScrollOneRow)->Unit(benchmark::kMillisecond);

BENCHMARK_MAIN();
