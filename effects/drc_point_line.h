#pragma once
// LSPDRCPointLine (type 23, "Grafikkompressor"): dynamics by a drawn transfer
// curve of points (input level in dB to output level in dB); LSRCDRCPointLine is
// its processing source.
//
// Settings: "Angriff" and "Freigabe" (ms, the time constants of the gain), and
// the curve. Between points the output runs linearly in dB; below the first and
// above the last point the gain of that point holds, so quiet noise is not lifted
// and loud peaks are treated like the loudest point.
// Saved layout: as every LSoundProcessCurve, chunks 0x2001 and 0x2002, then the points.
#include "effects/sound_process_base.h"
#include "effects/sound_process_curve.h"

inline constexpr int kLSPDRCCurveAttack = 0;
inline constexpr int kLSPDRCCurveRelease = 1;

class LSPDRCPointLine final : public LSoundProcessCurve {
public:
  LSPDRCPointLine();
  LSPDRCPointLine(const LSPDRCPointLine&) = default;
  [[nodiscard]] LSoundSource OpenSource(LSoundSource& input) override;
  [[nodiscard]] LSoundProcess* GetNewCopy() const override { return new LSPDRCPointLine(*this); }

  // The gain in dB the curve gives a level in dB.
  double CurveGainDb(double levelDb) const;
};

// One gain for all channels, from the loudest. The detector follows the peaks at
// once and falls with the release, so a sine's cycle holds it steady; the gain
// then moves toward the curve's with the attack.
class LSRCDRCPointLine final : public LSoundProcessBase {
public:
  LSRCDRCPointLine(const LSoundSource& input, const LSPDRCPointLine& settings);

  void Read(float* buffer, long long frames) override;
  // Clears the detector and settles it again over a pre-roll.
  void Seek(long long frame) override;

private:
  // The curve's gain sampled every tenth of a dB from the floor up; levels are
  // looked up, not interpolated through the points per sample.
  std::vector<float> table_;
  double floorDb_;
  double attack_, release_;
  double level_ = 0, gainDb_ = 0;
};
