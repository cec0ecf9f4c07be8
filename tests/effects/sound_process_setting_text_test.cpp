#include "effects/sound_process_setting_text.h"

#include <gtest/gtest.h>

#include "effects/echo.h"
#include "effects/gain.h"
#include "effects/sound_process_by_name.h"
#include "effects/sound_process_type.h"

TEST(SoundProcessSettingText, EffectsAreFoundByKeyOrGermanNameWhateverTheCaseAndAccents) {
  EXPECT_EQ(LSoundProcessCreateByName("ECHO")->GetSoundProcessType(), kLSPTypeEcho);
  EXPECT_EQ(LSoundProcessCreateByName("verstarkung")->GetSoundProcessType(), kLSPTypeGain);
  EXPECT_EQ(LSoundProcessCreateByName("Verstärkung")->GetSoundProcessType(), kLSPTypeGain);
  EXPECT_EQ(LSoundProcessCreateByName("Chor"), nullptr);
}

TEST(SoundProcessSettingText, ValuesInRangeAreSetAndEverythingElseIsRefusedWithTheReason) {
  LSPEcho echo;
  std::string message;
  EXPECT_EQ(LSoundProcessSetFromText(echo, "zeit=250", &message), LSPSettingTextResult::kOK);
  EXPECT_EQ(echo.GetTime(), 250);
  EXPECT_EQ(LSoundProcessSetFromText(echo, "preset=Höhle", &message), LSPSettingTextResult::kOK);
  EXPECT_EQ(echo.GetGain(), 40);
  EXPECT_EQ(echo.GetTime(), 400);

  struct Case {
    const char* text;
    LSPSettingTextResult result;
    const char* message;
  } refused[] = {
      {"Zunahme=150", LSPSettingTextResult::kOutOfRange, "Zunahme muss zwischen 1 und 99 % liegen, nicht 150."},
      {"Zunahme=0", LSPSettingTextResult::kOutOfRange, "zwischen 1 und 99 %"},
      {"Zeit=4001", LSPSettingTextResult::kOutOfRange, "zwischen 1 und 4000 ms"},
      {"Zeit=inf", LSPSettingTextResult::kNotANumber, "keine Zahl"},
      {"Zeit=", LSPSettingTextResult::kNotANumber, "keine Zahl"},
      {"Hall=3", LSPSettingTextResult::kUnknownLabel, "keinen Parameter \"Hall\""},
      {"preset=Kirche", LSPSettingTextResult::kUnknownPreset, "\"Kirche\""},
      {"=3", LSPSettingTextResult::kNotAnAssignment, "PARAMETER=WERT"},
  };
  for (const Case& c : refused) {
    EXPECT_EQ(LSoundProcessSetFromText(echo, c.text, &message), c.result) << c.text;
    EXPECT_NE(message.find(c.message), std::string::npos) << c.text << ": " << message;
  }
  EXPECT_EQ(echo.GetGain(), 40);
  EXPECT_EQ(echo.GetTime(), 400);

  LSPGain gain;
  EXPECT_EQ(LSoundProcessSetFromText(gain, "Pegel=-6,5", &message), LSPSettingTextResult::kOK);
  EXPECT_EQ(gain.GetGainDb(), -6.5);
  EXPECT_EQ(LSoundProcessSetFromText(gain, "Pegel=31", &message), LSPSettingTextResult::kOutOfRange);
  EXPECT_NE(message.find("zwischen -60 und 30 dB"), std::string::npos) << message;
}
