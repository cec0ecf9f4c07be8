#pragma once
// LSPEqSimple3Band (type 17, "3-Band-Equalizer"): "Tiefen", "Mitten" and "Höhen"
// in dB, run by LSRCFilter as a low shelf at 250 Hz, a broad bell at 1 kHz and a
// high shelf at 4 kHz.
// Saved layout: as every LSoundProcessValues, chunks 0x2001 to 0x2003 in that order.
#include "effects/sound_process_values.h"

inline constexpr int kLSP3BandLow = 0;
inline constexpr int kLSP3BandMid = 1;
inline constexpr int kLSP3BandHigh = 2;


inline constexpr double kLSP3BandLowHz = 250.0;
inline constexpr double kLSP3BandMidHz = 1000.0;
inline constexpr double kLSP3BandHighHz = 4000.0;

class LSPEqSimple3Band final : public LSoundProcessValues {
public:
  LSPEqSimple3Band();
  LSPEqSimple3Band(const LSPEqSimple3Band&) = default;
  [[nodiscard]] LSoundSource OpenSource(LSoundSource& input) override;
  [[nodiscard]] LSoundProcess* GetNewCopy() const override { return new LSPEqSimple3Band(*this); }
};
