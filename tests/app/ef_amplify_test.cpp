// Amplify: a change of level made by the segments' gains alone.
#include <gtest/gtest.h>

#include <cmath>

#include "app/ef_amplify.h"
#include "edit_fixture.h"

namespace {

using EfAmplifyTest = EditTest;

TEST_F(EfAmplifyTest, TheSelectionIsScaledByItsSegmentGainsWithoutNewAudio) {
  LCutListAudio list = PiecewiseStaircase(9000, 2, 3);
  const std::vector<float> before = DocReadAll(list);
  const int files = CacheAudioFiles();
  SVSelection selection{1000, 7000, 0, 0, 0};
  SVEfAmplify amplify(list, selection, -6.0);
  EXPECT_STREQ(amplify.GetEffectName(), "Verstärken");
  const float factor = amplify.Factor();
  EXPECT_NEAR(factor, std::pow(10.0, -6.0 / 20.0), 1e-7);
  LProcessInterfaceQuiet process;
  ASSERT_EQ(amplify.ProcessAndInsertCutList(process), 0);
  EXPECT_EQ(CacheAudioFiles(), files);
  EXPECT_EQ(selection.end, 7000);

  const std::vector<float> after = DocReadAll(list);
  ASSERT_EQ(after.size(), before.size());
  for (std::size_t i = 0; i < after.size(); ++i) {
    const long long frame = static_cast<long long>(i / 2);
    const float expected = frame >= 1000 && frame < 7000 ? before[i] * factor : before[i];
    ASSERT_EQ(after[i], expected) << "frame " << frame;
  }
  // Twice is the product of both, still without audio.
  SVEfAmplify again(list, selection, -6.0);
  ASSERT_EQ(again.ProcessAndInsertCutList(process), 0);
  EXPECT_EQ(CacheAudioFiles(), files);
  for (const auto& [item, length, gain, offset] : ShapeOf(list)) {
    (void)item;
    (void)length;
    (void)offset;
    EXPECT_TRUE(gain == 1.0f || gain == factor * factor);
  }
}

TEST_F(EfAmplifyTest, ZeroDecibelsChangesNoSegment) {
  LCutListAudio list = PiecewiseStaircase(3000, 1, 2);
  const auto shape = ShapeOf(list);
  SVSelection selection{0, 3000, 0, 0, 0};
  SVEfAmplify amplify(list, selection, 0.0);
  LProcessInterfaceQuiet process;
  ASSERT_EQ(amplify.ProcessAndInsertCutList(process), 0);
  EXPECT_EQ(ShapeOf(list), shape);
}

}  // namespace
