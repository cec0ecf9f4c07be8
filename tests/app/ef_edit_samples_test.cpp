// Edit samples: drawn frames in place of the selection.
#include <gtest/gtest.h>

#include "app/ef_edit_samples.h"
#include "edit_fixture.h"

namespace {

using EfEditSamplesTest = EditTest;

TEST_F(EfEditSamplesTest, TheDrawnFramesReplaceTheSelection) {
  LCutListAudio list = StaircaseList(1000, 2);
  const std::vector<float> before = DocReadAll(list);
  std::vector<float> drawn;
  for (int i = 0; i < 50; ++i) {
    drawn.push_back(-0.01f * i);
    drawn.push_back(0.02f * i);
  }
  EXPECT_EQ(Apply<SVEfEditSamples>(list, {300, 400, 0, 0, 0}, "Samples bearbeiten", drawn).end, 350);
  std::vector<float> expected = Frames(before, 2, 0, 300);
  expected.insert(expected.end(), drawn.begin(), drawn.end());
  const std::vector<float> tail = Frames(before, 2, 400, 1000);
  expected.insert(expected.end(), tail.begin(), tail.end());
  EXPECT_EQ(DocReadAll(list), expected);
  EXPECT_EQ(CacheAudioFiles(), 2);
}

}  // namespace
