#pragma once
// LSPParametricEqBand (type 10, "Parametrischer EQ"): one band of a parametric
// equaliser, run by LSRCFilter; more bands are more effects in a chain.
//
// Settings: "Frequenz" (Hz), "Verstärkung" (dB), "Güte" (Q) and "Typ" (whole):
// 0 Glocke, 1 Kuhschwanz (tief), 2 Kuhschwanz (hoch), 3 Kerbe. A notch removes
// its frequency whatever the gain.
// Saved layout: as every LSoundProcessValues, chunks 0x2001 to 0x2004 in that order.
#include "effects/sound_process_values.h"

inline constexpr int kLSPBandHz = 0;
inline constexpr int kLSPBandGain = 1;
inline constexpr int kLSPBandQ = 2;
inline constexpr int kLSPBandShape = 3;

// Shapes of a band. Saved as the value of "Typ": never change.
inline constexpr int kLSPBandBell = 0;
inline constexpr int kLSPBandLowShelf = 1;
inline constexpr int kLSPBandHighShelf = 2;
inline constexpr int kLSPBandNotch = 3;


class LSPParametricEqBand final : public LSoundProcessValues {
public:
  LSPParametricEqBand();
  LSPParametricEqBand(const LSPParametricEqBand&) = default;
  [[nodiscard]] LSoundSource OpenSource(LSoundSource& input) override;
  [[nodiscard]] LSoundProcess* GetNewCopy() const override { return new LSPParametricEqBand(*this); }
};
