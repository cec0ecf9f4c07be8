#include "engine/channel_map_source.h"

#include <gtest/gtest.h>

#include <vector>

#include "sound_cache_fixture.h"

TEST(ChannelMapSource, MonoIsCopiedToEveryChannelStereoToMonoIsTheAverageAndPickTakesOneChannel) {
  LSoundSource wide = LSRCChannelMap::Convert(MakeStaircase(10000, 1, 22050), 2);
  ASSERT_EQ(wide.GetChannels(), 2);
  EXPECT_EQ(wide.GetSampleRate(), 22050u);
  EXPECT_EQ(wide.GetEndSample(), 10000);
  std::vector<float> out = ReadBlocks(wide, 0, 10000, 234);
  for (long long f = 0; f < 10000; ++f) {
    ASSERT_EQ(out[f * 2], StaircaseValue(f, 0));
    ASSERT_EQ(out[f * 2 + 1], StaircaseValue(f, 0));
  }

  LSoundSource mono = LSRCChannelMap::Convert(MakeStaircase(9000, 2), 1);
  ASSERT_EQ(mono.GetChannels(), 1);
  out = ReadBlocks(mono, 0, 9000, 5000);
  for (long long f = 0; f < 9000; ++f) ASSERT_EQ(out[f], (StaircaseValue(f, 0) + StaircaseValue(f, 1)) * 0.5f) << f;

  LSoundSource pick = LSRCChannelMap::Pick(MakeStaircase(100, 3), 2);
  ASSERT_EQ(pick.GetChannels(), 1);
  out = ReadBlocks(pick, 40, 10, 10);
  EXPECT_EQ(pick.GetPositionSample(), 50);
  for (int i = 0; i < 10; ++i) EXPECT_EQ(out[i], StaircaseValue(40 + i, 2));
  // A channel beyond the last is clamped to the last.
  LSoundSource beyond = LSRCChannelMap::Pick(MakeStaircase(100, 2), 7);
  EXPECT_EQ(ReadBlocks(beyond, 0, 1, 1)[0], StaircaseValue(0, 1));
}

TEST(ChannelMapSource, GeneralMapsSwapMixAndSilenceChannels) {
  LSRCChannelMap::Map map(3);
  map[0] = {{1, 1.0f}};              // right to left
  map[1] = {{0, 1.0f}};              // left to right
  map[2] = {{0, 2.0f}, {1, -1.0f}};  // a mix; output 3 would be silent had it no terms
  map[2].push_back({9, 1.0f});       // a channel that does not exist adds nothing
  LSoundSource s = LSRCChannelMap::Make(MakeStaircase(50, 2), map);
  ASSERT_EQ(s.GetChannels(), 3);
  std::vector<float> out = ReadBlocks(s, 0, 50, 7);
  for (long long f = 0; f < 50; ++f) {
    EXPECT_EQ(out[f * 3], StaircaseValue(f, 1));
    EXPECT_EQ(out[f * 3 + 1], StaircaseValue(f, 0));
    EXPECT_EQ(out[f * 3 + 2], StaircaseValue(f, 0) * 2.0f + StaircaseValue(f, 1) * -1.0f);
  }

  LSoundSource widened = LSRCChannelMap::Convert(MakeStaircase(20, 2), 4);
  std::vector<float> w = ReadBlocks(widened, 0, 20, 20);
  EXPECT_EQ(w[4 * 5 + 1], StaircaseValue(5, 1));
  EXPECT_EQ(w[4 * 5 + 2], 0.0f);
  EXPECT_EQ(w[4 * 5 + 3], 0.0f);

  // The same count gives the input back; a failed input fails.
  LSoundSource in = MakeStaircase(10, 2);
  EXPECT_EQ(LSRCChannelMap::Convert(in, 2).Get(), in.Get());
  EXPECT_TRUE(LSRCChannelMap::Convert(LSoundSource::Error(kLSourceDamaged), 2).IsError());
  EXPECT_TRUE(LSRCChannelMap::Make(in, {}).IsError());
}
