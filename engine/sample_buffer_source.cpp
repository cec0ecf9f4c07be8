#include "engine/sample_buffer_source.h"

#include <algorithm>
#include <cstring>

LSRCSampleBuffer::LSRCSampleBuffer(std::vector<float> samples, std::uint32_t rate, std::uint8_t channels)
    : LSoundSourceBase(rate, channels),
      samples_(std::move(samples)),
      end_(static_cast<long long>(samples_.size()) / std::max<int>(1, channels)) {}

void LSRCSampleBuffer::Read(float* buffer, long long frames) {
  const int channels = GetChannels();
  const long long from = std::clamp(position_, 0LL, end_);
  const long long to = std::clamp(position_ + frames, 0LL, end_);
  std::memset(buffer, 0, static_cast<std::size_t>(frames * channels) * sizeof(float));
  if (to > from)
    std::memcpy(buffer + (from - position_) * channels, samples_.data() + from * channels,
                static_cast<std::size_t>((to - from) * channels) * sizeof(float));
  position_ += frames;
}
