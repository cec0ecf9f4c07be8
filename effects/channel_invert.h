#pragma once
// LSRCChannelInvert: turns the polarity of chosen channels (every sample times
// -1), exactly; the other channels pass as they are.
#include <cstdint>

#include "effects/sound_process_base.h"

// Every channel.
inline constexpr std::uint32_t kLChannelMaskAll = 0xFFFFFFFFu;

class LSRCChannelInvert final : public LSoundProcessBase {
public:
  // Bit c of channelMask inverts channel c (channels above 31 are never inverted).
  LSRCChannelInvert(const LSoundSource& input, std::uint32_t channelMask = kLChannelMaskAll);

  void Read(float* buffer, long long frames) override;

private:
  std::uint32_t mask_;
};
