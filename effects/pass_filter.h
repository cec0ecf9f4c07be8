#pragma once
// LSPHighPass (type 6, "Hochpass") and LSPLowPass (type 15, "Tiefpass"): Butterworth
// filters of 6 to 48 dB per octave, run by LSRCFilter.
//
// Settings: "Frequenz" (Hz, -3 dB there), "Ordnung" (dB per octave, whole; taken
// to the nearest multiple of 6) and "Resonanz" (dB of boost at the cut-off,
// carried by the sharpest pole pair; a 6 dB filter has none).
// Saved layout: as every LSoundProcessValues, chunks 0x2001 to 0x2003 in that order.
#include "effects/sound_process_values.h"

inline constexpr int kLSPPassHz = 0;
inline constexpr int kLSPPassSlope = 1;
inline constexpr int kLSPPassResonance = 2;


class LSPHighPass final : public LSoundProcessValues {
public:
  LSPHighPass();
  LSPHighPass(const LSPHighPass&) = default;
  [[nodiscard]] LSoundSource OpenSource(LSoundSource& input) override;
  [[nodiscard]] LSoundProcess* GetNewCopy() const override { return new LSPHighPass(*this); }
};

class LSPLowPass final : public LSoundProcessValues {
public:
  LSPLowPass();
  LSPLowPass(const LSPLowPass&) = default;
  [[nodiscard]] LSoundSource OpenSource(LSoundSource& input) override;
  [[nodiscard]] LSoundProcess* GetNewCopy() const override { return new LSPLowPass(*this); }
};
