#pragma once
// LSPTelephone (type 29, "Telefon"): the sound of a telephone line, and
// LSRCTelephone, its processing source.
//
// Settings: "Untere Grenze" and "Obere Grenze" (Hz, the edges of the band the
// line carries, steep Chebyshev slopes beyond them) and "Bits" (whole: the
// resolution of the mu-law codec the sound goes through first, its colour).
// Saved layout: as every LSoundProcessValues, chunks 0x2001 to 0x2003 in that order.
#include <vector>

#include "effects/biquad.h"
#include "effects/sound_process_base.h"
#include "effects/sound_process_values.h"

inline constexpr int kLSPTelephoneLowHz = 0;
inline constexpr int kLSPTelephoneHighHz = 1;
inline constexpr int kLSPTelephoneBits = 2;

class LSPTelephone final : public LSoundProcessValues {
public:
  LSPTelephone();
  LSPTelephone(const LSPTelephone&) = default;
  [[nodiscard]] LSoundSource OpenSource(LSoundSource& input) override;
  [[nodiscard]] LSoundProcess* GetNewCopy() const override { return new LSPTelephone(*this); }
};

// Companded quantisation, then the band. Seek settles the filters over a pre-roll.
class LSRCTelephone final : public LSoundProcessBase {
public:
  LSRCTelephone(const LSoundSource& input, double lowHz, double highHz, int bits);

  void Read(float* buffer, long long frames) override;
  void Seek(long long frame) override;

private:
  float levels_;  // quantisation steps per unit of the companded value
  std::vector<float> expand_;  // the level of each step
  LBiquadCascade band_;
};
