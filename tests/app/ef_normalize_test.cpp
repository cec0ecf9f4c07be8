// Normalise: a measuring pass, then one gain that takes the peak to the target.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "app/ef_normalize.h"
#include "edit_fixture.h"
#include "engine/sound_cache.h"

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
    SVSelection selection{1000, 3000, 0, 0, 0};
    SVEfNormalize normalize(list, selection, targetDb);
    EXPECT_STREQ(normalize.GetEffectName(), "Normalisieren");
    LProcessInterfaceQuiet process;
    ASSERT_EQ(normalize.ProcessAndInsertCutList(process), 0);
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

TEST_F(EfNormalizeTest, SilenceStaysSilentAndACancelledMeasurementChangesNothing) {
  LCutListAudio silent = DocListOf(std::vector<float>(4000, 0.0f), 1);
  SVSelection selection{0, 4000, 0, 0, 0};
  SVEfNormalize normalize(silent, selection);
  LProcessInterfaceQuiet process;
  ASSERT_EQ(normalize.ProcessAndInsertCutList(process), 0);
  EXPECT_EQ(DocReadAll(silent), std::vector<float>(4000, 0.0f));

  LCutListAudio list = StaircaseList(20000, 1);
  const auto shape = ShapeOf(list);
  const int counted = LSoundCache::Instance().CountedItemCount();
  SVSelection all{0, 20000, 0, 0, 0};
  SVEfNormalize stopped(list, all);
  LProcessInterfaceQuiet cancelling;
  cancelling.CancelAfterChecks(2);  // inside the measuring pass
  EXPECT_EQ(stopped.ProcessAndInsertCutList(cancelling), 1);
  EXPECT_EQ(ShapeOf(list), shape);
  EXPECT_EQ(LSoundCache::Instance().CountedItemCount(), counted);
}

}  // namespace
