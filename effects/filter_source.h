#pragma once
// LSRCFilter: the processing source of the filters and equalisers, a cascade of
// filter sections run over the input in blocks, each channel on its own.
// Seek clears the sections and settles them again over a pre-roll, so a seek and
// a read give what reading straight through gives.
#include <vector>

#include "effects/biquad.h"
#include "effects/sound_process_base.h"

class LSRCFilter final : public LSoundProcessBase {
public:
  LSRCFilter(const LSoundSource& input, std::vector<LBiquad> sections);

  void Read(float* buffer, long long frames) override;
  void Seek(long long frame) override;

private:
  LBiquadCascade cascade_;
};

// The rate filters are designed for: the source's own, or the fallback when it has none.
inline double LFilterRate(const LSoundSource& input) {
  return input.GetSampleRate() > 0 ? input.GetSampleRate() : kLProcessFallbackRate;
}
