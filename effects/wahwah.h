#pragma once
// LSPWahwah (type 22, "Wah-Wah"): a resonant band-pass that a slow sine sweeps up
// and down between two frequencies, like a wah pedal rocked in time;
// LSRCWahwah is its processing source.
//
// Settings: "Rate" (Hz of the sweep), "Tiefe" (% of the range it covers, about
// the range's middle on a log scale), "Resonanz" (Q of the band), "Untere
// Frequenz" and "Obere Frequenz" (Hz, the range), "Mischung" (% of the filtered
// sound). The band peaks at 0 dB wherever it stands.
// Saved layout: as every LSoundProcessValues, chunks 0x2001 to 0x2006 in that order.
#include <vector>

#include "effects/sound_process_base.h"
#include "effects/sound_process_values.h"

inline constexpr int kLSPWahRate = 0;
inline constexpr int kLSPWahDepth = 1;
inline constexpr int kLSPWahResonance = 2;
inline constexpr int kLSPWahLowHz = 3;
inline constexpr int kLSPWahHighHz = 4;
inline constexpr int kLSPWahMix = 5;

class LSPWahwah final : public LSoundProcessValues {
public:
  LSPWahwah();
  LSPWahwah(const LSPWahwah&) = default;
  [[nodiscard]] LSoundSource OpenSource(LSoundSource& input) override;
  [[nodiscard]] LSoundProcess* GetNewCopy() const override { return new LSPWahwah(*this); }
};

// A state-variable filter per channel, retuned every few frames from the frame
// position; Seek clears it and settles it over a pre-roll.
class LSRCWahwah final : public LSoundProcessBase {
public:
  LSRCWahwah(const LSoundSource& input, double rateHz, double depthPercent, double q, double lowHz, double highHz,
             double mixPercent);

  void Read(float* buffer, long long frames) override;
  void Seek(long long frame) override;

private:
  struct Tuning {
    double a1, a2, a3;
  };
  Tuning TuningAt(long long frame) const;

  double rateHz_, depth_, k_, lowHz_, highHz_, mix_;
  long long position_ = 0;
  std::vector<double> state_;  // two integrators per channel
};
