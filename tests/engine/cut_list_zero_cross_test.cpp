#include <gtest/gtest.h>

#include "engine/cut_list_audio.h"
#include "sound_cache_fixture.h"

namespace {

// Stereo frames at -1 with a rising step (to +1) after each listed frame of each channel.
LSoundSource Crossings(long long frames, const std::vector<long long>& left, const std::vector<long long>& right) {
  std::vector<float> s(static_cast<std::size_t>(frames * 2), -1.0f);
  auto rise = [&](const std::vector<long long>& at, int channel) {
    for (long long f : at) s[static_cast<std::size_t>((f + 1) * 2 + channel)] = 1.0f;
  };
  rise(left, 0);
  rise(right, 1);
  return LMakeSource<VectorSource>(std::move(s), 2);
}

}  // namespace

TEST(CutListZeroCross, PicksTheNearestFrameWhereAllChannelsRiseTogether) {
  LSoundSource source = Crossings(1000, {100, 300, 700}, {100, 300, 690});
  long long result = -1;
  ASSERT_TRUE(LCutListAudio::ZeroCrossCutpointFind(source, 250, 0, 999, result));
  EXPECT_EQ(result, 300);
  ASSERT_TRUE(LCutListAudio::ZeroCrossCutpointFind(source, 150, 0, 999, result));
  EXPECT_EQ(result, 100);
  // Only a near crossing in range: the middle of the tightest spread.
  ASSERT_TRUE(LCutListAudio::ZeroCrossCutpointFind(source, 650, 400, 999, result));
  EXPECT_EQ(result, 695);
}

TEST(CutListZeroCross, AnswersTheEdgeCasesWithoutScanningAndMissesACrossingBetweenScanBlocks) {
  LSoundSource source = Crossings(1000, {100}, {100});
  long long result = -1;
  EXPECT_TRUE(LCutListAudio::ZeroCrossCutpointFind(source, 0, 10, 20, result));
  EXPECT_EQ(result, 0);
  EXPECT_TRUE(LCutListAudio::ZeroCrossCutpointFind(source, 5000, 0, 99999, result));
  EXPECT_EQ(result, 1000);
  EXPECT_FALSE(LCutListAudio::ZeroCrossCutpointFind(source, 50, 60, 900, result));
  EXPECT_FALSE(LCutListAudio::ZeroCrossCutpointFind(source, 950, 60, 900, result));
  EXPECT_FALSE(LCutListAudio::ZeroCrossCutpointFind(source, 500, 200, 900, result)) << "no crossing in range";
  LSoundSource closed = LSoundSource::Error(kLSourceCannotOpen);
  EXPECT_FALSE(LCutListAudio::ZeroCrossCutpointFind(closed, 5, 0, 10, result));

  // A crossing that straddles two 8192-frame scan blocks is not seen.
  LSoundSource straddling = Crossings(20000, {8191, 12000}, {8191, 12000});
  ASSERT_TRUE(LCutListAudio::ZeroCrossCutpointFind(straddling, 8191, 0, 19999, result));
  EXPECT_EQ(result, 12000);
  ASSERT_TRUE(LCutListAudio::ZeroCrossCutpointFind(straddling, 8191, 1, 19999, result));
  EXPECT_EQ(result, 8191) << "scanned from frame 1, the crossing lies inside a block";
}
