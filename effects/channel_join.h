#pragma once
// LSRCChannelJoin: every channel becomes the average of all channels, so the
// channels are joined into one signal while the channel count stays (the result
// fits back into the file it came from). A mono input passes as it is.
#include "effects/sound_process_base.h"

class LSRCChannelJoin final : public LSoundProcessBase {
public:
  explicit LSRCChannelJoin(const LSoundSource& input) : LSoundProcessBase(input) {}

  void Read(float* buffer, long long frames) override;
};
