#pragma once
// LSPGain (type 1, "Verstärkung"): a constant gain in decibels ("Pegel", -60 ... +30
// dB), and LSRCGain, its processing source. The output is not clamped.
//
// Saved layout: as every LSoundProcessValues, the gain in chunk 0x2001. A gain that
// is not a number (damaged data) is not applied by a chain.
#include "effects/sound_process_base.h"
#include "effects/sound_process_values.h"

// Chunk id of the gain. On disk: never change.
inline constexpr unsigned short kLSPGainChunkDb = 0x2001;

// Bounds of the gain parameter in dB; sources clamp to them.
inline constexpr double kLSPGainMinDb = -60.0;
inline constexpr double kLSPGainMaxDb = 30.0;

class LSPGain final : public LSoundProcessValues {
public:
  LSPGain();
  explicit LSPGain(double gainDb);
  LSPGain(const LSPGain&) = default;

  double GetGainDb() const { return Value(0); }
  void SetGainDb(double gainDb) { SetValue(0, gainDb); }

  [[nodiscard]] LSoundSource OpenSource(LSoundSource& input) override;
  [[nodiscard]] LSoundProcess* GetNewCopy() const override { return new LSPGain(*this); }
};

// Multiplies every sample by one factor.
class LSRCGain final : public LSoundProcessBase {
public:
  LSRCGain(const LSoundSource& input, double gainDb);

  void Read(float* buffer, long long frames) override;
  float GetFactor() const { return factor_; }

private:
  float factor_;
};
