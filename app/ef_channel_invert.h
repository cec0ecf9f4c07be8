#pragma once
// SVEfChannelInvert ("Kanal invertieren"): turns the polarity of the chosen
// channels (all of them unless told otherwise).
#include <cstdint>

#include "app/ef_sound_source_process.h"
#include "effects/channel_invert.h"

class SVEfChannelInvert final : public SVEfSoundSourceProcess {
public:
  // Bit c of channelMask inverts channel c.
  SVEfChannelInvert(LCutListAudio& list, SVSelection& selection, std::uint32_t channelMask = kLChannelMaskAll)
      : SVEfSoundSourceProcess(list, selection), mask_(channelMask) {}

  [[nodiscard]] const char* GetEffectName() const override { return "Kanal invertieren"; }
  [[nodiscard]] LSoundSource OpenSource(LSoundSource& input) override {
    return LMakeSource<LSRCChannelInvert>(input, mask_);
  }

private:
  std::uint32_t mask_;
};
