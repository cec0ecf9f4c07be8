#pragma once
// LAudioLevels: peak and RMS per channel for meters, with clip detection. The
// real-time side measures each block it handles (Measure never waits); a meter
// on any other thread takes the readings with Take.
#include <array>
#include <atomic>
#include <cstdint>

// Channels metered; channels beyond it are not shown.
inline constexpr int kLAudioLevelChannels = 8;
// A sample at or beyond this magnitude counts as clipped.
inline constexpr float kLAudioClipLevel = 0.999f;

struct LAudioLevelReading {
  int channels = 0;
  std::array<float, kLAudioLevelChannels> peak{};  // largest magnitude since the last Take
  std::array<float, kLAudioLevelChannels> rms{};   // of the blocks since the last Take
  std::array<bool, kLAudioLevelChannels> clipped{};  // a clipped sample since the last Take
};

class LAudioLevels {
public:
  // Real-time side: measures frames of interleaved audio.
  void Measure(const float* samples, long frames, int channels);
  // Meter side: the readings since the last Take, and starts afresh.
  [[nodiscard]] LAudioLevelReading Take();

  // Decibels of a level for display; very small levels read as -120.
  [[nodiscard]] static double Decibels(float level);

private:
  std::atomic<int> channels_{0};
  std::array<std::atomic<float>, kLAudioLevelChannels> peak_{};
  std::array<std::atomic<double>, kLAudioLevelChannels> squares_{};
  std::array<std::atomic<bool>, kLAudioLevelChannels> clipped_{};
  std::atomic<long long> frames_{0};
};
