#pragma once
// SVEfEqualiser ("Entzerren"): the selection through the point-list equaliser,
// its curve mapped at the audio's own sample rate.
#include "app/ef_sound_source_process.h"
#include "effects/eq.h"
#include "effects/point_list.h"

class SVEfEqualiser final : public SVEfSoundSourceProcess {
public:
  SVEfEqualiser(LCutListAudio& list, SVSelection& selection, const LPointList& points)
      : SVEfSoundSourceProcess(list, selection), points_(points) {}

  [[nodiscard]] const char* GetEffectName() const override { return "Entzerren"; }
  [[nodiscard]] LSoundSource OpenSource(LSoundSource& input) override {
    LSPEq eq;
    points_.MapPointListToEq(eq, input.GetSampleRate());
    return eq.OpenSource(input);
  }

private:
  LPointList points_;
};
