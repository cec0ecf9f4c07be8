#pragma once
// LSRCDCOffset: subtracts a constant from each channel, the offset that the
// channel's mean showed (see source_levels.h), so the signal is centred on zero.
#include "base/array.h"
#include "effects/sound_process_base.h"

class LSRCDCOffset final : public LSoundProcessBase {
public:
  // offsets[c] is taken from channel c; channels without an entry keep their samples.
  LSRCDCOffset(const LSoundSource& input, LArray<float> offsets);

  void Read(float* buffer, long long frames) override;

private:
  LArray<float> offsets_;
};
