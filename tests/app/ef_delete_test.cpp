// Delete: the selection goes by an edit of the cut list; a band goes alone.
#include <gtest/gtest.h>

#include "app/ef_delete.h"
#include "edit_fixture.h"

namespace {

using EfDeleteTest = EditTest;

TEST_F(EfDeleteTest, TheSelectionGoesWithoutNewAudio) {
  LCutListAudio list = PiecewiseStaircase(6000, 2, 3);
  const LCutListAudio kept = list;  // holds the items, as an undo snapshot would
  const std::vector<float> before = DocReadAll(list);
  const SVSelection selection = Apply<SVEfDelete>(list, {1500, 4500, 0, 0, 0}, "Audio löschen");
  EXPECT_EQ(CacheAudioFiles(), 3);
  EXPECT_EQ(selection.start, 1500);
  EXPECT_EQ(selection.end, 1500);
  std::vector<float> expected = Frames(before, 2, 0, 1500);
  const std::vector<float> tail = Frames(before, 2, 4500, 6000);
  expected.insert(expected.end(), tail.begin(), tail.end());
  EXPECT_EQ(DocReadAll(list), expected);
}

TEST_F(EfDeleteTest, DeletingABandKeepsTheRestOfTheSelectedTime) {
  constexpr std::uint32_t kRate = 8000;
  const std::vector<float> signal = Tones({{400, 0.25}, {1500, 0.25}}, 8 * kRate, kRate);
  LCutListAudio list = DocListOf(signal, 1, kRate);
  EXPECT_EQ(Apply<SVEfDelete>(list, {kRate, 7 * kRate, 1000, 2000, 1}, nullptr).end, 7 * kRate);
  ASSERT_EQ(list.GetLength(), 8 * kRate);
  const std::vector<float> after = DocReadAll(list);
  EXPECT_NEAR(ToneAmplitude(after, 3 * kRate, 2 * kRate, 1500, kRate), 0.0, 0.25 * 0.002);
  EXPECT_NEAR(ToneAmplitude(after, 3 * kRate, 2 * kRate, 400, kRate), 0.25, 0.25 * 0.002);
}

}  // namespace
