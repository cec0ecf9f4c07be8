#include "fuzz_check.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

namespace {

// Integer and G.711 sources stay within full scale; 8-bit unsigned reaches -128/127.
constexpr float kIntegerReach = 1.01f;
// A source promises its reach only when it is below this (float sources say 16, no promise).
constexpr float kPromiseBelow = 2.0f;

bool SameBits(const float* a, const float* b, std::size_t count) {
  return std::memcmp(a, b, count * sizeof(float)) == 0;
}

}  // namespace

void FuzzCheck(bool condition, const char* what) {
  if (condition) return;
  std::fprintf(stderr, "fuzz check failed: %s\n", what);
  std::abort();
}

long long FuzzFramesToRead(const LSoundSource& source) {
  const long long channels = std::max<long long>(1, source.GetChannels());
  return std::clamp<long long>(source.GetEndSample(), 0, kFuzzMostSamples / channels);
}

long long FuzzReadTwoWays(LSoundSource& whole, LSoundSource& blocks, long long block, long long probe,
                          bool seeksAgree) {
  FuzzCheck(whole.GetChannels() == blocks.GetChannels(), "two opens give the same channels");
  FuzzCheck(whole.GetEndSample() == blocks.GetEndSample(), "two opens give the same length");
  const long long channels = std::max<long long>(1, whole.GetChannels());
  // A few frames past the end, which must read as silence.
  const long long frames = FuzzFramesToRead(whole) + 3;
  std::vector<float> a(static_cast<std::size_t>(frames * channels), -7.0f);
  std::vector<float> b(a.size(), -9.0f);
  whole.Seek(0);
  whole.Read(a.data(), frames);
  blocks.Seek(0);
  block = std::max<long long>(1, block);
  for (long long at = 0; at < frames; at += block) blocks.Read(b.data() + at * channels, std::min(block, frames - at));
  FuzzCheck(SameBits(a.data(), b.data(), a.size()), "whole and block reads agree");
  FuzzCheck(whole.GetPositionSample() == frames, "a read advances by the frames asked for");

  const long long end = whole.GetEndSample();
  for (long long f = std::max(0LL, end); f < frames; ++f) {
    for (long long c = 0; c < channels; ++c) FuzzCheck(a[static_cast<std::size_t>(f * channels + c)] == 0.0f, "frames past the end are silence");
  }
  if (whole.GetMaxAmplitude() < kPromiseBelow) {
    for (float v : a) FuzzCheck(std::fabs(v) <= kIntegerReach, "values stay within the format's reach");
  }

  if (seeksAgree && frames > 0) {
    const long long at = probe % frames;
    const long long n = std::min<long long>(frames - at, 1 + probe % 301);
    std::vector<float> c(static_cast<std::size_t>(n * channels));
    blocks.Seek(at);
    blocks.Read(c.data(), n);
    FuzzCheck(SameBits(c.data(), a.data() + at * channels, c.size()), "a read after a seek agrees with the whole read");
  }
  // Before the start: silence, and the position goes on from there.
  std::vector<float> before(static_cast<std::size_t>(4 * channels), -1.0f);
  whole.Seek(-2);
  whole.Read(before.data(), 4);
  for (long long i = 0; i < 2 * channels; ++i) FuzzCheck(before[static_cast<std::size_t>(i)] == 0.0f, "frames before 0 are silence");
  return frames;
}

std::uint32_t FuzzLE32(const std::uint8_t* data, std::size_t size, std::size_t at) {
  std::uint32_t value = 0;
  for (std::size_t i = 0; i < 4; ++i) {
    if (at + i < size) value |= static_cast<std::uint32_t>(data[at + i]) << (8 * i);
  }
  return value;
}
