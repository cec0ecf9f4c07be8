#include "effects/mix_simple.h"

#include <gtest/gtest.h>

#include "effect_test_sources.h"

TEST(MixSimple, TheSumOfTwoSourcesHasTheFirstOnesLengthAndFormat) {
  const long long frames = 20000;  // more than one scratch buffer per read
  std::vector<float> a = Staircase(frames, 2), b = Staircase(frames / 2, 2, -2.0f);
  LSoundSource first = MakeBufferSource(a, 8000, 2);
  LSoundSource second = MakeBufferSource(b, 8000, 2);
  LSPMixSimple mix(second);
  LSoundSource s = mix.OpenSource(first);
  EXPECT_EQ(s.GetEndSample(), frames);
  std::vector<float> whole = ReadAll(s, frames, frames);
  for (long long i = 0; i < frames * 2; ++i) {
    float expected = a[i] + (i < frames ? b[i] : 0.0f);
    ASSERT_EQ(whole[i], expected) << i;
  }
  s.Seek(0);
  EXPECT_EQ(ReadAll(s, frames, 234), whole);
  s.Seek(frames / 2 - 3);
  std::vector<float> tail = ReadAll(s, 6, 6);
  for (long long i = 0; i < 12; ++i) EXPECT_EQ(tail[i], whole[(frames / 2 - 3) * 2 + i]);
}

TEST(MixSimple, OtherChannelCountsAreLaidOver) {
  LSoundSource stereo = MakeBufferSource({1, 2, 3, 4}, 8000, 2);
  LSoundSource mono = MakeBufferSource({10, 20}, 8000, 1);
  LSPMixSimple monoOver(mono);
  LSoundSource s = monoOver.OpenSource(stereo);
  EXPECT_EQ(ReadAll(s, 2, 1), (std::vector<float>{11, 12, 23, 24}));

  LSoundSource mono2 = MakeBufferSource({10, 20}, 8000, 1);
  LSoundSource stereo2 = MakeBufferSource({1, 3, 5, 7}, 8000, 2);
  LSPMixSimple stereoOver(stereo2);
  LSoundSource t = stereoOver.OpenSource(mono2);
  EXPECT_EQ(ReadAll(t, 2, 2), (std::vector<float>{12, 26}));
}
