#include "app/ef_envelope.h"

#include <algorithm>
#include <cmath>

#include "effects/envelope.h"

LSoundSource SVEfEnvelope::OpenSource(LSoundSource& input) {
  const long long last = std::max<long long>(0, input.GetEndSample() - 1);
  LArray<LEnvelopePoint> frames;
  frames.reserve(points_.size());
  for (const SVEnvelopePoint& point : points_) {
    const double share = std::clamp(std::isnan(point.position) ? 0.0 : point.position, 0.0, 1.0);
    frames.push_back({std::llround(share * static_cast<double>(last)), point.gain});
  }
  return LMakeSource<LSRCEnvelope>(input, std::move(frames));
}
