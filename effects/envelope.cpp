#include "effects/envelope.h"

#include <algorithm>

LSRCEnvelope::LSRCEnvelope(const LSoundSource& input, LArray<LEnvelopePoint> points)
    : LSoundProcessBase(input), points_(std::move(points)) {
  std::stable_sort(points_.begin(), points_.end(),
                   [](const LEnvelopePoint& a, const LEnvelopePoint& b) { return a.frame < b.frame; });
}

float LSRCEnvelope::GainAt(long long frame) const {
  if (points_.empty()) return 1.0f;
  // The first point after frame; the one before it starts the line frame is on.
  auto after = std::upper_bound(points_.begin(), points_.end(), frame,
                                [](long long f, const LEnvelopePoint& p) { return f < p.frame; });
  if (after == points_.begin()) return points_.front().gain;
  if (after == points_.end()) return points_.back().gain;
  const LEnvelopePoint& a = *(after - 1);
  const LEnvelopePoint& b = *after;
  const double t = static_cast<double>(frame - a.frame) / static_cast<double>(b.frame - a.frame);
  return static_cast<float>(a.gain + (static_cast<double>(b.gain) - a.gain) * t);
}

void LSRCEnvelope::Read(float* buffer, long long frames) {
  const long long start = Input().GetPositionSample();
  ReadInput(buffer, frames);
  if (points_.empty()) return;
  const int channels = GetChannels();
  float* frame = buffer;
  for (long long i = 0; i < frames; ++i, frame += channels) {
    const float gain = GainAt(start + i);
    if (gain == 1.0f) continue;
    for (int c = 0; c < channels; ++c) frame[c] *= gain;
  }
}
