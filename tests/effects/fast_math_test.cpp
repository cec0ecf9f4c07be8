#include "effects/fast_math.h"

#include <gtest/gtest.h>

#include <cmath>

TEST(FastMath, LogAndPowerMatchTheLibraryOverTheRangeOfLevelsAndGains) {
  // Levels from the detectors' floor up past full scale, a few per octave.
  for (double x = 1e-20; x < 1e4; x *= 1.37) EXPECT_NEAR(LFastLog2(x), std::log2(x), 1e-9) << x;
  // Near 1, where the mantissa turns over at sqrt(2).
  for (double x : {0.7071067811865475, 0.7071067811865476, 1.0, 1.4142135623730950, 1.4142135623730951})
    EXPECT_NEAR(LFastLog2(x), std::log2(x), 1e-10) << x;
  for (double y = -60.0; y < 60.0; y += 0.0371) EXPECT_NEAR(LFastExp2(y) / std::exp2(y), 1.0, 1e-9) << y;
  EXPECT_EQ(LFastExp2(0.0), 1.0);
}
