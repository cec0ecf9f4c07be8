#pragma once
// SVEfNormalize ("Normalisieren"): brings the selection's peak to a target
// level. A measuring pass over the selection finds the peak of all channels
// together (so their balance stays); the selection is then rendered with the
// one gain that takes that peak to the target. Silence is left as it is.
#include "app/ef_sound_source_process.h"

inline constexpr double kSVNormalizeDefaultDb = 0.0;

class SVEfNormalize final : public SVEfSoundSourceProcess {
public:
  // targetDb: the peak level wanted, in decibels of full scale.
  SVEfNormalize(LCutListAudio& list, SVSelection& selection, double targetDb = kSVNormalizeDefaultDb)
      : SVEfSoundSourceProcess(list, selection), targetDb_(targetDb) {}

  [[nodiscard]] const char* GetEffectName() const override { return "Normalisieren"; }
  [[nodiscard]] LSoundSource OpenSource(LProcessInterface& process, LSoundSource& input) override;

private:
  double targetDb_;
};
