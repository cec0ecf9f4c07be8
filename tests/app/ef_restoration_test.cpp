// The restoration commands on documents: clicks found or marked and repaired,
// and noise reduced with a profile taken from the selection.
#include <gtest/gtest.h>

#include <cmath>

#include "app/command_dispatcher.h"
#include "edit_fixture.h"

namespace {

using EfRestorationTest = EditTest;

constexpr double kRate = 44100;
constexpr long long kFrames = 44100;

double RmsDb(const std::vector<float>& s, long long from, long long count) {
  double sum = 0;
  for (long long i = from; i < from + count; ++i) sum += static_cast<double>(s[i]) * s[i];
  return 10 * std::log10(sum / static_cast<double>(count));
}

TEST_F(EfRestorationTest, ClicksAreRepairedByHandOrFoundAndNoiseDropsAfterAProfile) {
  const std::vector<float> clean = Tones({{440, 0.25}, {1300, 0.1}}, kFrames, kRate);
  std::vector<float> clicked = clean;
  for (long long at : {5000LL, 20000LL, 33333LL})
    for (long long i = at; i < at + 8; ++i) clicked[i] += i % 2 ? 0.4f : -0.5f;
  SVFileGUI* window = NewDocument(DocListOf(clicked, 1));
  SVFile& file = *window->File();
  SVCommandDispatcher commands(Dialog());

  // By hand: 100 ms is refused, a few milliseconds around one click rebuilt.
  file.Selection() = SVSelection{0, 4410, 0, 0, 0};
  const SVCommandResult tooLong = commands.Run(kSVCmdRepair);
  EXPECT_NE(tooLong.result, kLProcessSuccess);
  EXPECT_NE(tooLong.message.find("zu lang"), std::string::npos) << tooLong.message;
  file.Selection() = SVSelection{19990, 20020, 0, 0, 0};
  ASSERT_EQ(commands.Run(kSVCmdRepair).result, kLProcessSuccess);
  EXPECT_STREQ(file.UndoEntry(file.UndoIndexCurrent()).description, "Manuelle Knack-/Kratzreparatur");
  std::vector<float> out = DocReadAll(file.CutList());
  ASSERT_EQ(out.size(), clean.size());
  for (long long i = 19990; i < 20020; ++i) EXPECT_NEAR(out[i], clean[i], 1e-3) << i;
  EXPECT_EQ(out[5003], clicked[5003]);

  // Found: the other two go too, and the rest is left as it was.
  file.Selection() = SVSelection{};
  ASSERT_EQ(commands.Run(kSVCmdClickPop).result, kLProcessSuccess);
  EXPECT_STREQ(file.UndoEntry(file.UndoIndexCurrent()).description, "Click/Pop-Entfernung");
  out = DocReadAll(file.CutList());
  for (long long i = 0; i < kFrames; ++i) ASSERT_NEAR(out[i], clean[i], 1e-3) << i;

  // Noise: a second of it, then the tone over it.
  std::vector<float> noisy(2 * kFrames);
  unsigned seed = 3;
  for (long long i = 0; i < 2 * kFrames; ++i) {
    seed = seed * 1664525u + 1013904223u;
    noisy[i] = 0.02f * (static_cast<float>(seed >> 8) / static_cast<float>(1u << 24) * 2.0f - 1.0f);
    if (i >= kFrames) noisy[i] += clean[i - kFrames];
  }
  SVFile& noise = *NewDocument(DocListOf(noisy, 1))->File();
  const SVCommandResult none = commands.Run(kSVCmdNoiseReduce);
  EXPECT_NE(none.result, kLProcessSuccess);
  EXPECT_NE(none.message.find("rauschprofil"), std::string::npos) << none.message;
  noise.Selection() = SVSelection{0, kFrames / 2, 0, 0, 0};
  ASSERT_EQ(commands.Run(kSVCmdNoiseProfile).result, kLProcessSuccess);
  noise.Selection() = SVSelection{};
  SVCommandArgs args;
  args.numbers = {18};
  ASSERT_EQ(commands.Run(kSVCmdNoiseReduce, args).result, kLProcessSuccess);
  EXPECT_STREQ(noise.UndoEntry(noise.UndoIndexCurrent()).description, "Geräuschreduzierung");
  out = DocReadAll(noise.CutList());
  EXPECT_LE(RmsDb(out, 4410, 30000) - RmsDb(noisy, 4410, 30000), -18 + 0.05);
  EXPECT_NEAR(20 * std::log10(ToneAmplitude(out, kFrames + 4410, 22050, 440, kRate) / 0.25), 0.0, 1.0);

  // The multiband gate learns its thresholds from the same noise.
  ASSERT_EQ(commands.Run(kSVCmdUndo).result, kLProcessSuccess);
  args = {};
  args.texts = {"multibandgate", "Dämpfung=30"};
  ASSERT_EQ(commands.Run(kSVCmdEffect, args).result, kLProcessSuccess);
  out = DocReadAll(noise.CutList());
  EXPECT_LT(RmsDb(out, 4410, 30000) - RmsDb(noisy, 4410, 30000), -25.0);
}

}  // namespace
