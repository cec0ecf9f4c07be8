#pragma once
// SVEfEcho ("Echo"): the selection through the feedback echo of its settings.
#include "app/ef_sound_source_process.h"
#include "effects/echo.h"

class SVEfEcho final : public SVEfSoundSourceProcess {
public:
  SVEfEcho(LCutListAudio& list, SVSelection& selection, const LSPEcho& echo)
      : SVEfSoundSourceProcess(list, selection), echo_(echo) {}

  [[nodiscard]] const char* GetEffectName() const override { return "Echo"; }
  [[nodiscard]] LSoundSource OpenSource(LSoundSource& input) override { return echo_.OpenSource(input); }

private:
  LSPEcho echo_;
};
