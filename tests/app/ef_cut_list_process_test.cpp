// The generic splice of an edit: the selection cut out, transformed and put
// back; the band path with its band-stopped remainder; invalid selections and
// failures (cancelling a band edit at every point is driven through the edit
// commands).
#include <gtest/gtest.h>

#include <cmath>

#include "app/ef_cut_list_process.h"
#include "app/ef_gain.h"
#include "edit_fixture.h"

namespace {

using EfCutListProcessTest = EditTest;

constexpr std::uint32_t kRate = 8000;

TEST_F(EfCutListProcessTest, AnEffectThatHalvesTheSelectionLeavesItCoveringTheHalf) {
  LCutListAudio list = StaircaseList(20 * kRate, 2, kRate);
  const std::vector<float> before = DocReadAll(list);
  SVSelection selection{2 * kRate, 12 * kRate, 0, 0, 0};
  LambdaProcess halve(list, selection, [](LProcessInterface&, LCutListAudio& piece) {
    piece.EfTrim(0, piece.GetLength() / 2);
    return 0;
  });
  LProcessInterfaceQuiet process;
  ASSERT_EQ(halve.ProcessAndInsertCutList(process), 0);

  EXPECT_EQ(selection.start, 2 * kRate);
  EXPECT_EQ(selection.end, 7 * kRate);
  EXPECT_EQ(process.Status(0), "Probe");
  EXPECT_EQ(process.Status(1), "Bitte warten...");
  ASSERT_EQ(list.GetLength(), 15 * kRate);
  const std::vector<float> after = DocReadAll(list);
  EXPECT_EQ(Frames(after, 2, 0, 7 * kRate), Frames(before, 2, 0, 7 * kRate));
  EXPECT_EQ(Frames(after, 2, 7 * kRate, 15 * kRate), Frames(before, 2, 12 * kRate, 20 * kRate));
  EXPECT_EQ(CacheAudioFiles(), 1) << "a splice writes no audio";

  // An empty selection, with or without a band, is a point: the effect gets nothing to change there.
  for (const SVSelection& point : {SVSelection{kRate, kRate, 0, 0, 0}, SVSelection{kRate, kRate, 1000, 2000, 1}}) {
    selection = point;
    long long seen = -1;
    LambdaProcess copy(list, selection, [&seen](LProcessInterface&, LCutListAudio& piece) {
      seen = piece.GetLength();
      return 0;
    });
    ASSERT_EQ(copy.ProcessAndInsertCutList(process), 0);
    EXPECT_EQ(seen, 0);
    EXPECT_EQ(list.GetLength(), 15 * kRate);
  }
}

TEST_F(EfCutListProcessTest, AnInvalidSelectionOrAFailedTransformLeavesTheDocumentAsItWas) {
  LCutListAudio list = PiecewiseStaircase(3000, 2, 3);
  auto shape = ShapeOf(list);
  for (const SVSelection& invalid : {SVSelection{600, 500, 0, 0, 0}, SVSelection{100, 500, 2000, 1000, 1}}) {
    SVSelection selection = invalid;
    LambdaProcess effect(list, selection, [](LProcessInterface&, LCutListAudio& piece) {
      piece.Clear();
      return 0;
    });
    LProcessInterfaceQuiet process;
    EXPECT_EQ(effect.ProcessAndInsertCutList(process), kSVEfResultInvalidSelection);
    EXPECT_EQ(effect.calls, 0);
    EXPECT_EQ(ShapeOf(list), shape);
    EXPECT_EQ(selection.end, invalid.end);
    EXPECT_EQ(process.Status(0), "") << "no dialog text";
  }
  // Upside down without the band flag is no band at all.
  SVSelection flagless{100, 500, 2000, 1000, 0};
  LambdaProcess nothing(list, flagless, [](LProcessInterface&, LCutListAudio&) { return 0; });
  LProcessInterfaceQuiet process;
  EXPECT_EQ(nothing.ProcessAndInsertCutList(process), 0);
  shape = ShapeOf(list);  // laying the piece back split the segments at the selection

  SVSelection selection{500, 2500, 0, 0, 0};
  LambdaProcess failing(list, selection, [](LProcessInterface&, LCutListAudio& piece) {
    piece.EfDelete(0, 10);
    return 7;
  });
  EXPECT_EQ(failing.ProcessAndInsertCutList(process), 7);
  EXPECT_EQ(ShapeOf(list), shape);
  EXPECT_EQ(selection.end, 2500);
}

TEST_F(EfCutListProcessTest, AGainOnABandChangesOnlyThatBandOfTheSelectedTime) {
  constexpr std::uint32_t kBandRate = 16000;
  constexpr long long kFrames = 10 * kBandRate;
  constexpr long long kStart = 2 * kBandRate;
  constexpr long long kEnd = 8 * kBandRate;
  const std::vector<float> signal = Tones({{500, 0.2}, {1500, 0.2}, {4000, 0.2}}, kFrames, kBandRate);
  LCutListAudio list = DocListOf(signal, 1, kBandRate);
  const unsigned short original = list.Segments().front().ItemNumber();
  EXPECT_EQ(Apply<SVEfGain>(list, {kStart, kEnd, 1000, 2000, 1}, nullptr, 20.0 * std::log10(2.0)).end, kEnd);

  // Before and after the selected time the document still plays the original item.
  ASSERT_EQ(list.SegmentCount(), 3);
  EXPECT_EQ(ShapeOf(list).front(), SegmentShape(original, kStart, 1.0f, 0));
  EXPECT_EQ(ShapeOf(list).back(), SegmentShape(original, kFrames - kEnd, 1.0f, kEnd));
  const std::vector<float> after = DocReadAll(list);
  ASSERT_EQ(after.size(), signal.size());
  EXPECT_EQ(Frames(after, 1, 0, kStart), Frames(signal, 1, 0, kStart));
  EXPECT_EQ(Frames(after, 1, kEnd, kFrames), Frames(signal, 1, kEnd, kFrames));
  EXPECT_EQ(CacheAudioFiles(), 2) << "only the mixed result stays";

  // Inside, away from the filters' edges: the band doubled, the rest kept. Each
  // filter lets 0.001 (-60 dB) of what it stops through, and the gain doubles the
  // band filter's share: 0.2 % at most.
  const long long from = kStart + 3 * kBandRate / 2;
  const long long count = 3 * kBandRate;
  constexpr double kFloorShare = 2 * 0.001 + 0.0005;
  EXPECT_NEAR(ToneAmplitude(after, from, count, 1500, kBandRate), 0.4, 0.4 * kFloorShare);
  EXPECT_NEAR(ToneAmplitude(after, from, count, 500, kBandRate), 0.2, 0.2 * kFloorShare);
  EXPECT_NEAR(ToneAmplitude(after, from, count, 4000, kBandRate), 0.2, 0.2 * kFloorShare);
}

}  // namespace
