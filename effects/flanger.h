#pragma once
// LSPFlanger (type 7, "Flanger"): the sound mixed with a copy delayed by a few
// milliseconds that sweep slowly, fed back into itself; LSRCFlanger is its
// processing source.
//
// Settings: "Verzögerung" (ms, the shortest delay of the sweep), "Tiefe" (ms the
// sweep adds at its top), "Rate" (Hz), "Rückkopplung" (% of the delayed sound fed
// back; negative inverts it) and "Mischung" (% of the delayed sound in the output;
// 50 % gives the deepest notches).
// Saved layout: as every LSoundProcessValues, chunks 0x2001 to 0x2005 in that order.
#include <vector>

#include "effects/modulated_delay.h"
#include "effects/sound_process_latent.h"
#include "effects/sound_process_values.h"

inline constexpr int kLSPFlangerDelay = 0;
inline constexpr int kLSPFlangerDepth = 1;
inline constexpr int kLSPFlangerRate = 2;
inline constexpr int kLSPFlangerFeedback = 3;
inline constexpr int kLSPFlangerMix = 4;

class LSPFlanger final : public LSoundProcessValues {
public:
  LSPFlanger();
  LSPFlanger(const LSPFlanger&) = default;
  [[nodiscard]] LSoundSource OpenSource(LSoundSource& input) override;
  [[nodiscard]] LSoundProcess* GetNewCopy() const override { return new LSPFlanger(*this); }
};

struct LFlangerSettings {
  double delayMs, depthMs, hz, feedback, mix;  // feedback -1 ... 1, mix 0 ... 1
};

// The second channel's sweep runs a quarter turn on.
class LSRCFlanger final : public LSoundProcessLatent {
public:
  LSRCFlanger(const LSoundSource& input, const LFlangerSettings& settings);

protected:
  void Process(float* buffer, long long frames, long long first) override;
  void Reset() override;
  // Long enough for the fed-back ringing to die away by 80 dB.
  long long Preroll() const override;

private:
  LFlangerSettings s_;
  double delay_, depth_;  // in frames
  std::vector<LModulatedDelay> lines_;
  std::vector<LLfo> lfos_;  // the first channel's, the second's
};
