#include "effects/loudness_meter.h"

#include <ebur128.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <memory>
#include <string>

namespace {

constexpr long long kBlockFrames = 8192;

struct StateFree {
  void operator()(ebur128_state* state) const { ebur128_destroy(&state); }
};
using State = std::unique_ptr<ebur128_state, StateFree>;

State Open(const LSoundSource& source, int mode) {
  if (source.IsError() || source.GetChannels() < 1 || source.GetSampleRate() < 1) return nullptr;
  return State(ebur128_init(source.GetChannels(), source.GetSampleRate(), mode));
}

// Feeds the source to state in blocks of at most `block` frames; after each,
// `each(frames fed so far)`.
template <class Each>
LProcessResult Feed(LProcessInterface& process, LSoundSource& source, ebur128_state* state, long long block,
                    Each&& each) {
  const long long end = source.GetEndSample();
  const int channels = source.GetChannels();
  LArray<float> buffer(static_cast<std::size_t>(block * channels));
  LProcessResult result = kLProcessSuccess;
  source.Seek(0);
  for (long long at = 0; at < end;) {
    if (process.IsCancelled()) {
      result = kLProcessCancelled;
      break;
    }
    const long long n = std::min(block, end - at);
    source.Read(buffer.data(), n);
    if (ebur128_add_frames_float(state, buffer.data(), static_cast<std::size_t>(n)) != EBUR128_SUCCESS) {
      result = kLProcessFailed;
      break;
    }
    at += n;
    each(at);
    process.SetProgress(static_cast<double>(at) / static_cast<double>(end));
  }
  source.Seek(0);
  return result;
}

double Finite(double value) { return std::isfinite(value) ? value : kLLoudnessSilent; }

// The spread of the short-term loudness: windows above -70 LUFS and above the
// level 20 LU under their mean energy, from the 10th to the 95th percentile.
double LoudnessRange(LArray<double> windows) {
  constexpr double kAbsoluteGate = -70.0, kRelativeGate = 20.0;
  std::erase_if(windows, [](double l) { return !(l > kAbsoluteGate); });
  if (windows.empty()) return 0.0;
  double energy = 0.0;
  for (double l : windows) energy += std::pow(10.0, l / 10.0);
  const double gate = 10.0 * std::log10(energy / static_cast<double>(windows.size())) - kRelativeGate;
  std::erase_if(windows, [gate](double l) { return l < gate; });
  if (windows.empty()) return 0.0;
  std::sort(windows.begin(), windows.end());
  // The percentile as the value of rank round(fraction * count), counted from 1.
  const auto at = [&](double fraction) {
    const long rank = std::lround(fraction * static_cast<double>(windows.size()));
    return windows[static_cast<std::size_t>(std::max(1L, rank) - 1)];
  };
  return at(0.95) - at(0.10);
}

}  // namespace

LProcessResult LLoudnessMeasure(LProcessInterface& process, LSoundSource& source, LLoudness& out) {
  out = LLoudness{};
  State state = Open(source, EBUR128_MODE_I | EBUR128_MODE_S | EBUR128_MODE_TRUE_PEAK);
  if (!state) return kLProcessFailed;
  // The range from full 3 s windows every 100 ms, as broadcast meters take it;
  // the library's own range takes one window a second and misses short changes.
  const long long step = std::max<long long>(1, source.GetSampleRate() / 10);
  const long long full = 3LL * source.GetSampleRate();
  LArray<double> windows;
  const LProcessResult result = Feed(process, source, state.get(), step, [&](long long fed) {
    double value = kLLoudnessSilent;
    if (fed >= full && ebur128_loudness_shortterm(state.get(), &value) == EBUR128_SUCCESS) windows.push_back(value);
  });
  if (result != kLProcessSuccess) return result;
  double value = 0.0;
  if (ebur128_loudness_global(state.get(), &value) == EBUR128_SUCCESS) out.integratedLufs = Finite(value);
  out.rangeLu = LoudnessRange(windows);
  double peak = 0.0;
  for (unsigned c = 0; c < source.GetChannels(); ++c) {
    if (ebur128_true_peak(state.get(), c, &value) == EBUR128_SUCCESS) peak = std::max(peak, value);
  }
  out.truePeakDb = peak > 0.0 ? 20.0 * std::log10(peak) : kLLoudnessSilent;
  out.frames = source.GetEndSample();
  return kLProcessSuccess;
}

LProcessResult LLoudnessShortTermMeasure(LProcessInterface& process, LSoundSource& source, long long step,
                                         LArray<double>& out) {
  out.clear();
  State state = Open(source, EBUR128_MODE_S);
  if (!state || step < 1) return kLProcessFailed;
  return Feed(process, source, state.get(), step, [&](long long) {
    double value = kLLoudnessSilent;
    if (ebur128_loudness_shortterm(state.get(), &value) != EBUR128_SUCCESS) value = kLLoudnessSilent;
    out.push_back(Finite(value));
  });
}

std::string LLoudnessText(double value, const char* unit) {
  if (!std::isfinite(value)) return std::string("-∞ ") + unit;
  char text[64];
  std::snprintf(text, sizeof text, "%.1f %s", value, unit);
  return text;
}
