#include "app/ef_normalize.h"

#include <cmath>

#include "effects/envelope.h"
#include "effects/source_levels.h"

LSoundSource SVEfNormalize::OpenSource(LProcessInterface& process, LSoundSource& input) {
  LSourceLevels levels;
  // A cancelled measurement is seen by the caller, which asks right after.
  if (LSourceLevelsMeasure(process, input, levels) != kLProcessSuccess) return input;
  const float peak = levels.PeakAll();
  const double target = std::pow(10.0, targetDb_ / 20.0);
  if (!(peak > 0.0f) || !std::isfinite(target)) return input;
  const auto factor = static_cast<float>(target / static_cast<double>(peak));
  // One point is a constant gain.
  return LMakeSource<LSRCEnvelope>(input, LArray<LEnvelopePoint>{{0, factor}});
}
