// Cut-list edits, reading a cut list through its source, and assembling the
// overview of an hour.
#include <algorithm>
#include <chrono>
#include <ctime>

#include <benchmark/benchmark.h>

#include "base/file_stream.h"
#include "base/platform_file.h"
#include "bench/bench_support.h"
#include "bench/target_reporter.h"
#include "engine/cut_list_audio.h"
#include "engine/sound_cache.h"
#include "engine/sound_cache_overview.h"
#include "engine/source_to_sink.h"

namespace {

using Clock = std::chrono::steady_clock;

constexpr long long kEditSegmentFrames = 4410;  // 0.1 s per segment, within an item of 1 s
constexpr long long kItemFrames = 10 * kBenchRate;
constexpr long long kHourFrames = 3600LL * kBenchRate;

double Seconds(Clock::duration d) { return std::chrono::duration<double>(d).count(); }

// Wall time and processor time of the timed edits alone. On a busy machine the
// wall time also holds the time other processes had the core; the processor
// time does not.
class EditTimer {
public:
  void Start() {
    cpu0_ = std::clock();
    wall0_ = Clock::now();
  }
  // Answers the wall seconds since Start.
  double Stop() {
    const double wall = Seconds(Clock::now() - wall0_);
    cpuSeconds_ += static_cast<double>(std::clock() - cpu0_) / CLOCKS_PER_SEC;
    return wall;
  }
  // Processor seconds per edit, as a counter next to the wall time.
  void Report(benchmark::State& state) const {
    state.counters[kOpCpuCounter] = benchmark::Counter(cpuSeconds_ * 1e6, benchmark::Counter::kAvgIterations);
  }

private:
  std::clock_t cpu0_ = 0;
  Clock::time_point wall0_;
  double cpuSeconds_ = 0.0;
};

// The segment at `percent` of the list, kept clear of the last one.
long long SegmentAt(long long segments, long long percent) {
  return std::clamp(segments * percent / 100, 0LL, segments - 2);
}

// Each edit leaves a split or two behind; the list is rebuilt from its pristine
// copy this often, so it never drifts by more than a percent from its size.
long long RebuildEvery(long long segments) { return std::max(1LL, segments / 200); }

// The edit point of the j-th edit since the last rebuild: every edit gets
// untouched segments, stepping back from the wanted place.
long long EditSegment(long long segments, long long percent, long long j, long long stride) {
  return std::max(0LL, SegmentAt(segments, percent) - j * stride);
}

// Deletes a range from the middle of one segment to the middle of the next,
// as cutting a selection does; the removed part is put back untimed.
void BM_CutListDelete(benchmark::State& state) {
  const long long segments = state.range(0);
  LSoundCacheItemHandle item = BenchItemAdd(kBenchRate);
  if (!item.IsItem()) {
    state.SkipWithError("no cache item");
    return;
  }
  const LCutListAudio pristine = BenchSegmentList(item, segments, kEditSegmentFrames, kBenchRate);
  LCutListAudio work;
  LCutListAudio removed;
  const long long every = RebuildEvery(segments);
  EditTimer timer;
  long long done = 0;
  for (auto _ : state) {
    const long long j = done++ % every;
    if (j == 0) work = pristine;
    const long long start = EditSegment(segments, state.range(1), j, 2) * kEditSegmentFrames + kEditSegmentFrames / 2;
    const long long end = start + kEditSegmentFrames;
    work.EfCopy(start, end, removed);
    timer.Start();
    work.EfDelete(start, end);
    state.SetIterationTime(timer.Stop());
    work.EfInsert(start, removed);
  }
  timer.Report(state);
}
BENCHMARK(BM_CutListDelete)
    ->ArgNames({"segments", "at_pct"})
    ->ArgsProduct({{100, 10000, 100000}, {50, 100}})
    ->UseManualTime()
    ->Unit(benchmark::kMicrosecond);

// Pastes one segment into the middle of a segment (a split and a splice); the
// pasted part is deleted again untimed.
void BM_CutListInsert(benchmark::State& state) {
  const long long segments = state.range(0);
  LSoundCacheItemHandle item = BenchItemAdd(kBenchRate);
  if (!item.IsItem()) {
    state.SkipWithError("no cache item");
    return;
  }
  const LCutListAudio pristine = BenchSegmentList(item, segments, kEditSegmentFrames, kBenchRate);
  LCutListAudio clip;
  clip.SetFormat(kBenchRate, kBenchChannels);
  clip.SegmentAppend(LCutListSegment(item, kBenchRate, 1.0f, 0));
  LCutListAudio work;
  const long long every = RebuildEvery(segments);
  EditTimer timer;
  long long done = 0;
  for (auto _ : state) {
    const long long j = done++ % every;
    if (j == 0) work = pristine;
    const long long at = EditSegment(segments, state.range(1), j, 1) * kEditSegmentFrames + kEditSegmentFrames / 2;
    timer.Start();
    work.EfInsert(at, clip);
    state.SetIterationTime(timer.Stop());
    work.EfDelete(at, at + kBenchRate);
  }
  timer.Report(state);
}
BENCHMARK(BM_CutListInsert)
    ->ArgNames({"segments", "at_pct"})
    ->ArgsProduct({{100, 10000, 100000}, {50, 100}})
    ->UseManualTime()
    ->Unit(benchmark::kMicrosecond);

// Opening a source copies the segments (and takes a reference for each).
void BM_CutListOpenSource(benchmark::State& state) {
  LSoundCacheItemHandle item = BenchItemAdd(kItemFrames);
  if (!item.IsItem()) {
    state.SkipWithError("no cache item");
    return;
  }
  const LCutListAudio list = BenchSegmentList(item, state.range(0), kBenchRate / 100, kItemFrames);
  for (auto _ : state) {
    LSoundSource source = list.OpenSource();
    benchmark::DoNotOptimize(source.Get());
  }
}
BENCHMARK(BM_CutListOpenSource)->Arg(10000)->UseRealTime()->Unit(benchmark::kMicrosecond);

// Opens the list and reads it to the end in the pump's blocks: 10,000 segments
// of 10 ms each over one item of 10 s, so every block crosses several segments.
void BM_CutListRead(benchmark::State& state) {
  LSoundCacheItemHandle item = BenchItemAdd(kItemFrames);
  if (!item.IsItem()) {
    state.SkipWithError("no cache item");
    return;
  }
  const LCutListAudio list = BenchSegmentList(item, state.range(0), kBenchRate / 100, kItemFrames);
  const long long frames = list.GetLength();
  LArray<float> buffer(static_cast<std::size_t>(kLPumpBlockFrames * kBenchChannels));
  for (auto _ : state) {
    LSoundSource source = list.OpenSource();
    for (long long at = 0; at < frames; at += kLPumpBlockFrames)
      source.Read(buffer.data(), std::min(kLPumpBlockFrames, frames - at));
    benchmark::DoNotOptimize(buffer.data());
  }
  const double iterations = static_cast<double>(state.iterations());
  state.SetBytesProcessed(state.iterations() * frames * kBenchChannels * static_cast<long long>(sizeof(float)));
  state.counters["x_realtime"] =
      benchmark::Counter(iterations * static_cast<double>(frames) / kBenchRate, benchmark::Counter::kIsRate);
}
BENCHMARK(BM_CutListRead)->Arg(10000)->UseRealTime()->Unit(benchmark::kMillisecond);

// Copies 10 s of noise into a new cache item, as opening a file does after
// decoding: ".aud" and the peaks of ".grf" written as the frames come, then
// ".audinfo". The item goes again with its handle, untimed.
void BM_CacheItemAdd(benchmark::State& state) {
  const long long frames = 10 * kBenchRate;
  for (auto _ : state) {
    LSoundCacheItemHandle item = BenchItemAdd(frames);
    if (!item.IsItem()) {
      state.SkipWithError("no cache item");
      break;
    }
    state.PauseTiming();
    item.Reset();
    state.ResumeTiming();
  }
  state.SetBytesProcessed(state.iterations() * frames * kBenchChannels * static_cast<long long>(sizeof(float)));
  state.counters["x_realtime"] = benchmark::Counter(static_cast<double>(state.iterations()) * 10.0,
                                                    benchmark::Counter::kIsRate);
}
BENCHMARK(BM_CacheItemAdd)->UseRealTime()->Unit(benchmark::kMillisecond);

// Gives the item an overview of `frames` frames of varying peaks and an audio
// file of the matching size that holds no data (GrfBufferGet reads only the overview).
bool OverviewWrite(unsigned short item, long long frames) {
  LSoundCache& cache = LSoundCache::Instance();
  LStringLong grf = cache.FilePath(item, kLSoundCacheExtOverview);
  LStringLong aud = cache.FilePath(item, kLSoundCacheExtAudio);
  LFileStream overview(LFileOpen(grf.c_str(), kLFileWrite | kLFileCreate | kLFileTruncate));
  LFileStream audio(LFileOpen(aud.c_str(), kLFileWrite | kLFileCreate));
  if (!overview.IsOpen() || !audio.IsOpen()) return false;
  const long long blocks = LSoundCacheOverviewBlocks(frames);
  const long long setBytes = kBenchChannels * kLSoundCacheOverviewRecordBytes;
  LArray<unsigned char> chunk(static_cast<std::size_t>(65536 * setBytes));
  std::uint32_t state = 12345;
  for (long long done = 0; done < blocks;) {
    const long long n = std::min<long long>(65536, blocks - done);
    for (long long i = 0; i < n * setBytes; i += 2) {
      state = state * 1664525u + 1013904223u;
      const std::uint16_t code = static_cast<std::uint16_t>(1 + (state >> 16) % 4134);
      chunk[static_cast<std::size_t>(i)] = static_cast<unsigned char>(code);
      chunk[static_cast<std::size_t>(i + 1)] = static_cast<unsigned char>(code >> 8);
    }
    if (overview.Write(chunk.data(), n * setBytes) != n * setBytes) return false;
    done += n;
  }
  return audio.Truncate(frames * kBenchChannels * static_cast<long long>(sizeof(float)));
}

// The overview of a whole hour of stereo, as the view asks for it when the
// document is shown whole: over one segment (the file as opened), or over
// 10,000 segments of an edited document whose ends fall between records.
// fresh: a new output array every time, else the array is reused.
void BM_GrfBufferGetHour(benchmark::State& state) {
  const long long segments = state.range(0);
  const bool fresh = state.range(1) != 0;
  LSoundCacheItemHandle item = BenchItemAdd(kBenchRate);
  if (!item.IsItem() || !OverviewWrite(item.Number(), kHourFrames)) {
    state.SkipWithError("no cache item with an hour of overview");
    return;
  }
  LCutListAudio list;
  if (segments == 1) {
    list.SetFormat(kBenchRate, kBenchChannels);
    list.SegmentAppend(LCutListSegment(item, kHourFrames, 1.0f, 0));
  } else {
    list = BenchSegmentList(item, segments, kHourFrames / segments, kHourFrames);
  }
  const long long frames = list.GetLength();
  LArray<LCutListGrfFrame> reused;
  long long filled = 0;
  for (auto _ : state) {
    if (fresh) {
      LArray<LCutListGrfFrame> out;
      filled = list.GrfBufferGet(out, 0, frames);
      benchmark::DoNotOptimize(out.data());
    } else {
      filled = list.GrfBufferGet(reused, 0, frames);
      benchmark::DoNotOptimize(reused.data());
    }
  }
  if (filled != LSoundCacheOverviewBlocks(frames)) state.SkipWithError("the overview came back short");
  state.counters["frames"] = static_cast<double>(filled);
}
BENCHMARK(BM_GrfBufferGetHour)
    ->ArgNames({"segments", "fresh"})
    ->ArgsProduct({{1, 10000}, {1, 0}})
    ->UseRealTime()
    ->Unit(benchmark::kMillisecond);

}  // namespace
