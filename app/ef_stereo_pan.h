#pragma once
// SVEfStereoPan ("Stereoschwenk"): moves the stereo image to one side (pan -1
// hard left ... +1 hard right; see effects/stereo_pan.h).
#include "app/ef_sound_source_process.h"
#include "effects/stereo_pan.h"

class SVEfStereoPan final : public SVEfSoundSourceProcess {
public:
  SVEfStereoPan(LCutListAudio& list, SVSelection& selection, double pan)
      : SVEfSoundSourceProcess(list, selection), pan_(pan) {}

  [[nodiscard]] const char* GetEffectName() const override { return "Stereoschwenk"; }
  [[nodiscard]] LSoundSource OpenSource(LSoundSource& input) override {
    return LMakeSource<LSRCStereoPan>(input, pan_);
  }

private:
  double pan_;
};
