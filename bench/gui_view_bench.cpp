// sonvale_gui_bench: painting the waveform view of a 3-hour stereo document
// into an image, 1920 columns wide, at zooms from samples as points to the
// whole document, repainted in full and scrolled by a screen. The document is
// a cut list over one item of SONVALE_BENCH_ITEM_SECONDS (600 unless set; 10800
// makes it one item of three hours, 3.8 GB in the cache).
#include <cstdio>
#include <cstdlib>
#include <unistd.h>

#include <QApplication>
#include <QImage>
#include <QPainter>

#include <benchmark/benchmark.h>

#include "app/file.h"
#include "app/file_gui.h"
#include "app/front_end.h"
#include "app/wave_levels.h"
#include "app/window_manager.h"
#include "bench/bench_support.h"
#include "bench/target_reporter.h"
#include "gui/wave_view.h"

namespace {

constexpr long long kDocumentFrames = 3LL * 3600 * kBenchRate;
constexpr int kWidth = 1920;
constexpr int kHeight = 600;

// One document and one view for every benchmark: made at the first use.
struct Scene {
  Scene() {
    const char* seconds = std::getenv("SONVALE_BENCH_ITEM_SECONDS");
    const long long itemFrames = std::clamp(seconds ? std::atoll(seconds) : 600LL, 1LL, 10800LL) * kBenchRate;
    LSoundCacheItemHandle item = BenchItemAdd(itemFrames);
    if (!item.IsItem()) return;
    const long long segments = (kDocumentFrames + itemFrames - 1) / itemFrames;
    window = std::make_unique<SVFileGUI>(
        manager, std::make_shared<SVFile>(BenchSegmentList(item, segments, itemFrames, itemFrames)));
    view.resize(kWidth, kHeight);
    view.show();
    view.resize(2 * kWidth - view.viewport()->width(), kHeight);
    view.WindowSet(window.get());
  }
  ~Scene() { view.WindowSet(nullptr); }
  [[nodiscard]] bool IsReady() const { return window != nullptr && view.viewport()->width() == kWidth; }

  void Paint() {
    QPainter painter(&image);
    view.Render(painter, image.rect());
  }
  // The zoom of an argument: below 0 pixels per frame, 0 the whole document.
  void ZoomFor(long long arg) {
    if (arg == 0)
      view.ZoomToFit();
    else
      view.ZoomSet(arg < 0 ? -1.0 / static_cast<double>(arg) : static_cast<double>(arg));
  }

  SVFrontEndQuiet frontEnd;
  SVWindowManager manager{frontEnd};
  std::unique_ptr<SVFileGUI> window;
  SVWaveView view;
  QImage image{kWidth, kHeight, QImage::Format_RGB32};
};

// Made at the first use and gone before the application is.
std::unique_ptr<Scene> theScene;
Scene& TheScene() {
  if (!theScene) theScene = std::make_unique<Scene>();
  return *theScene;
}

void Zooms(benchmark::internal::Benchmark* b) {
  b->ArgName("fpp");
  for (long long arg : {-16LL, 1LL, 64LL, 255LL, 1024LL, 8192LL, 131072LL, 0LL}) b->Arg(arg);
}

// Everything drawn anew, in the middle of the document.
void BM_ViewRepaint(benchmark::State& state) {
  Scene& scene = TheScene();
  if (!scene.IsReady()) {
    state.SkipWithError("no document");
    return;
  }
  scene.ZoomFor(state.range(0));
  scene.view.ScrollToFrame(kDocumentFrames / 2);
  scene.Paint();
  for (auto _ : state) {
    scene.view.TilesDrop();
    scene.Paint();
  }
}
BENCHMARK(BM_ViewRepaint)->Apply(Zooms)->UseRealTime()->Unit(benchmark::kMillisecond);

// A screen further on each time: the tiles of the new screen are painted, the old ones kept.
void BM_ViewScrollScreen(benchmark::State& state) {
  Scene& scene = TheScene();
  if (!scene.IsReady()) {
    state.SkipWithError("no document");
    return;
  }
  scene.ZoomFor(state.range(0));
  scene.view.ScrollToFrame(kDocumentFrames / 3);
  scene.Paint();
  for (auto _ : state) {
    const long long next = scene.view.FrameAt(kWidth);
    scene.view.ScrollToFrame(next >= kDocumentFrames ? 0 : next);
    scene.Paint();
  }
}
BENCHMARK(BM_ViewScrollScreen)->Apply(Zooms)->UseRealTime()->Unit(benchmark::kMillisecond);

// The first paint of the whole document: the item's coarse levels are built from its overview.
void BM_ViewFirstPaintWhole(benchmark::State& state) {
  Scene& scene = TheScene();
  if (!scene.IsReady()) {
    state.SkipWithError("no document");
    return;
  }
  scene.view.ZoomToFit();
  for (auto _ : state) {
    SVWaveLevels::Instance().Clear();
    scene.view.TilesDrop();
    scene.Paint();
  }
  state.counters["levels_KiB"] = static_cast<double>(SVWaveLevels::Instance().MemoryBytes()) / 1024.0;
}
BENCHMARK(BM_ViewFirstPaintWhole)->UseRealTime()->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv) {
  setenv("QT_QPA_PLATFORM", "offscreen", 0);
  QApplication app(argc, argv);
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
  BenchCacheFolder folder;
  if (!folder.IsReady()) {
    std::fprintf(stderr, "sonvale_gui_bench: no temporary folder for the sound cache\n");
    return 2;
  }
  using Kind = BenchTarget::Kind;
  TargetReporter reporter({{"BM_ViewRepaint/", Kind::kMaxSeconds, 16e-3, "", "<= 16 ms"},
                           {"BM_ViewScrollScreen/", Kind::kMaxSeconds, 8e-3, "", "<= 8 ms"}},
                          ::isatty(STDOUT_FILENO) != 0);
  benchmark::RunSpecifiedBenchmarks(&reporter);
  theScene.reset();
  benchmark::Shutdown();
  return 0;
}
