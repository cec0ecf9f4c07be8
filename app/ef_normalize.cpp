#include "app/ef_normalize.h"

#include <cmath>

#include "effects/envelope.h"
#include "effects/loudness_meter.h"
#include "effects/source_levels.h"

LSoundSource SVEfNormalize::OpenSource(LProcessInterface& process, LSoundSource& input) {
  double factor = 1.0;
  // A cancelled measurement is seen by the caller, which asks right after.
  if (kind_ == SVNormalizeTarget::kLoudness) {
    LLoudness loudness;
    if (LLoudnessMeasure(process, input, loudness) != kLProcessSuccess) return input;
    if (!std::isfinite(loudness.integratedLufs)) return input;
    factor = std::pow(10.0, (target_ - loudness.integratedLufs) / 20.0);
    peakAfterDb_ = loudness.truePeakDb + target_ - loudness.integratedLufs;
  } else {
    LSourceLevels levels;
    if (LSourceLevelsMeasure(process, input, levels) != kLProcessSuccess) return input;
    const float peak = levels.PeakAll();
    if (!(peak > 0.0f)) return input;
    factor = std::pow(10.0, target_ / 20.0) / static_cast<double>(peak);
  }
  if (!std::isfinite(factor)) return input;
  // One point is a constant gain.
  return LMakeSource<LSRCEnvelope>(input, LArray<LEnvelopePoint>{{0, static_cast<float>(factor)}});
}
