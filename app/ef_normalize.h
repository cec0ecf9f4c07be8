#pragma once
// SVEfNormalize ("Normalisieren"): brings the selection's peak, or its
// integrated loudness, to a target level. A measuring pass over the selection
// finds the peak of all channels together (so their balance stays), or their
// loudness; the selection is then rendered with the one gain that takes it to
// the target. Silence, and a selection too short for a loudness, is left as it is.
#include <limits>

#include "app/ef_sound_source_process.h"

inline constexpr double kSVNormalizeDefaultDb = 0.0;

enum class SVNormalizeTarget {
  kPeak,      // the target is a peak in dB of full scale
  kLoudness,  // the target is an integrated loudness in LUFS
};

class SVEfNormalize final : public SVEfSoundSourceProcess {
public:
  SVEfNormalize(LCutListAudio& list, SVSelection& selection, double target = kSVNormalizeDefaultDb,
                SVNormalizeTarget kind = SVNormalizeTarget::kPeak)
      : SVEfSoundSourceProcess(list, selection), target_(target), kind_(kind) {}

  [[nodiscard]] const char* GetEffectName() const override { return "Normalisieren"; }
  [[nodiscard]] LSoundSource OpenSource(LProcessInterface& process, LSoundSource& input) override;
  // After a loudness normalisation: the true peak the gain led to (dBTP), which
  // may lie above full scale; -infinity otherwise.
  [[nodiscard]] double PeakAfterDb() const { return peakAfterDb_; }

private:
  double target_;
  double peakAfterDb_ = -std::numeric_limits<double>::infinity();
  SVNormalizeTarget kind_;
};
