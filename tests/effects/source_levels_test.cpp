#include "effects/source_levels.h"

#include <gtest/gtest.h>

#include "effect_test_sources.h"

TEST(SourceLevels, MeasuresEachChannelsPeakAndMeanRewindsAndStopsWhenCancelled) {
  // 20000 frames: more than two blocks. Channel 0 rises 0 ... 19999, channel 1 falls.
  LSoundSource source = MakeBufferSource(Staircase(20000, 2), 8000, 2);
  source.Seek(777);
  LSourceLevels levels;
  LProcessInterfaceQuiet process;
  ASSERT_EQ(LSourceLevelsMeasure(process, source, levels), kLProcessSuccess);
  EXPECT_EQ(levels.frames, 20000);
  EXPECT_EQ(levels.peak[0], 19999.0f);
  EXPECT_EQ(levels.peak[1], 19999.0f);
  EXPECT_DOUBLE_EQ(levels.mean[0], 9999.5);
  EXPECT_DOUBLE_EQ(levels.mean[1], -9999.5);
  EXPECT_EQ(levels.PeakAll(), 19999.0f);
  EXPECT_EQ(source.GetPositionSample(), 0);
  EXPECT_EQ(process.Progress(), 1.0);

  LSourceLevels cut;
  LProcessInterfaceQuiet cancelling;
  cancelling.CancelAfterChecks(1);
  source.Seek(777);
  EXPECT_EQ(LSourceLevelsMeasure(cancelling, source, cut), kLProcessCancelled);
  EXPECT_EQ(cut.frames, 8192);
  EXPECT_EQ(source.GetPositionSample(), 0);
}
