#include "effects/channel_invert.h"

namespace {
constexpr int kMaskBits = 32;
}

LSRCChannelInvert::LSRCChannelInvert(const LSoundSource& input, std::uint32_t channelMask)
    : LSoundProcessBase(input), mask_(channelMask) {}

void LSRCChannelInvert::Read(float* buffer, long long frames) {
  ReadInput(buffer, frames);
  const int channels = GetChannels();
  for (int c = 0; c < channels && c < kMaskBits; ++c) {
    if ((mask_ >> c & 1u) == 0) continue;
    float* sample = buffer + c;
    for (long long i = 0; i < frames; ++i, sample += channels) *sample = -*sample;
  }
}
