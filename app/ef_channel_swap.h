#pragma once
// SVEfChannelSwap ("Kanalwechsel"): exchanges the left and right channels.
#include "app/ef_sound_source_process.h"
#include "effects/channel_swap.h"

class SVEfChannelSwap final : public SVEfSoundSourceProcess {
public:
  using SVEfSoundSourceProcess::SVEfSoundSourceProcess;

  [[nodiscard]] const char* GetEffectName() const override { return "Kanalwechsel"; }
  [[nodiscard]] LSoundSource OpenSource(LSoundSource& input) override { return LMakeSource<LSRCChannelSwap>(input); }
};
