#include "effects/channel_join.h"

void LSRCChannelJoin::Read(float* buffer, long long frames) {
  ReadInput(buffer, frames);
  const int channels = GetChannels();
  if (channels < 2) return;
  const float share = 1.0f / static_cast<float>(channels);
  float* frame = buffer;
  for (long long i = 0; i < frames; ++i, frame += channels) {
    float sum = 0.0f;
    for (int c = 0; c < channels; ++c) sum += frame[c];
    const float joined = sum * share;
    for (int c = 0; c < channels; ++c) frame[c] = joined;
  }
}
