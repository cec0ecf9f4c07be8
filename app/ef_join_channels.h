#pragma once
// SVEfJoinChannels ("Kanäle zusammenführen"): every channel becomes the average
// of all of them; the channel count stays.
#include "app/ef_sound_source_process.h"
#include "effects/channel_join.h"

class SVEfJoinChannels final : public SVEfSoundSourceProcess {
public:
  using SVEfSoundSourceProcess::SVEfSoundSourceProcess;

  [[nodiscard]] const char* GetEffectName() const override { return "Kanäle zusammenführen"; }
  [[nodiscard]] LSoundSource OpenSource(LSoundSource& input) override { return LMakeSource<LSRCChannelJoin>(input); }
};
