// DC offset correction: every channel's mean taken away.
#include <gtest/gtest.h>

#include <cmath>

#include "app/dc_offset_correction.h"
#include "edit_fixture.h"

namespace {

using DCOffsetCorrectionTest = EditTest;

TEST_F(DCOffsetCorrectionTest, EachChannelIsCentredOnZero) {
  constexpr std::uint32_t kRate = 8000;
  constexpr long long kFrames = 2 * kRate;
  const std::vector<float> tone = Tones({{250, 0.4}}, kFrames, kRate);
  std::vector<float> samples;
  for (float t : tone) {
    samples.push_back(t + 0.25f);
    samples.push_back(-t - 0.125f);
  }
  LCutListAudio list = DocListOf(samples, 2, kRate);
  const LCutListAudio kept = list;  // holds the item, as an undo snapshot would
  const SVSelection selection{0, kFrames, 0, 0, 0};
  Apply<SVDCOffsetCorrection>(list, selection, "Korrektur des Gleichspannungsversatzes");
  EXPECT_EQ(CacheAudioFiles(), 2);
  const std::vector<float> after = DocReadAll(list);
  ASSERT_EQ(after.size(), samples.size());
  for (std::size_t i = 0; i < after.size(); i += 2) {
    ASSERT_NEAR(after[i], tone[i / 2], 1e-6);
    ASSERT_NEAR(after[i + 1], -tone[i / 2], 1e-6);
  }

  // Centred audio is left as it is.
  const auto shape = ShapeOf(list);
  Apply<SVDCOffsetCorrection>(list, selection, nullptr);
  EXPECT_EQ(ShapeOf(list), shape);
  EXPECT_EQ(CacheAudioFiles(), 2);
}

}  // namespace
