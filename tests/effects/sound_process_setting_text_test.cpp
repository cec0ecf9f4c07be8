#include "effects/sound_process_setting_text.h"

#include <gtest/gtest.h>

#include "effects/drc_point_line.h"
#include "effects/echo.h"
#include "effects/gain.h"
#include "effects/parametric_eq.h"
#include "effects/sound_process_by_name.h"
#include "effects/sound_process_type.h"

TEST(SoundProcessSettingText, EffectsAreFoundByKeyOrGermanNameWhateverTheCaseAndAccents) {
  EXPECT_EQ(LSoundProcessCreateByName("ECHO")->GetSoundProcessType(), kLSPTypeEcho);
  EXPECT_EQ(LSoundProcessCreateByName("verstarkung")->GetSoundProcessType(), kLSPTypeGain);
  EXPECT_EQ(LSoundProcessCreateByName("Verstärkung")->GetSoundProcessType(), kLSPTypeGain);
  EXPECT_EQ(LSoundProcessCreateByName("Audio-Unit-Plug-in"), nullptr);
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

TEST(SoundProcessSettingText, NamedValuesAndPointsOfACurveAreTakenAsTyped) {
  LSPParametricEqBand band;
  std::string message;
  for (auto [text, shape] : {std::pair{"Typ=Kerbe", kLSPBandNotch}, {"Typ=Kuhschwanz", kLSPBandLowShelf},
                             {"Typ=kuhschwanz hoch", kLSPBandHighShelf}, {"Typ=Glocke", kLSPBandBell}}) {
    ASSERT_EQ(LSoundProcessSetFromText(band, text, &message), LSPSettingTextResult::kOK) << text;
    EXPECT_EQ(band.Value(kLSPBandShape), shape) << text;
  }
  EXPECT_EQ(LSoundProcessSetFromText(band, "Typ=Wolke", &message), LSPSettingTextResult::kNotANumber);

  LSPDRCPointLine drc;
  ASSERT_EQ(LSoundProcessSetFromText(drc, "Punkte=-90:-90;-30:-30;0:-6", &message), LSPSettingTextResult::kOK);
  ASSERT_EQ(LSoundProcessSetFromText(drc, "-10 dB=-12", &message), LSPSettingTextResult::kOK) << message;
  const std::vector<LPoint> points = drc.CurvePoints();
  ASSERT_EQ(points.size(), 4u);
  EXPECT_EQ(points[2].frequency, -10.0);
  EXPECT_EQ(points[2].gainDb, -12.0);
  EXPECT_EQ(LSoundProcessSetFromText(drc, "-10=30", &message), LSPSettingTextResult::kOutOfRange);
  EXPECT_NE(message.find("Ausgang muss zwischen -90 und 20 dB"), std::string::npos) << message;
  EXPECT_EQ(LSoundProcessSetFromText(drc, "Punkte=-90:-90;x:3", &message), LSPSettingTextResult::kNotANumber);
  EXPECT_EQ(drc.CurvePoints().size(), 4u) << "a refused curve changes nothing";
}
