#include "audio/audio_levels.h"

#include <algorithm>
#include <cmath>

void LAudioLevels::Measure(const float* samples, long frames, int channels) {
  if (frames <= 0 || channels <= 0) return;
  const int shown = std::min(channels, kLAudioLevelChannels);
  channels_.store(shown, std::memory_order_relaxed);
  for (int c = 0; c < shown; ++c) {
    float peak = 0.0f;
    double squares = 0.0;
    for (long f = 0; f < frames; ++f) {
      const float v = samples[f * channels + c];
      peak = std::max(peak, std::fabs(v));
      squares += static_cast<double>(v) * v;
    }
    // Compare-and-swap keeps the larger peak when the meter takes at the same time.
    float old = peak_[c].load(std::memory_order_relaxed);
    while (peak > old && !peak_[c].compare_exchange_weak(old, peak, std::memory_order_relaxed)) {
    }
    double sum = squares_[c].load(std::memory_order_relaxed);
    while (!squares_[c].compare_exchange_weak(sum, sum + squares, std::memory_order_relaxed)) {
    }
    if (peak >= kLAudioClipLevel) clipped_[c].store(true, std::memory_order_relaxed);
  }
  frames_.fetch_add(frames, std::memory_order_release);
}

LAudioLevelReading LAudioLevels::Take() {
  LAudioLevelReading reading;
  const long long frames = frames_.exchange(0, std::memory_order_acquire);
  reading.channels = channels_.load(std::memory_order_relaxed);
  for (int c = 0; c < reading.channels; ++c) {
    reading.peak[c] = peak_[c].exchange(0.0f, std::memory_order_relaxed);
    const double squares = squares_[c].exchange(0.0, std::memory_order_relaxed);
    reading.rms[c] = frames > 0 ? static_cast<float>(std::sqrt(squares / static_cast<double>(frames))) : 0.0f;
    reading.clipped[c] = clipped_[c].exchange(false, std::memory_order_relaxed);
  }
  return reading;
}

double LAudioLevels::Decibels(float level) { return level > 1e-6f ? 20.0 * std::log10(level) : -120.0; }
