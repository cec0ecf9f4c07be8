// Normalise: a measuring pass, then one gain that takes the peak to the target
// (cancelling either pass is driven with the other source effects).
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "app/ef_normalize.h"
#include "edit_fixture.h"

namespace {

using EfNormalizeTest = EditTest;

float Peak(const std::vector<float>& samples) {
  float peak = 0.0f;
  for (float s : samples) peak = std::max(peak, std::fabs(s));
  return peak;
}

TEST_F(EfNormalizeTest, TheSelectionReachesTheTargetPeakWithItsBalanceKept) {
  for (double targetDb : {0.0, -6.0, 12.0}) {
    LCutListAudio list = StaircaseList(5000, 2);
    const std::vector<float> before = DocReadAll(list);
    Apply<SVEfNormalize>(list, {1000, 3000, 0, 0, 0}, "Normalisieren", targetDb);
    const std::vector<float> after = DocReadAll(list);
    const float target = static_cast<float>(std::pow(10.0, targetDb / 20.0));
    EXPECT_NEAR(Peak(Frames(after, 2, 1000, 3000)), target, target * 1e-6);
    // One gain for both channels: the ratio of the channels stays.
    const float gain = after[2 * 1500] / before[2 * 1500];
    EXPECT_NEAR(after[2 * 1500 + 1] / before[2 * 1500 + 1], gain, gain * 1e-6);
    EXPECT_EQ(Frames(after, 2, 0, 1000), Frames(before, 2, 0, 1000));
    EXPECT_EQ(Frames(after, 2, 3000, 5000), Frames(before, 2, 3000, 5000));
  }
}

TEST_F(EfNormalizeTest, SilenceStaysSilent) {
  LCutListAudio silent = DocListOf(std::vector<float>(4000, 0.0f), 1);
  Apply<SVEfNormalize>(silent, {0, 4000, 0, 0, 0}, nullptr);
  EXPECT_EQ(DocReadAll(silent), std::vector<float>(4000, 0.0f));
}

}  // namespace
