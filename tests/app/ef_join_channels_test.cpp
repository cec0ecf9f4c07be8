// Join channels: every channel the average of all, the channel count kept.
#include <gtest/gtest.h>

#include "app/ef_join_channels.h"
#include "edit_fixture.h"

namespace {

using EfJoinChannelsTest = EditTest;

TEST_F(EfJoinChannelsTest, EveryChannelBecomesTheAverageOfBoth) {
  LCutListAudio list = PiecewiseStaircase(12000, 2, 3);
  SVSelection selection{2500, 11000, 0, 0, 0};
  SVEfJoinChannels join(list, selection);
  EXPECT_STREQ(join.GetEffectName(), "Kanäle zusammenführen");
  LProcessInterfaceQuiet process;
  ASSERT_EQ(join.ProcessAndInsertCutList(process), 0);
  EXPECT_EQ(list.GetChannels(), 2);
  const std::vector<float> after = DocReadAll(list);
  for (long long f = 0; f < 12000; ++f) {
    const bool inside = f >= 2500 && f < 11000;
    for (int c = 0; c < 2; ++c) {
      // f + 0.125 is exact in float.
      const float expected = inside ? static_cast<float>(f) + 0.125f : DocStaircaseValue(f, c);
      ASSERT_EQ(after[static_cast<std::size_t>(f * 2 + c)], expected) << f << " " << c;
    }
  }
}

}  // namespace
