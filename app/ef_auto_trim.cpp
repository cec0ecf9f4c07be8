#include "app/ef_auto_trim.h"

#include <algorithm>
#include <cmath>

#include "base/array.h"

namespace {

// Frames read per block.
constexpr long long kBlockFrames = 8192;
constexpr long long kMsPerSecond = 1000;

struct Range {
  long long start;
  long long end;
};

// The runs of silent frames of the piece, in order, each at least minimum long.
LProcessResult SilentRuns(LProcessInterface& process, const LCutListAudio& piece, float threshold, long long minimum,
                          LArray<Range>& runs) {
  const int channels = std::max<int>(1, piece.GetChannels());
  const long long total = piece.GetLength();
  LSoundSource source = piece.OpenSource();
  LArray<float> block(static_cast<std::size_t>(kBlockFrames * channels));
  long long runStart = -1;
  for (long long at = 0; at < total; at += kBlockFrames) {
    if (process.IsCancelled()) return kLProcessCancelled;
    const long long n = std::min(kBlockFrames, total - at);
    source.Read(block.data(), n);
    const float* frame = block.data();
    for (long long i = 0; i < n; ++i, frame += channels) {
      bool silent = true;
      for (int c = 0; c < channels && silent; ++c) silent = std::fabs(frame[c]) <= threshold;
      if (silent) {
        if (runStart < 0) runStart = at + i;
      } else if (runStart >= 0) {
        if (at + i - runStart >= minimum) runs.push_back({runStart, at + i});
        runStart = -1;
      }
    }
    process.SetProgress(static_cast<double>(at + n) / static_cast<double>(total));
  }
  if (runStart >= 0 && total - runStart >= minimum) runs.push_back({runStart, total});
  return kLProcessSuccess;
}

}  // namespace

int SVEfAutoTrim::ProcessCutList(LProcessInterface& process, LCutListAudio& piece) {
  const float threshold = static_cast<float>(std::pow(10.0, thresholdDb_ / 20.0));
  const long long total = piece.GetLength();
  // AutoTrim looks only at the ends, which any silence there reaches.
  const long long minimum =
      autoTrim_ ? 1 : std::max<long long>(1, minimumMs_ * static_cast<long long>(piece.GetSampleRate()) / kMsPerSecond);
  LArray<Range> runs;
  const LProcessResult scanned = SilentRuns(process, piece, threshold, minimum, runs);
  if (scanned != kLProcessSuccess) return scanned;

  if (autoTrim_) {
    long long start = 0;
    long long end = total;
    if (!runs.empty() && runs.front().start == 0) start = runs.front().end;
    if (!runs.empty() && runs.back().end == total) end = std::max(start, runs.back().start);
    if (start == 0 && end == total) return kLProcessSuccess;
    if (start >= end) {
      piece.Clear();
      ShiftRecord(0, -total);
    } else {
      piece.EfTrim(start, end);
      ShiftRecord(end, end - total);
      ShiftRecord(0, -start);
    }
    return kLProcessSuccess;
  }
  // From the back, so the positions of the runs still to go stay valid.
  for (auto run = runs.rbegin(); run != runs.rend(); ++run) {
    piece.EfDelete(run->start, run->end);
    ShiftRecord(run->start, run->start - run->end);
  }
  return kLProcessSuccess;
}
