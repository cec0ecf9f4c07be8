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
  SVSelection selection{0, list.GetLength(), 0, 0, 0};
  SVEfAutoTrim trim(list, selection, true);
  EXPECT_STREQ(trim.GetEffectName(), "AutoTrimmen");
  LProcessInterfaceQuiet process;
  ASSERT_EQ(trim.ProcessAndInsertCutList(process), 0);
  EXPECT_EQ(DocReadAll(list), Runs({{2000, true}, {5000, false}, {1000, true}}));
  EXPECT_EQ(selection.end, 8000);
  EXPECT_EQ(CacheAudioFiles(), 1);
}

TEST_F(EfAutoTrimTest, TrimmingSilenceRemovesEveryLongEnoughRun) {
  LCutListAudio list =
      DocListOf(Runs({{5000, false}, {2000, true}, {3999, false}, {1000, true}, {4500, false}, {700, true}}), 1, kRate);
  SVSelection selection{0, list.GetLength(), 0, 0, 0};
  SVEfAutoTrim trim(list, selection, false);
  EXPECT_STREQ(trim.GetEffectName(), "Stille trimmen");
  LProcessInterfaceQuiet process;
  ASSERT_EQ(trim.ProcessAndInsertCutList(process), 0);
  EXPECT_EQ(DocReadAll(list), Runs({{2000, true}, {3999, false}, {1000, true}, {700, true}}));
  EXPECT_EQ(CacheAudioFiles(), 1);
}

TEST_F(EfAutoTrimTest, APieceOfSilenceAloneIsTrimmedAway) {
  LCutListAudio list = DocListOf(Runs({{1000, true}, {3000, false}, {1000, true}}), 1, kRate);
  SVSelection selection{1000, 4000, 0, 0, 0};
  SVEfAutoTrim trim(list, selection, true);
  LProcessInterfaceQuiet process;
  ASSERT_EQ(trim.ProcessAndInsertCutList(process), 0);
  EXPECT_EQ(DocReadAll(list), Runs({{2000, true}}));
  EXPECT_EQ(selection.end, 1000);
}

}  // namespace
