#include "formats/file_tag_data_audio.h"

#include <gtest/gtest.h>

#include <string>

TEST(FileTagDataAudio, SetReplacesInPlaceRemoveClosesTheGapAndIterationKeepsTheOrder) {
  LFileTagDataAudio tags;
  tags.Set("TITLE", "a");
  tags.Set("ARTIST", "b");
  tags.Set("ALBUM", "c");
  tags.Set("TITLE", "d");
  EXPECT_STREQ(tags.Get("TITLE"), "d");
  EXPECT_EQ(tags.Get("title"), nullptr);
  EXPECT_TRUE(tags.Remove("ARTIST"));
  EXPECT_FALSE(tags.Remove("ARTIST"));
  tags.Set("GENRE", "e");

  std::string order;
  for (const LFileTag& tag : tags) order += tag.key + "=" + tag.value + ";";
  EXPECT_EQ(order, "TITLE=d;ALBUM=c;GENRE=e;");
  EXPECT_STREQ(tags.Get("GENRE"), "e");
  EXPECT_STREQ(tags.Get("ALBUM"), "c");
}

TEST(FileTagDataAudio, MarkersInMillisecondsConvertToSamplesOfTheirRateWithoutOverflow) {
  LFileTagDataAudio tags;
  tags.MarkerAddMs(1500, 44100);
  tags.MarkerAddMs(0, 44100);
  EXPECT_STREQ(tags.Get(kLTagMarkerCount), "2");
  EXPECT_STREQ(tags.Get("marker_0_pos"), "1500");
  EXPECT_STREQ(tags.Get(kLTagMarkerPosType), "0");
  EXPECT_STREQ(tags.Get(kLTagMarkerSampleRate), "44100");
  EXPECT_EQ(tags.MarkerSamplesGet(), (LArray<std::uint64_t>{66150, 0}));

  // A marker in samples turns the others into samples first.
  tags.MarkerAddSample(7);
  EXPECT_STREQ(tags.Get(kLTagMarkerPosType), "1");
  EXPECT_STREQ(tags.Get("marker_0_pos"), "66150");
  EXPECT_EQ(tags.MarkerSamplesGet(), (LArray<std::uint64_t>{66150, 0, 7}));

  tags.MarkersClear();
  EXPECT_TRUE(tags.Empty());

  // The conversion splits at whole seconds, so long positions at high rates do not overflow.
  EXPECT_EQ(LMarkerMsToSamples(1, 44100), 44u);  // 44.1 truncated
  EXPECT_EQ(LMarkerMsToSamples(999, 48000), 47952u);
  const std::uint64_t tenYearsMs = 10ull * 365 * 24 * 3600 * 1000;
  EXPECT_EQ(LMarkerMsToSamples(tenYearsMs, 192000), tenYearsMs / 1000 * 192000);
}

TEST(FileTagDataAudio, AMarkerCountThatLiesNeitherLoopsLongNorInventsPositions) {
  LFileTagDataAudio tags;
  tags.Set(kLTagMarkerCount, "4000000000");
  tags.Set("marker_0_pos", "10");
  tags.Set("marker_2_pos", "not a number");
  EXPECT_EQ(tags.MarkerSamplesGet(), (LArray<std::uint64_t>{10}));

  // Positions without "marker_postype" 0 and a rate are sample frames already.
  LFileTagDataAudio noRate;
  noRate.Set(kLTagMarkerCount, "1");
  noRate.Set(kLTagMarkerPosType, "0");
  noRate.Set("marker_0_pos", "1500");
  EXPECT_EQ(noRate.MarkerSamplesGet(), (LArray<std::uint64_t>{1500}));
}
