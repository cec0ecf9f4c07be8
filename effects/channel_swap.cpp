#include "effects/channel_swap.h"

#include <utility>

LSRCChannelSwap::LSRCChannelSwap(const LSoundSource& input, int first, int second)
    : LSoundProcessBase(input), first_(first), second_(second) {}

void LSRCChannelSwap::Read(float* buffer, long long frames) {
  ReadInput(buffer, frames);
  const int channels = GetChannels();
  if (first_ == second_ || first_ < 0 || second_ < 0 || first_ >= channels || second_ >= channels) return;
  float* frame = buffer;
  for (long long i = 0; i < frames; ++i, frame += channels) std::swap(frame[first_], frame[second_]);
}
