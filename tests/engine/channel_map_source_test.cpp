#include "engine/channel_map_source.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

// Channel c of frame f holds f + c / 10 + 0.001: every misplaced value names itself.
class StairSource final : public LSoundSourceBase {
public:
  StairSource(int channels, long long frames)
      : LSoundSourceBase(22050, static_cast<std::uint8_t>(channels)), frames_(frames) {}
  static float Value(long long f, int c) { return static_cast<float>(f) + static_cast<float>(c) / 10.0f + 0.001f; }
  void Read(float* out, long long n) override {
    const int ch = GetChannels();
    for (long long i = 0; i < n; ++i, ++pos_) {
      for (int c = 0; c < ch; ++c) out[i * ch + c] = pos_ >= 0 && pos_ < frames_ ? Value(pos_, c) : 0.0f;
    }
  }
  long long GetPositionSample() const override { return pos_; }
  long long GetEndSample() const override { return frames_; }
  void Seek(long long frame) override { pos_ = frame; }

private:
  long long frames_;
  long long pos_ = 0;
};

std::vector<float> ReadInBlocks(LSoundSource& s, long long frames, long long block) {
  std::vector<float> out(static_cast<size_t>(frames * s.GetChannels()));
  for (long long at = 0; at < frames; at += block)
    s.Read(out.data() + at * s.GetChannels(), std::min(block, frames - at));
  return out;
}

}  // namespace

TEST(ChannelMapSource, MonoIsCopiedToEveryChannelExactly) {
  LSoundSource s = LSRCChannelMap::Convert(LMakeSource<StairSource>(1, 10000), 2);
  ASSERT_EQ(s.GetChannels(), 2);
  EXPECT_EQ(s.GetSampleRate(), 22050u);
  EXPECT_EQ(s.GetEndSample(), 10000);
  std::vector<float> out = ReadInBlocks(s, 10000, 234);
  for (long long f = 0; f < 10000; ++f) {
    ASSERT_EQ(out[f * 2], StairSource::Value(f, 0));
    ASSERT_EQ(out[f * 2 + 1], StairSource::Value(f, 0));
  }
}

TEST(ChannelMapSource, StereoToMonoIsTheAverageAndPickTakesOneChannel) {
  LSoundSource mono = LSRCChannelMap::Convert(LMakeSource<StairSource>(2, 9000), 1);
  ASSERT_EQ(mono.GetChannels(), 1);
  std::vector<float> out = ReadInBlocks(mono, 9000, 5000);
  for (long long f = 0; f < 9000; ++f) {
    ASSERT_EQ(out[f], (StairSource::Value(f, 0) + StairSource::Value(f, 1)) * 0.5f) << f;
  }

  LSoundSource pick = LSRCChannelMap::Pick(LMakeSource<StairSource>(3, 100), 2);
  ASSERT_EQ(pick.GetChannels(), 1);
  pick.Seek(40);
  std::vector<float> got(10);
  pick.Read(got.data(), 10);
  EXPECT_EQ(pick.GetPositionSample(), 50);
  for (int i = 0; i < 10; ++i) EXPECT_EQ(got[i], StairSource::Value(40 + i, 2));
  // A channel beyond the last is clamped to the last.
  LSoundSource beyond = LSRCChannelMap::Pick(LMakeSource<StairSource>(2, 100), 7);
  beyond.Read(got.data(), 1);
  EXPECT_EQ(got[0], StairSource::Value(0, 1));
}

TEST(ChannelMapSource, GeneralMapsSwapMixAndSilenceChannels) {
  LSRCChannelMap::Map map(3);
  map[0] = {{1, 1.0f}};              // right to left
  map[1] = {{0, 1.0f}};              // left to right
  map[2] = {{0, 2.0f}, {1, -1.0f}};  // a mix; output 3 would be silent had it no terms
  map[2].push_back({9, 1.0f});       // a channel that does not exist adds nothing
  LSoundSource s = LSRCChannelMap::Make(LMakeSource<StairSource>(2, 50), map);
  ASSERT_EQ(s.GetChannels(), 3);
  std::vector<float> out = ReadInBlocks(s, 50, 7);
  for (long long f = 0; f < 50; ++f) {
    EXPECT_EQ(out[f * 3], StairSource::Value(f, 1));
    EXPECT_EQ(out[f * 3 + 1], StairSource::Value(f, 0));
    EXPECT_EQ(out[f * 3 + 2], StairSource::Value(f, 0) * 2.0f + StairSource::Value(f, 1) * -1.0f);
  }

  LSoundSource widened = LSRCChannelMap::Convert(LMakeSource<StairSource>(2, 20), 4);
  std::vector<float> w = ReadInBlocks(widened, 20, 20);
  EXPECT_EQ(w[4 * 5 + 1], StairSource::Value(5, 1));
  EXPECT_EQ(w[4 * 5 + 2], 0.0f);
  EXPECT_EQ(w[4 * 5 + 3], 0.0f);
}

TEST(ChannelMapSource, SameCountGivesTheInputBackAndAFailedInputFails) {
  LSoundSource in = LMakeSource<StairSource>(2, 10);
  EXPECT_EQ(LSRCChannelMap::Convert(in, 2).Get(), in.Get());
  EXPECT_TRUE(LSRCChannelMap::Convert(LSoundSource::Error(kLSourceDamaged), 2).IsError());
  EXPECT_TRUE(LSRCChannelMap::Make(in, {}).IsError());
}
