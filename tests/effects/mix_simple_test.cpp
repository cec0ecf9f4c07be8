#include "effects/mix_simple.h"

#include <gtest/gtest.h>

#include "effect_test_sources.h"

TEST(MixSimple, TheSumHasTheFirstSourcesLengthAndFormatAndOtherChannelCountsAreLaidOver) {
  const long long frames = 20000;  // more than one scratch buffer per read
  std::vector<float> a = Staircase(frames, 2), b = Staircase(frames / 2, 2, -2.0f);
  LSPMixSimple mix(MakeBufferSource(b, 8000, 2));
  LSoundSource first = MakeBufferSource(a, 8000, 2);
  LSoundSource s = mix.OpenSource(first);
  EXPECT_EQ(s.GetEndSample(), frames);
  std::vector<float> whole = ReadAll(s, frames, frames);
  for (long long i = 0; i < frames * 2; ++i) ASSERT_EQ(whole[i], a[i] + (i < frames ? b[i] : 0.0f)) << i;
  s.Seek(0);
  EXPECT_EQ(ReadAll(s, frames, 234), whole);
  s.Seek(frames / 2 - 3);
  std::vector<float> tail = ReadAll(s, 6, 6);
  EXPECT_EQ(tail, std::vector<float>(whole.begin() + (frames / 2 - 3) * 2, whole.begin() + (frames / 2 + 3) * 2));

  LSPMixSimple monoOver(MakeBufferSource({10, 20}, 8000, 1));
  LSoundSource stereo = MakeBufferSource({1, 2, 3, 4}, 8000, 2);
  LSoundSource t = monoOver.OpenSource(stereo);
  EXPECT_EQ(ReadAll(t, 2, 1), (std::vector<float>{11, 12, 23, 24}));
  LSPMixSimple stereoOver(MakeBufferSource({1, 3, 5, 7}, 8000, 2));
  LSoundSource mono = MakeBufferSource({10, 20}, 8000, 1);
  LSoundSource u = stereoOver.OpenSource(mono);
  EXPECT_EQ(ReadAll(u, 2, 2), (std::vector<float>{12, 26}));
}
