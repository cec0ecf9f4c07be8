// Channel swap: left and right exchanged exactly inside the selection.
#include <gtest/gtest.h>

#include "app/ef_channel_swap.h"
#include "edit_fixture.h"

namespace {

using EfChannelSwapTest = EditTest;

TEST_F(EfChannelSwapTest, LeftAndRightAreExchangedSampleForSample) {
  LCutListAudio list = PiecewiseStaircase(20000, 3, 2);
  SVSelection selection{5000, 15000, 0, 0, 0};
  SVEfChannelSwap swap(list, selection);
  EXPECT_STREQ(swap.GetEffectName(), "Kanalwechsel");
  LProcessInterfaceQuiet process;
  ASSERT_EQ(swap.ProcessAndInsertCutList(process), 0);
  const std::vector<float> after = DocReadAll(list);
  for (long long f = 0; f < 20000; ++f) {
    const bool inside = f >= 5000 && f < 15000;
    ASSERT_EQ(after[static_cast<std::size_t>(f * 3)], DocStaircaseValue(f, inside ? 1 : 0)) << f;
    ASSERT_EQ(after[static_cast<std::size_t>(f * 3 + 1)], DocStaircaseValue(f, inside ? 0 : 1)) << f;
    ASSERT_EQ(after[static_cast<std::size_t>(f * 3 + 2)], DocStaircaseValue(f, 2)) << f;
  }
}

TEST_F(EfChannelSwapTest, MonoAudioIsLeftAsItIs) {
  LCutListAudio list = StaircaseList(3000, 1);
  const std::vector<float> before = DocReadAll(list);
  SVSelection selection{0, 3000, 0, 0, 0};
  SVEfChannelSwap swap(list, selection);
  LProcessInterfaceQuiet process;
  ASSERT_EQ(swap.ProcessAndInsertCutList(process), 0);
  EXPECT_EQ(DocReadAll(list), before);
}

}  // namespace
