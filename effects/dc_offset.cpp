#include "effects/dc_offset.h"

#include <algorithm>

LSRCDCOffset::LSRCDCOffset(const LSoundSource& input, LArray<float> offsets)
    : LSoundProcessBase(input), offsets_(std::move(offsets)) {}

void LSRCDCOffset::Read(float* buffer, long long frames) {
  ReadInput(buffer, frames);
  const int channels = GetChannels();
  const int count = std::min<int>(channels, static_cast<int>(offsets_.size()));
  for (int c = 0; c < count; ++c) {
    const float offset = offsets_[static_cast<std::size_t>(c)];
    if (offset == 0.0f) continue;
    float* sample = buffer + c;
    for (long long i = 0; i < frames; ++i, sample += channels) *sample -= offset;
  }
}
