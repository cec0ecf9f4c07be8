#pragma once
// LSPAMRadio (type 28, "AM Radio"): a medium-wave broadcast, and LSRCAMRadio, its
// processing source.
//
// Settings: "Untere Grenze" and "Obere Grenze" (Hz, where the receiver's band
// ends, 24 dB per octave beyond), "Rauschen" (dB RMS of the hiss added before
// the band), "Schwund" (% the signal fades by at the deepest) and "Schwundrate"
// (Hz of the slower of two swells that make the fading).
// Saved layout: as every LSoundProcessValues, chunks 0x2001 to 0x2005 in that order.
#include "effects/biquad.h"
#include "effects/sound_process_base.h"
#include "effects/sound_process_values.h"

inline constexpr int kLSPAMRadioLowHz = 0;
inline constexpr int kLSPAMRadioHighHz = 1;
inline constexpr int kLSPAMRadioNoiseDb = 2;
inline constexpr int kLSPAMRadioFade = 3;
inline constexpr int kLSPAMRadioFadeHz = 4;

class LSPAMRadio final : public LSoundProcessValues {
public:
  LSPAMRadio();
  LSPAMRadio(const LSPAMRadio&) = default;
  [[nodiscard]] LSoundSource OpenSource(LSoundSource& input) override;
  [[nodiscard]] LSoundProcess* GetNewCopy() const override { return new LSPAMRadio(*this); }
};

// The fading and the hiss follow the frame position; Seek settles the band over a pre-roll.
class LSRCAMRadio final : public LSoundProcessBase {
public:
  LSRCAMRadio(const LSoundSource& input, double lowHz, double highHz, double noiseDb, double fadePercent,
              double fadeHz);

  void Read(float* buffer, long long frames) override;
  void Seek(long long frame) override;

private:
  float noise_;  // peak of the uniform hiss
  double fade_, fadeHz_;
  long long position_ = 0;
  LBiquadCascade band_;
};
