#pragma once
// LSPTremolo (type 19, "Tremolo"): the level swung by a slow oscillator;
// LSRCTremolo is its processing source.
//
// Settings: "Rate" (Hz), "Tiefe" (% the level dips at the oscillator's low
// point), "Wellenform" (whole: 0 sine, 1 triangle, 2 square with softened
// edges) and "Stereophase" (degrees the second channel's oscillator runs ahead).
// Saved layout: as every LSoundProcessValues, chunks 0x2001 to 0x2004 in that order.
#include "effects/sound_process_latent.h"
#include "effects/sound_process_values.h"

inline constexpr int kLSPTremoloRate = 0;
inline constexpr int kLSPTremoloDepth = 1;
inline constexpr int kLSPTremoloWave = 2;
inline constexpr int kLSPTremoloStereoPhase = 3;

// Wave forms. Saved as the value of "Wellenform": never change.
inline constexpr int kLSPWaveSine = 0;
inline constexpr int kLSPWaveTriangle = 1;
inline constexpr int kLSPWaveSquare = 2;

class LSPTremolo final : public LSoundProcessValues {
public:
  LSPTremolo();
  LSPTremolo(const LSPTremolo&) = default;
  [[nodiscard]] LSoundSource OpenSource(LSoundSource& input) override;
  [[nodiscard]] LSoundProcess* GetNewCopy() const override { return new LSPTremolo(*this); }
};

// The gain of a frame depends on its position alone, so the source holds no state.
class LSRCTremolo final : public LSoundProcessLatent {
public:
  LSRCTremolo(const LSoundSource& input, double hz, double depth, int wave, double stereoTurns);

protected:
  void Process(float* buffer, long long frames, long long first) override;
  void Reset() override {}
  long long Preroll() const override { return 0; }

private:
  double hz_, depth_, stereoTurns_;
  int wave_;
};
