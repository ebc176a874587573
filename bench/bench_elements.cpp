// The element tree at the size of a tree view with 10,000 items: a scrolled panel with one
// row and one expander sign per item (20,000 children). Measures attaching them, hit
// testing a point, and one full paint of the visible part on an 800 × 600 image.
#include <benchmark/benchmark.h>

#include <cairo.h>

#include <memory>
#include <random>
#include <vector>

#include "ciom/element.h"
#include "ciplatform/cairocanvas.h"

namespace {

constexpr int kRowHeight = 20, kViewWidth = 800, kViewHeight = 600;

class cRow : public cChildElement {
public:
  void onPaint(cCanvas* canvas) override {
    const sRect all = {0, 0, width(), height()};
    canvas->drawRect(&all, 0xFFFFFF, 0xF0F0F0);
    canvas->setTextMode(stdFont());
    canvas->drawText(4, 3, true, "Definition item", -1);
  }
  void onMouseButton(int, int, int, bool) override { ++hits; }
  int hits = 0;
};

class cSign : public cChildElement {
public:
  void onPaint(cCanvas* canvas) override {
    const sRect box = {0, 0, width(), height()};
    canvas->setLineMode(0x808080, 1);
    canvas->drawRect(&box, 0xFFFFFF, 0x808080);
  }
};

class cView : public cChildElement {
public:
  void virtualOffset(sPoint* offset) override { *offset = scroll; }
  void virtualSize(sSize* size) override { *size = {kViewWidth, rows * kRowHeight}; }
  void onPaint(cCanvas* canvas) override {
    const sRect all = {0, 0, width(), height()};
    canvas->drawRect(&all, 0xFFFFFF, 0xFFFFFF);
  }
  sPoint scroll;
  int rows = 0;
};

class cNoWindow : public cWindowRequestTarget {};

// A view over `items` rows and signs, scrolled to the middle.
struct sTree {
  explicit sTree(int items) : rows(static_cast<size_t>(items)), signs(static_cast<size_t>(items)) {
    view.setWinTarget(&window, 0, 0, kViewWidth, kViewHeight);
    view.rows = items;
    for (int i = 0; i < items; ++i) {
      const int depth = (i % 4) * 16;
      view.attach(&signs[static_cast<size_t>(i)], depth + 4, i * kRowHeight + 4, 11, 11);
      view.attach(&rows[static_cast<size_t>(i)], depth + 20, i * kRowHeight, 400, kRowHeight);
    }
    view.scroll = {0, items / 2 * kRowHeight};
  }
  ~sTree() { view.setWinTarget(nullptr, 0, 0, 0, 0); }
  cNoWindow window;
  cView view;
  std::vector<cRow> rows;
  std::vector<cSign> signs;
};

void BM_Attach(benchmark::State& state) {
  const int items = static_cast<int>(state.range(0)) / 2;
  for (auto _ : state) {
    sTree tree(items);
    benchmark::DoNotOptimize(tree.view.childCount());
  }
  state.SetComplexityN(state.range(0));
}

void BM_HitTest(benchmark::State& state) {
  sTree tree(static_cast<int>(state.range(0)) / 2);
  std::mt19937 random(1);
  std::uniform_int_distribution<int> x(0, kViewWidth - 1), y(0, kViewHeight - 1);
  for (auto _ : state) {
    benchmark::DoNotOptimize(
        tree.view.processMouseBtn(x(random), y(random), 1, false, false, false));
  }
  state.SetComplexityN(state.range(0));
}

void BM_Paint(benchmark::State& state) {
  sTree tree(static_cast<int>(state.range(0)) / 2);
  cairo_surface_t* surface =
      cairo_image_surface_create(CAIRO_FORMAT_RGB24, kViewWidth, kViewHeight);
  for (auto _ : state) {
    cCairoCanvas canvas(surface, kViewWidth, kViewHeight);
    tree.view.processPaint(&canvas);
  }
  cairo_surface_destroy(surface);
  state.SetComplexityN(state.range(0));
}

} // namespace

BENCHMARK(BM_Attach)->Arg(2500)->Arg(5000)->Arg(10000)->Arg(20000)->Complexity()->Unit(
    benchmark::kMillisecond);
BENCHMARK(BM_HitTest)
    ->Arg(2500)
    ->Arg(5000)
    ->Arg(10000)
    ->Arg(20000)
    ->Complexity()
    ->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_Paint)->Arg(2500)->Arg(5000)->Arg(10000)->Arg(20000)->Complexity()->Unit(
    benchmark::kMillisecond);

BENCHMARK_MAIN();
