#include "audio/audio_ring.h"

#include <algorithm>
#include <cstring>

namespace {

std::size_t PowerOfTwoAtLeast(long n) {
  std::size_t p = 1;
  while (p < static_cast<std::size_t>(std::max(n, 1L))) p <<= 1;
  return p;
}

}  // namespace

LAudioRing::LAudioRing(long capacityFrames, int channels)
    : channels_(std::max(channels, 1)), mask_(PowerOfTwoAtLeast(capacityFrames) - 1) {
  samples_.assign((mask_ + 1) * static_cast<std::size_t>(channels_), 0.0f);
}

long LAudioRing::ReadableFrames() const {
  return static_cast<long>(written_.load(std::memory_order_acquire) - read_.load(std::memory_order_acquire));
}

long LAudioRing::WritableFrames() const { return CapacityFrames() - ReadableFrames(); }

long LAudioRing::Write(const float* in, long frames) {
  const std::size_t w = written_.load(std::memory_order_relaxed);
  const std::size_t r = read_.load(std::memory_order_acquire);
  const std::size_t n = std::min(static_cast<std::size_t>(std::max(frames, 0L)), mask_ + 1 - (w - r));
  const std::size_t at = w & mask_;
  const std::size_t first = std::min(n, mask_ + 1 - at);
  const std::size_t ch = static_cast<std::size_t>(channels_);
  std::memcpy(&samples_[at * ch], in, first * ch * sizeof(float));
  if (n > first) std::memcpy(&samples_[0], in + first * ch, (n - first) * ch * sizeof(float));
  written_.store(w + n, std::memory_order_release);
  return static_cast<long>(n);
}

long LAudioRing::Read(float* out, long frames) {
  const std::size_t r = read_.load(std::memory_order_relaxed);
  const std::size_t w = written_.load(std::memory_order_acquire);
  const std::size_t n = std::min(static_cast<std::size_t>(std::max(frames, 0L)), w - r);
  const std::size_t at = r & mask_;
  const std::size_t first = std::min(n, mask_ + 1 - at);
  const std::size_t ch = static_cast<std::size_t>(channels_);
  std::memcpy(out, &samples_[at * ch], first * ch * sizeof(float));
  if (n > first) std::memcpy(out + first * ch, &samples_[0], (n - first) * ch * sizeof(float));
  read_.store(r + n, std::memory_order_release);
  return static_cast<long>(n);
}
