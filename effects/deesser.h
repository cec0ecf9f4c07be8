#pragma once
// LSPDeesser2 (type 33, "De-esser"): turns the band of the sibilants down while
// it is louder than a threshold; LSRCDeesser is its processing source.
//
// Settings: "Frequenz" (Hz, where the band starts), "Schwelle" (dB, the band's
// peak level above which it is turned down) and "Reduktion" (dB, the most it is
// turned down). Saved layout: as every LSoundProcessValues, chunks 0x2001 to 0x2003.
#include <vector>

#include "effects/biquad.h"
#include "effects/sound_process_base.h"
#include "effects/sound_process_values.h"

inline constexpr int kLSPDeesserHz = 0;
inline constexpr int kLSPDeesserThreshold = 1;
inline constexpr int kLSPDeesserReduction = 2;

class LSPDeesser2 final : public LSoundProcessValues {
public:
  LSPDeesser2();
  LSPDeesser2(const LSPDeesser2&) = default;
  [[nodiscard]] LSoundSource OpenSource(LSoundSource& input) override;
  [[nodiscard]] LSoundProcess* GetNewCopy() const override { return new LSPDeesser2(*this); }
};

// The sound is split at the frequency into two bands that add up to the input
// with its magnitude unchanged (a eighth-order crossover); the detector follows
// the upper band's peaks over all channels, and the upper band is turned down by
// how far they exceed the threshold, at most by the reduction. The gain falls in
// a millisecond and recovers over 60 ms.
class LSRCDeesser final : public LSoundProcessBase {
public:
  LSRCDeesser(const LSoundSource& input, double hz, double thresholdDb, double reductionDb);

  void Read(float* buffer, long long frames) override;
  // Clears the bands and the detector and settles them again over a pre-roll.
  void Seek(long long frame) override;

private:
  LBiquadCascade low_, high_;
  double threshold_, maxReduction_;
  double attack_, release_;
  double level_ = 0, reduction_ = 0;
  std::vector<float> upper_;  // the upper band of the block being read
};
