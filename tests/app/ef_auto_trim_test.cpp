// AutoTrim and "Stille trimmen": silence removed by cut-list edits alone.
#include <gtest/gtest.h>

#include "app/ef_auto_trim.h"
#include "edit_fixture.h"

namespace {

using EfAutoTrimTest = EditTest;

constexpr std::uint32_t kRate = 8000;  // the default minimum of 500 ms is 4000 frames

// Runs of (frames, sound): sound is a constant 0.5, silence a level below -50 dB.
std::vector<float> Runs(const std::vector<std::pair<long long, bool>>& runs) {
  std::vector<float> out;
  for (const auto& [frames, sound] : runs)
    out.insert(out.end(), static_cast<std::size_t>(frames), sound ? 0.5f : 0.001f);
  return out;
}

TEST_F(EfAutoTrimTest, AutoTrimRemovesTheSilenceAtBothEndsOnly) {
  LCutListAudio list =
      DocListOf(Runs({{1000, false}, {2000, true}, {5000, false}, {1000, true}, {800, false}}), 1, kRate);
  EXPECT_EQ(Apply<SVEfAutoTrim>(list, {0, list.GetLength(), 0, 0, 0}, "AutoTrimmen", true).end, 8000);
  EXPECT_EQ(DocReadAll(list), Runs({{2000, true}, {5000, false}, {1000, true}}));
  EXPECT_EQ(CacheAudioFiles(), 1);

  // A selection of silence alone is trimmed away.
  list = DocListOf(Runs({{1000, true}, {3000, false}, {1000, true}}), 1, kRate);
  EXPECT_EQ(Apply<SVEfAutoTrim>(list, {1000, 4000, 0, 0, 0}, nullptr, true).end, 1000);
  EXPECT_EQ(DocReadAll(list), Runs({{2000, true}}));
}

TEST_F(EfAutoTrimTest, TrimmingSilenceRemovesEveryLongEnoughRun) {
  LCutListAudio list =
      DocListOf(Runs({{5000, false}, {2000, true}, {3999, false}, {1000, true}, {4500, false}, {700, true}}), 1, kRate);
  Apply<SVEfAutoTrim>(list, {0, list.GetLength(), 0, 0, 0}, "Stille trimmen", false);
  EXPECT_EQ(DocReadAll(list), Runs({{2000, true}, {3999, false}, {1000, true}, {700, true}}));
  EXPECT_EQ(CacheAudioFiles(), 1);
}

}  // namespace
