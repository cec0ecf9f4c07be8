#include "effects/point_list.h"

#include <algorithm>

#include "effects/eq.h"
#include "effects/sound_process_base.h"

void LPointList::Add(double frequencyHz, double gainDb) {
  auto at = std::upper_bound(points_.begin(), points_.end(), frequencyHz,
                             [](double f, const LPoint& p) { return f < p.frequency; });
  points_.insert(at, LPoint{frequencyHz, gainDb});
}

double LPointList::GainAt(double frequencyHz) const {
  if (points_.empty()) return 0.0;
  if (frequencyHz < points_.front().frequency) return points_.front().gainDb;
  // The first point above the frequency; the one before it is at or below.
  auto above = std::upper_bound(points_.begin(), points_.end(), frequencyHz,
                                [](double f, const LPoint& p) { return f < p.frequency; });
  if (above == points_.end()) return points_.back().gainDb;
  const LPoint& lo = *(above - 1);
  const LPoint& hi = *above;
  double t = (frequencyHz - lo.frequency) / (hi.frequency - lo.frequency);
  return lo.gainDb + t * (hi.gainDb - lo.gainDb);
}

void LPointList::MapPointListToEq(LSPEq& eq, std::uint32_t sampleRate) const {
  std::uint32_t rate = sampleRate < 1 ? kLProcessFallbackRate : sampleRate;
  LArray<float> gains(rate / 2 + 1);
  for (std::size_t hz = 0; hz < gains.size(); ++hz) gains[hz] = static_cast<float>(GainAt(static_cast<double>(hz)));
  eq.SetGains(std::move(gains));
}
