// The operations over the table's effects: each runs under its kind's label,
// changes the sound as its effect does, keeps to a frequency band, and the
// de-esser's operation follows whether the build has the effect.
#include <gtest/gtest.h>

#include <cmath>

#include "app/command_dispatcher.h"
#include "app/ef_deesser.h"
#include "app/ef_low_pass_filter.h"
#include "edit_fixture.h"
#include "effects/gain.h"
#include "effects/sound_process_listing.h"

namespace {

using EfEffectOperationsTest = EditTest;

constexpr double kRate = 44100;
constexpr long long kFrames = 44100;

double Db(double ratio) { return 20 * std::log10(ratio); }

TEST_F(EfEffectOperationsTest, AHighPassRunsAsHochpassFilterAndALowPassOnABandLeavesTheRest) {
  const std::vector<float> tones = Tones({{100, 0.25}, {5000, 0.25}}, kFrames, kRate);
  SVFileGUI* window = NewDocument(DocListOf(tones, 1));
  SVCommandDispatcher commands(Dialog());
  SVCommandArgs args;
  // The German display name works as the word does.
  args.texts = {"Hochpass", "Frequenz=1000", "Ordnung=24"};
  ASSERT_EQ(commands.Run(kSVCmdEffect, args).result, kLProcessSuccess);
  SVFile& file = *window->File();
  EXPECT_STREQ(file.UndoEntry(file.UndoIndexCurrent()).description, "Hochpass-Filter");
  std::vector<float> out = DocReadAll(file.CutList());
  EXPECT_LT(Db(ToneAmplitude(out, 22050, 4410, 100, kRate) / 0.25), -60.0);
  EXPECT_NEAR(Db(ToneAmplitude(out, 22050, 4410, 5000, kRate) / 0.25), 0.0, 0.5);

  // Only the band 3 to 8 kHz goes through the low-pass: the 5 kHz tone goes, 100 Hz stays.
  LCutListAudio list = DocListOf(tones, 1);
  LSPLowPass lowPass;
  lowPass.SetValue(0, 1000.0);
  Apply<SVEfLowPassFilter>(list, {0, kFrames, 3000, 8000, 1}, "Tiefpass-Filter", lowPass);
  out = DocReadAll(list);
  EXPECT_LT(Db(ToneAmplitude(out, 22050, 4410, 5000, kRate) / 0.25), -20.0);
  EXPECT_NEAR(Db(ToneAmplitude(out, 22050, 4410, 100, kRate) / 0.25), 0.0, 0.5);
}

TEST_F(EfEffectOperationsTest, VoicesAreReducedAndTheReadyEffectsRunUnderTheirOwnLabels) {
  // A 1 kHz voice in the middle, a 3 kHz tone on the left alone.
  const std::vector<float> voice = Tones({{1000, 0.25}}, kFrames, kRate);
  const std::vector<float> side = Tones({{3000, 0.25}}, kFrames, kRate);
  std::vector<float> stereo(2 * kFrames);
  for (long long f = 0; f < kFrames; ++f) {
    stereo[2 * f] = voice[f] + side[f];
    stereo[2 * f + 1] = voice[f];
  }
  SVFileGUI* window = NewDocument(DocListOf(stereo, 2));
  SVFile& file = *window->File();
  SVCommandDispatcher commands(Dialog());
  ASSERT_EQ(commands.Run(kSVCmdReduceVocals).result, kLProcessSuccess);
  EXPECT_STREQ(file.UndoEntry(file.UndoIndexCurrent()).description, "Stimmen reduzieren");
  const std::vector<float> out = DocReadAll(file.CutList());
  std::vector<float> left(kFrames), right(kFrames);
  for (long long f = 0; f < kFrames; ++f) {
    left[f] = out[2 * f];
    right[f] = out[2 * f + 1];
  }
  EXPECT_LT(Db(ToneAmplitude(left, 22050, 4410, 1000, kRate) / 0.25), -25.0);
  EXPECT_LT(Db(ToneAmplitude(right, 22050, 4410, 1000, kRate) / 0.25), -25.0);
  EXPECT_NEAR(Db(ToneAmplitude(left, 22050, 4410, 3000, kRate) / 0.25), 0.0, 1.0);

  ASSERT_EQ(commands.Run(kSVCmdCBRadio).result, kLProcessSuccess);
  EXPECT_STREQ(file.UndoEntry(file.UndoIndexCurrent()).description, "CB-Funk");
  for (const auto& [word, label] : {std::pair{"amradio", "MW-Radioeffekt"}, std::pair{"telefon", "Telefoneffekt"},
                                    std::pair{"stimmenverzerrer", "Stimmenverzerrer"}}) {
    SVCommandArgs args;
    args.texts = {word};
    const SVCommandResult result = commands.Run(kSVCmdEffect, args);
    ASSERT_EQ(result.result, kLProcessSuccess) << word << ": " << result.message;
    EXPECT_STREQ(file.UndoEntry(file.UndoIndexCurrent()).description, label);
  }
}

TEST_F(EfEffectOperationsTest, TempoLengthensTheSelectionAndPitchMovesTheToneInPlace) {
  SVFileGUI* window = NewDocument(DocListOf(Tones({{440, 0.25}}, 3 * kFrames, kRate), 1));
  SVFile& file = *window->File();
  file.Selection() = SVSelection{kFrames, 2 * kFrames, 0, 0, 0};
  SVCommandDispatcher commands(Dialog());
  SVCommandArgs args;
  args.numbers = {50};
  ASSERT_EQ(commands.Run(kSVCmdTempo, args).result, kLProcessSuccess);
  EXPECT_STREQ(file.UndoEntry(file.UndoIndexCurrent()).description, "Tempo ändern");
  EXPECT_NEAR(static_cast<double>(file.CutList().GetLength()), 4.0 * kFrames, 1.0);
  EXPECT_NEAR(static_cast<double>(file.Selection().end - file.Selection().start), 2.0 * kFrames, 1.0);
  std::vector<float> out = DocReadAll(file.CutList());
  EXPECT_NEAR(Db(ToneAmplitude(out, 2 * kFrames, 4410, 440, kRate) / 0.25), 0.0, 1.0);

  args.numbers = {-12};
  ASSERT_EQ(commands.Run(kSVCmdPitch, args).result, kLProcessSuccess);
  EXPECT_STREQ(file.UndoEntry(file.UndoIndexCurrent()).description, "Tonhöhe ändern");
  EXPECT_NEAR(static_cast<double>(file.CutList().GetLength()), 4.0 * kFrames, 1.0);
  out = DocReadAll(file.CutList());
  EXPECT_NEAR(Db(ToneAmplitude(out, 2 * kFrames, 4410, 220, kRate) / 0.25), 0.0, 1.0);
  EXPECT_NEAR(Db(ToneAmplitude(out, kFrames / 2, 4410, 440, kRate) / 0.25), 0.0, 0.1) << "outside stays";
  args.numbers = {0};
  EXPECT_EQ(commands.Run(kSVCmdSpeed, args).result, kLProcessFailed);
}

TEST_F(EfEffectOperationsTest, EffectListAnswersTheListingOfTheEffects) {
  SVCommandDispatcher commands(Dialog());
  const SVCommandResult listed = commands.Run(kSVCmdEffectList);
  EXPECT_EQ(listed.result, kLProcessSuccess);
  EXPECT_NE(listed.message.find(LSoundProcessListing()), std::string::npos);
}

TEST_F(EfEffectOperationsTest, TheDeesserRunsWhateverTheTableMakesForItsTypeAndFailsCleanWithoutIt) {
  const std::vector<float> tone = Tones({{1000, 0.5}}, 8820, kRate);
  LCutListAudio list = DocListOf(tone, 1);
  SVSelection selection{0, 8820, 0, 0, 0};
  {
    SVEfDeesser deesser(list, selection);
    EXPECT_STREQ(deesser.GetEffectName(), "De-Esser");
    LProcessInterfaceQuiet process;
    const LSoundProcessTypeRow* row = LSoundProcessTypeRowOf(kLSPTypeDeesser2);
    if (row && row->make) {
      EXPECT_EQ(deesser.ProcessAndInsertCutList(process), 0);
    } else {
      EXPECT_NE(deesser.ProcessAndInsertCutList(process), 0);
      EXPECT_EQ(DocReadAll(list), tone);
    }
  }
  // A stand-in for the settings: what it does is what the operation does.
  list = DocListOf(tone, 1);
  Apply<SVEfDeesser>(list, {0, 8820, 0, 0, 0}, "De-Esser", LSPGain(-6.0));
  EXPECT_NEAR(Db(ToneAmplitude(DocReadAll(list), 0, 4410, 1000, kRate) / 0.5), -6.0, 0.01);
}

}  // namespace
