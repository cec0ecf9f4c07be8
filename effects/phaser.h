#pragma once
// LSPPhaser (type 27, "Phaser"): first-order all-pass stages swept by a slow sine
// and mixed back with the dry sound, so notches wander through the spectrum;
// LSRCPhaser is its processing source.
//
// Settings: "Stufen" (whole, all-pass stages), "Rate" (Hz of the sweep), "Tiefe"
// (%: 100 % sweeps two octaves either side of "Frequenz"), "Rückkopplung" (% of
// the stages' output fed back into them), "Frequenz" (Hz, the stages' centre)
// and "Mischung" (% of the swept sound; 50 % makes the deepest notches).
// Saved layout: as every LSoundProcessValues, chunks 0x2001 to 0x2006 in that order.
#include <vector>

#include "effects/sound_process_base.h"
#include "effects/sound_process_values.h"

inline constexpr int kLSPPhaserStages = 0;
inline constexpr int kLSPPhaserRate = 1;
inline constexpr int kLSPPhaserDepth = 2;
inline constexpr int kLSPPhaserFeedback = 3;
inline constexpr int kLSPPhaserHz = 4;
inline constexpr int kLSPPhaserMix = 5;

class LSPPhaser final : public LSoundProcessValues {
public:
  LSPPhaser();
  LSPPhaser(const LSPPhaser&) = default;
  [[nodiscard]] LSoundSource OpenSource(LSoundSource& input) override;
  [[nodiscard]] LSoundProcess* GetNewCopy() const override { return new LSPPhaser(*this); }
};

// The sweep follows the frame position; Seek clears the stages and settles them over a pre-roll.
class LSRCPhaser final : public LSoundProcessBase {
public:
  LSRCPhaser(const LSoundSource& input, int stages, double rateHz, double depthPercent, double feedbackPercent,
             double centreHz, double mixPercent);

  void Read(float* buffer, long long frames) override;
  void Seek(long long frame) override;

private:
  double Coefficient(long long frame) const;

  int stages_;
  double rateHz_, octaves_, feedback_, centreHz_, mix_;
  long long position_ = 0;
  std::vector<double> state_;  // per channel: the last output, then x1 and y1 of every stage
};
