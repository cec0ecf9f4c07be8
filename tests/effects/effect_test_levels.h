#pragma once
// Measuring what an effect did to a signal: the level of one frequency (a
// Goertzel sum over whole cycles) and the RMS of a stretch, both in dB.
#include <cmath>
#include <cstddef>
#include <numbers>
#include <vector>

// Amplitude in dB (0 dB = full scale) of `hz` in channel `channel` over frames
// [from, from + count); count should hold whole cycles.
inline double ToneDb(const std::vector<float>& s, double hz, double rate, std::size_t from, std::size_t count,
                     int channels = 1, int channel = 0) {
  double re = 0, im = 0;
  const double w = 2.0 * std::numbers::pi * hz / rate;
  for (std::size_t i = 0; i < count; ++i) {
    const double x = s[(from + i) * channels + channel];
    re += x * std::cos(w * i);
    im -= x * std::sin(w * i);
  }
  return 20.0 * std::log10(2.0 * std::hypot(re, im) / count);
}

inline double RmsDb(const std::vector<float>& s, std::size_t from, std::size_t count) {
  double sum = 0;
  for (std::size_t i = from; i < from + count; ++i) sum += double(s[i]) * s[i];
  return 10.0 * std::log10(sum / count);
}

// Deterministic white noise, uniform in [-amplitude, amplitude].
inline std::vector<float> Noise(double amplitude, std::size_t samples, unsigned seed = 1) {
  std::vector<float> s(samples);
  for (auto& x : s) {
    seed = seed * 1664525u + 1013904223u;
    x = static_cast<float>(amplitude * ((seed >> 8) / double(1u << 24) * 2.0 - 1.0));
  }
  return s;
}
