// Channel invert: the chosen channels' polarity turned, exactly.
#include <gtest/gtest.h>

#include "app/ef_channel_invert.h"
#include "edit_fixture.h"

namespace {

using EfChannelInvertTest = EditTest;

TEST_F(EfChannelInvertTest, TheChosenChannelsAreNegatedExactly) {
  for (std::uint32_t mask : {kLChannelMaskAll, 2u}) {
    LCutListAudio list = StaircaseList(10000, 2);
    SVSelection selection{1000, 9000, 0, 0, 0};
    SVEfChannelInvert invert(list, selection, mask);
    EXPECT_STREQ(invert.GetEffectName(), "Kanal invertieren");
    LProcessInterfaceQuiet process;
    ASSERT_EQ(invert.ProcessAndInsertCutList(process), 0);
    const std::vector<float> after = DocReadAll(list);
    for (long long f = 0; f < 10000; ++f) {
      for (int c = 0; c < 2; ++c) {
        const bool turned = f >= 1000 && f < 9000 && (mask >> c & 1u) != 0;
        const float value = DocStaircaseValue(f, c);
        ASSERT_EQ(after[static_cast<std::size_t>(f * 2 + c)], turned ? -value : value) << f << " " << c;
      }
    }
  }
}

}  // namespace
