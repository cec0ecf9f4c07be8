// The undo snapshot every edit takes before it changes a document.
#include <memory>

#include <benchmark/benchmark.h>

#include "app/file.h"
#include "bench/bench_support.h"

namespace {

constexpr long long kSegmentFrames = 4410;  // 0.1 s, within an item of 1 s

// The ring is filled first, so that every snapshot also frees an old one, as in
// a long session.
void BM_SaveForUndo(benchmark::State& state) {
  LSoundCacheItemHandle item = BenchItemAdd(kBenchRate);
  if (!item.IsItem()) {
    state.SkipWithError("no cache item");
    return;
  }
  auto file = std::make_unique<SVFile>(BenchSegmentList(item, state.range(0), kSegmentFrames, kBenchRate));
  for (unsigned long i = 0; i < kSVUndoRingSize; ++i) file->SaveForUndo("Vorher");
  for (auto _ : state) file->SaveForUndo("Messung");
}
BENCHMARK(BM_SaveForUndo)
    ->ArgName("segments")
    ->Arg(100)
    ->Arg(10000)
    ->Arg(100000)
    ->UseRealTime()
    ->Unit(benchmark::kMicrosecond);

}  // namespace
