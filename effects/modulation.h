#pragma once
// What the modulation effects share: oscillators and noise that are functions of
// the frame position alone, so output does not depend on how it is read in
// blocks and a seek lands exactly where reading straight through does.
#include <cmath>
#include <cstdint>
#include <numbers>

// Sine of an oscillator at hz, zero phase at frame 0.
inline double LLfoSine(long long frame, double hz, double rate) {
  const double turns = static_cast<double>(frame) * hz / rate;
  return std::sin(2.0 * std::numbers::pi * (turns - std::floor(turns)));
}

// Uniform noise in [-1, 1) for one sample, from a hash of its frame and channel.
inline float LHashNoise(long long frame, int channel) {
  std::uint64_t x = static_cast<std::uint64_t>(frame) * 0x9E3779B97F4A7C15ull + static_cast<std::uint64_t>(channel + 1);
  x ^= x >> 31;
  x *= 0xBF58476D1CE4E5B9ull;
  x ^= x >> 27;
  x *= 0x94D049BB133111EBull;
  x ^= x >> 33;
  return static_cast<float>(static_cast<double>(x >> 40) / static_cast<double>(1ull << 23) - 1.0);
}

// Frames between updates of a swept filter's coefficients, counted from frame 0.
inline constexpr long long kLModulationStep = 32;
