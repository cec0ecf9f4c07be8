#include "effects/source_levels.h"

#include <algorithm>
#include <cmath>

namespace {
// Frames read per block.
constexpr long long kBlockFrames = 8192;
}  // namespace

float LSourceLevels::PeakAll() const {
  float all = 0.0f;
  for (float p : peak) all = std::max(all, p);
  return all;
}

LProcessResult LSourceLevelsMeasure(LProcessInterface& process, LSoundSource& source, LSourceLevels& out) {
  const int channels = std::max<int>(1, source.GetChannels());
  out.peak.assign(static_cast<std::size_t>(channels), 0.0f);
  out.mean.assign(static_cast<std::size_t>(channels), 0.0);
  out.frames = 0;
  LArray<double> sum(static_cast<std::size_t>(channels), 0.0);
  LArray<float> block(static_cast<std::size_t>(kBlockFrames * channels));
  const long long end = source.GetEndSample();
  LProcessResult result = kLProcessSuccess;
  source.Seek(0);
  for (long long at = 0; at < end; at += kBlockFrames) {
    if (process.IsCancelled()) {
      result = kLProcessCancelled;
      break;
    }
    const long long n = std::min(kBlockFrames, end - at);
    source.Read(block.data(), n);
    const float* frame = block.data();
    for (long long i = 0; i < n; ++i, frame += channels) {
      for (int c = 0; c < channels; ++c) {
        const auto k = static_cast<std::size_t>(c);
        out.peak[k] = std::max(out.peak[k], std::fabs(frame[c]));
        sum[k] += frame[c];
      }
    }
    out.frames += n;
    process.SetProgress(static_cast<double>(at + n) / static_cast<double>(end));
  }
  if (out.frames > 0)
    for (std::size_t k = 0; k < sum.size(); ++k) out.mean[k] = sum[k] / static_cast<double>(out.frames);
  source.Seek(0);
  return result;
}
