// A program killed while recording: what it wrote comes back at the next start
// as a recovered recording, and no clean-up deletes it before it was offered.
#include "audio/recording_recovery.h"

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

#include "audio/audio_recorder.h"
#include "audio_fixture.h"
#include "base/platform_file.h"
#include "engine/sound_cache.h"
#include "engine/sound_cache_cleanup.h"
#include "support/reporting_child.h"

namespace {

constexpr int kChannels = 2;
constexpr long long kFrames = 5000;

}  // namespace

TEST_F(AudioTest, ARecordingOfAKilledProgramIsOfferedAgainAndKeptUntilThen) {
  const std::string folder = temp_.File("cache");
  {
    // A recording that ends normally leaves nothing to recover.
    LAudioNullBackend backend(RampInput(kChannels));
    LCutListAudio list;
    LAudioRecorder recorder(backend);
    ASSERT_EQ(recorder.Start(LAudioStreamSpec{"", 48000, kChannels, 500}, &list, 1000), LAudioStatus::kOK);
    (void)backend.LastStream()->Pump(1000);
    while (recorder.IsRecording()) std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  std::vector<LAudioRecoveredRecording> found;
  LAudioRecordingsRecover(&found);
  EXPECT_TRUE(found.empty());

  {
    ReportingChild child([&](int reportFd) -> int { RecordUntilKilled(folder, reportFd, kFrames, kChannels); });
    ASSERT_TRUE(child.Started());
    long long written = 0;
    ASSERT_TRUE(child.Read(&written, sizeof written));
    ASSERT_EQ(written, kFrames);
    ASSERT_TRUE(child.Kill());
  }
  LSoundCache::Instance().FolderSet("");
  LSoundCache::Instance().FolderSet(folder.c_str());
  LSoundCacheCleanup(kLSoundCacheCleanupAll);  // a clean-up before the search must not take it
  LAudioRecordingsRecover(&found);
  ASSERT_EQ(found.size(), 1u);
  LAudioRecoveredRecording& r = found[0];
  EXPECT_EQ(r.title.rfind("Wiederhergestellte Aufnahme vom ", 0), 0u) << r.title;
  ASSERT_EQ(r.list.GetLength(), kFrames);
  EXPECT_EQ(r.list.GetChannels(), kChannels);
  EXPECT_EQ(ReadAll(r.list.OpenSource(), 0, kFrames), ReadAll(MakeRamp(kFrames, kChannels), 0, kFrames));

  const std::string audio = LSoundCache::Instance().FilePath(r.item, kLSoundCacheExtAudio).c_str();
  LCutListAudio unused = r.list;
  r.list.Clear();
  unused.Clear();
  LSoundCacheCleanup(kLSoundCacheCleanupAll);
  EXPECT_TRUE(LFileExists(audio.c_str())) << "not offered yet: released and cleaned up, it stays";
  std::vector<LAudioRecoveredRecording> again;
  LAudioRecordingsRecover(&again);
  ASSERT_EQ(again.size(), 1u) << "offered again at the next search";

  LAudioRecordingOffered(r.item);
  again.clear();
  EXPECT_FALSE(LFileExists(audio.c_str())) << "offered and no longer referenced, it goes like any item";
}
