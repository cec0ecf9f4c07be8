#pragma once
// Sources and helpers for the effect tests: a source over a buffer kept in memory,
// sine and staircase signals, and reading a source whole or in odd blocks.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numbers>
#include <vector>

#include "engine/sound_source.h"
#include "support/vector_source.h"

inline LSoundSource MakeBufferSource(std::vector<float> samples, std::uint32_t rate, std::uint8_t channels) {
  return LMakeSource<VectorSource>(std::move(samples), channels, rate);
}

// Interleaved sines, one frequency for all channels, each channel a quarter turn on.
inline std::vector<float> Sine(double hz, double amplitude, std::uint32_t rate, long long frames, int channels = 1) {
  std::vector<float> s(static_cast<std::size_t>(frames * channels));
  for (long long i = 0; i < frames; ++i)
    for (int c = 0; c < channels; ++c)
      s[i * channels + c] = static_cast<float>(
          amplitude * std::sin(2.0 * std::numbers::pi * hz * static_cast<double>(i) / rate + c * std::numbers::pi / 2));
  return s;
}

// Sample value = frame index / scale, the same in every channel but for a sign per channel.
inline std::vector<float> Staircase(long long frames, int channels, float scale = 1.0f) {
  std::vector<float> s(static_cast<std::size_t>(frames * channels));
  for (long long i = 0; i < frames; ++i)
    for (int c = 0; c < channels; ++c) s[i * channels + c] = (c % 2 ? -1.0f : 1.0f) * static_cast<float>(i) / scale;
  return s;
}

// Reads `frames` frames from the source's position in blocks of `block`.
inline std::vector<float> ReadAll(LSoundSource& source, long long frames, long long block) {
  const long long ch = source.GetChannels();
  std::vector<float> out(static_cast<std::size_t>(frames * ch));
  for (long long at = 0; at < frames; at += block) {
    long long n = std::min(block, frames - at);
    source.Read(out.data() + at * ch, n);
  }
  return out;
}
