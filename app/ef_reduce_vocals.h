#pragma once
// SVEfReduceVocals ("Stimmen reduzieren"): takes out of a stereo selection what
// is the same in both channels, keeping the bass.
#include "app/ef_sound_source_process.h"
#include "effects/reduce_vocals.h"

inline constexpr const char* kSVReduceVocalsLabel = "Stimmen reduzieren";

class SVEfReduceVocals final : public SVEfSoundSourceProcess {
public:
  SVEfReduceVocals(LCutListAudio& list, SVSelection& selection) : SVEfSoundSourceProcess(list, selection) {}

  [[nodiscard]] const char* GetEffectName() const override { return kSVReduceVocalsLabel; }
  [[nodiscard]] LSoundSource OpenSource(LSoundSource& input) override {
    return LMakeSource<LSRCReduceVocals>(input);
  }
};
