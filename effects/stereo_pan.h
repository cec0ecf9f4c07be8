#pragma once
// LSRCStereoPan: moves a stereo image to one side by lowering the other side's
// level linearly: at pan p (-1 hard left ... +1 hard right) the left channel is
// scaled by 1 - p for p > 0 and the right one by 1 + p for p < 0; the side the
// image moves to keeps its level. Channels past the first two pass as they are,
// and so does a mono input.
#include "effects/sound_process_base.h"

inline constexpr double kLPanLeft = -1.0;
inline constexpr double kLPanRight = 1.0;

class LSRCStereoPan final : public LSoundProcessBase {
public:
  // pan is clamped to kLPanLeft ... kLPanRight.
  LSRCStereoPan(const LSoundSource& input, double pan);

  void Read(float* buffer, long long frames) override;
  float LeftFactor() const { return left_; }
  float RightFactor() const { return right_; }

private:
  float left_;
  float right_;
};
