#pragma once
// LSPGraphicEqBand (type 11, "Grafischer EQ"): a graphic equaliser of 10, 20 or
// 31 bands at the ISO centre frequencies (octaves, half octaves, third octaves),
// each -24 ... +24 dB, run by LSRCFilter as one bell per band that is not flat.
//
// Settings: "Bänder" (whole; 10, 20 or 31, any other count taken as the nearest
// of them), then one gain per band. The parameters are "Bänder" and the gains of
// the bands in use, labelled by their centre ("1000 Hz"); all 31 gains are kept
// and saved, so switching the count and back loses nothing.
// Saved layout: as every LSoundProcessValues, chunks 0x2001 (count) to 0x2020.
#include <span>

#include "effects/sound_process_values.h"

inline constexpr int kLSPGraphicBands = 0;
inline constexpr int kLSPGraphicFirstGain = 1;
inline constexpr int kLSPGraphicMaxBands = 31;

class LSPGraphicEqBand final : public LSoundProcessValues {
public:
  LSPGraphicEqBand();
  LSPGraphicEqBand(const LSPGraphicEqBand&) = default;
  [[nodiscard]] LSoundSource OpenSource(LSoundSource& input) override;
  [[nodiscard]] LSoundProcess* GetNewCopy() const override { return new LSPGraphicEqBand(*this); }

  int GetNumParameters() const override;
  void SetParameterByIndex(int index, void* value) override;
  void GetParameterByIndex(int index, LSoundProcessParameter* out) const override;

  // 10, 20 or 31.
  int BandCount() const;
  // Centre frequencies of the bands in use.
  std::span<const double> Centres() const;
};
