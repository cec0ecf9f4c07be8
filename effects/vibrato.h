#pragma once
// LSPVibrato (type 20, "Vibrato"): the pitch swung by a slow oscillator;
// LSRCVibrato is its processing source.
//
// Settings: "Rate" (Hz) and "Tiefe" (cents the pitch rises at the swing's top;
// it falls by about as much at the bottom).
// Saved layout: as every LSoundProcessValues, chunks 0x2001 and 0x2002.
#include <vector>

#include "effects/modulated_delay.h"
#include "effects/sound_process_latent.h"
#include "effects/sound_process_values.h"

inline constexpr int kLSPVibratoRate = 0;
inline constexpr int kLSPVibratoDepth = 1;

class LSPVibrato final : public LSoundProcessValues {
public:
  LSPVibrato();
  LSPVibrato(const LSPVibrato&) = default;
  [[nodiscard]] LSoundSource OpenSource(LSoundSource& input) override;
  [[nodiscard]] LSoundProcess* GetNewCopy() const override { return new LSPVibrato(*this); }
};

// A delay line read at a delay that swings around its middle; the source reads
// that middle ahead, so the sound keeps its place on the timeline.
class LSRCVibrato final : public LSoundProcessLatent {
public:
  LSRCVibrato(const LSoundSource& input, double hz, double cents);

protected:
  void Process(float* buffer, long long frames, long long first) override;
  void Reset() override;

private:
  double swing_;  // frames the read position moves either way
  std::vector<LModulatedDelay> lines_;
  LLfo lfo_;
};
