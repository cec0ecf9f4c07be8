#pragma once
// LSRCChannelSwap: exchanges two channels of its input (left and right unless
// told otherwise), sample for sample. A pair that the input does not have, or a
// channel paired with itself, leaves the audio as it is.
#include "effects/sound_process_base.h"

class LSRCChannelSwap final : public LSoundProcessBase {
public:
  LSRCChannelSwap(const LSoundSource& input, int first = 0, int second = 1);

  void Read(float* buffer, long long frames) override;

private:
  int first_;
  int second_;
};
