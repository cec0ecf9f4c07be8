#include "effects/stereo_pan.h"

#include <algorithm>
#include <cmath>

LSRCStereoPan::LSRCStereoPan(const LSoundSource& input, double pan) : LSoundProcessBase(input) {
  if (std::isnan(pan)) pan = 0.0;
  pan = std::clamp(pan, kLPanLeft, kLPanRight);
  left_ = static_cast<float>(pan > 0.0 ? 1.0 - pan : 1.0);
  right_ = static_cast<float>(pan < 0.0 ? 1.0 + pan : 1.0);
}

void LSRCStereoPan::Read(float* buffer, long long frames) {
  ReadInput(buffer, frames);
  const int channels = GetChannels();
  if (channels < 2) return;
  float* frame = buffer;
  for (long long i = 0; i < frames; ++i, frame += channels) {
    frame[0] *= left_;
    frame[1] *= right_;
  }
}
