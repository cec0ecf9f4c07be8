#pragma once
// The restoration operations: clicks found and repaired over the selection, a
// marked click repaired by hand, and noise reduced with a learned profile.
#include "app/ef_process_effect.h"
#include "app/ef_sound_source_process.h"
#include "effects/click_pop.h"
#include "effects/noise_reduce.h"

inline constexpr const char* kSVClickPopLabel = "Click/Pop-Entfernung";
inline constexpr const char* kSVManualClickPopLabel = "Manuelle Knack-/Kratzreparatur";
inline constexpr const char* kSVNoiseReduceLabel = "Geräuschreduzierung";
// The longest span a hand repair rebuilds: beyond it the audio around says too little.
inline constexpr double kSVManualClickPopMaxMs = 50.0;

class SVEfClickPopRemoval final : public SVEfProcessEffect {
public:
  SVEfClickPopRemoval(LCutListAudio& list, SVSelection& selection,
                      const LSPClickPopRemoval& settings = LSPClickPopRemoval())
      : SVEfProcessEffect(list, selection, settings, kSVClickPopLabel) {}
};

// Rebuilds the whole selection from the audio either side of it in the
// document, which it reads when the source is opened.
class SVEfManualClickPop final : public SVEfSoundSourceProcess {
public:
  SVEfManualClickPop(LCutListAudio& list, SVSelection& selection) : SVEfSoundSourceProcess(list, selection) {}

  [[nodiscard]] const char* GetEffectName() const override { return kSVManualClickPopLabel; }
  [[nodiscard]] LSoundSource OpenSource(LSoundSource& input) override;
};

// The selection through the noise reduction of a profile (copied).
class SVEfNoiseReduce : public SVEfSoundSourceProcess {
public:
  SVEfNoiseReduce(LCutListAudio& list, SVSelection& selection, const LNoiseProfile& profile,
                  double reductionDb = kLNoiseReduceDb, double sensitivityDb = kLNoiseReduceSensitivityDb)
      : SVEfSoundSourceProcess(list, selection),
        profile_(profile),
        reductionDb_(reductionDb),
        sensitivityDb_(sensitivityDb) {}

  [[nodiscard]] const char* GetEffectName() const override { return kSVNoiseReduceLabel; }
  [[nodiscard]] LSoundSource OpenSource(LSoundSource& input) override {
    return LMakeSource<LSRCNoiseReduce>(input, profile_, reductionDb_, sensitivityDb_);
  }

private:
  LNoiseProfile profile_;
  double reductionDb_;
  double sensitivityDb_;
};

// The same reduction run as a process on the selected piece: the one the
// command applies after a profile was taken.
class SVEfNoiseReduceSS : public SVEfNoiseReduce {
public:
  using SVEfNoiseReduce::SVEfNoiseReduce;
};

class SVEfNoiseReduceSSApply final : public SVEfNoiseReduceSS {
public:
  using SVEfNoiseReduceSS::SVEfNoiseReduceSS;
};
