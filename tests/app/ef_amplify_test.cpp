// Amplify: a change of level made by the segments' gains alone (the samples
// themselves are checked with the other channel effects).
#include <gtest/gtest.h>

#include "app/ef_amplify.h"
#include "edit_fixture.h"

namespace {

using EfAmplifyTest = EditTest;

TEST_F(EfAmplifyTest, TwiceMultipliesTheGainsAndZeroDecibelsChangesNoSegment) {
  LCutListAudio list = PiecewiseStaircase(9000, 2, 3);
  const int files = CacheAudioFiles();
  SVSelection selection{1000, 7000, 0, 0, 0};
  const float factor = SVEfAmplify(list, selection, -6.0).Factor();
  Apply<SVEfAmplify>(list, selection, "Verstärken", -6.0);
  Apply<SVEfAmplify>(list, selection, nullptr, -6.0);
  EXPECT_EQ(CacheAudioFiles(), files);
  for (const SegmentShape& segment : ShapeOf(list))
    EXPECT_TRUE(std::get<2>(segment) == 1.0f || std::get<2>(segment) == factor * factor);

  const auto shape = ShapeOf(list);
  Apply<SVEfAmplify>(list, selection, nullptr, 0.0);
  EXPECT_EQ(ShapeOf(list), shape);
}

}  // namespace
