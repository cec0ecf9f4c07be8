#include "engine/sound_time.h"

#include <gtest/gtest.h>

#include <string>

namespace {

std::string Text(long long ms, void (LSoundTime::*form)(char*) const) {
  char buffer[64] = {};
  (LSoundTime(ms).*form)(buffer);
  return buffer;
}

long long Parse(const char* text) {
  LSoundTime t;
  t.SetText(text);
  return t.Get();
}

}  // namespace

TEST(SoundTime, TextFormsRoundBeforeSplittingAndNegativesGetALeadingMinus) {
  EXPECT_EQ(Text(-1500, &LSoundTime::_GetTextHMMSSF), "-0:00:01.5");
  EXPECT_EQ(Text(59999, &LSoundTime::_GetTextHMMSSF), "0:01:00.0");
  EXPECT_EQ(Text(59999, &LSoundTime::_GetTextHMMSSFFF), "0:00:59.999");
  EXPECT_EQ(Text(59996, &LSoundTime::_GetTextHMMSSFF), "0:01:00.00");
  EXPECT_EQ(Text(59994, &LSoundTime::_GetTextHMMSSFF), "0:00:59.99");
  EXPECT_EQ(Text(90000000, &LSoundTime::_GetTextHMMSSFFF), "25:00:00.000");
  EXPECT_EQ(Text(3723500, &LSoundTime::_GetText), "1:02:03.500");
  EXPECT_EQ(Text(3723505, &LSoundTime::_GetText2), "1:02:03.51");
  // The long forms print hours beyond what an int holds.
  EXPECT_EQ(Text(3600000LL * 3000000000LL, &LSoundTime::_GetText), "3000000000:00:00.000");
}

TEST(SoundTime, SetTextIsLenientWithItsDeliberateQuirks) {
  EXPECT_EQ(Parse("1:02:03.5"), 3723500);
  EXPECT_EQ(Parse("90"), 90000);
  EXPECT_EQ(Parse("1.2345"), 1234);
  EXPECT_EQ(Parse("abc"), 0);
  EXPECT_EQ(Parse("-1.5"), -1500);
  EXPECT_EQ(Parse("1.5-"), -1500);
  EXPECT_EQ(Parse("1x0"), 10000);
  EXPECT_EQ(Parse("1..5"), 1500);
  // The third colon acts as a decimal point.
  EXPECT_EQ(Parse("0:0:1:5"), 1500);
  EXPECT_EQ(Parse(""), 0);
}

TEST(SoundTime, IsValidAcceptsOnlyDigitsOnePointAndUpToThreeColons) {
  EXPECT_TRUE(LSoundTime::IsValid("1:2:3:4", false));
  EXPECT_FALSE(LSoundTime::IsValid("1:2:3:4:5", false));
  EXPECT_FALSE(LSoundTime::IsValid("1.5:2", false));
  EXPECT_FALSE(LSoundTime::IsValid("", false));
  EXPECT_FALSE(LSoundTime::IsValid("-1", true));
  EXPECT_FALSE(LSoundTime::IsValid("1.2.3", false));
  EXPECT_FALSE(LSoundTime::IsValid("1 s", false));
  EXPECT_TRUE(LSoundTime::IsValid("90", false));
  EXPECT_TRUE(LSoundTime::IsValid("1:02.5", false));
}
