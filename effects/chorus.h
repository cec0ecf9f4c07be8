#pragma once
// LSPChorus (type 4, "Chor"): copies of the sound, each delayed by a slowly
// swinging time, mixed into it; LSRCChorus is its processing source.
//
// Settings: "Stimmen" (whole, the number of copies), "Verzögerung" (ms, the
// middle of the swing), "Tiefe" (ms the delay swings either way; at most the
// delay less 1 ms), "Rate" (Hz) and "Mischung" (% of the copies in the output).
// Saved layout: as every LSoundProcessValues, chunks 0x2001 to 0x2005 in that order.
#include <vector>

#include "effects/modulated_delay.h"
#include "effects/sound_process_latent.h"
#include "effects/sound_process_values.h"

inline constexpr int kLSPChorusVoices = 0;
inline constexpr int kLSPChorusDelay = 1;
inline constexpr int kLSPChorusDepth = 2;
inline constexpr int kLSPChorusRate = 3;
inline constexpr int kLSPChorusMix = 4;

class LSPChorus final : public LSoundProcessValues {
public:
  LSPChorus();
  LSPChorus(const LSPChorus&) = default;
  [[nodiscard]] LSoundSource OpenSource(LSoundSource& input) override;
  [[nodiscard]] LSoundProcess* GetNewCopy() const override { return new LSPChorus(*this); }
};

struct LChorusSettings {
  int voices;
  double delayMs, depthMs, hz, mix;  // mix 0 ... 1
};

// The voices' oscillators are spread evenly over a turn and run at slightly
// different rates, so they never beat together; the second channel's run a
// quarter turn on, which widens a stereo sound.
class LSRCChorus final : public LSoundProcessLatent {
public:
  LSRCChorus(const LSoundSource& input, const LChorusSettings& settings);

protected:
  void Process(float* buffer, long long frames, long long first) override;
  void Reset() override;
  long long Preroll() const override;

private:
  LChorusSettings s_;
  double delay_, depth_;  // in frames
  // Frames run through at a time.
  static constexpr int kBlock = 512;
  int history_;  // frames the voices reach back before a run
  // Per channel the last `history_` frames, then the run: the voices read the
  // delayed sound straight from it, with no wrapping of a ring.
  std::vector<std::vector<float>> lines_;
  std::vector<LLfo> lfos_;  // voice by voice, the first channel's then the second's
  std::vector<double> delays_;  // per oscillator a run of delays in frames
  // Per step of a run: the voices' sum, where a voice reads and what it reads there.
  std::vector<float> sum_, fraction_, xm_, x0_, x1_, x2_;
  std::vector<int> spot_;
};
