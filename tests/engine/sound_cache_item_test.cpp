#include "engine/sound_cache_item.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "base/disk_space.h"
#include "base/volume_mount_point.h"
#include "engine/sound_cache_audio_info.h"
#include "sound_cache_fixture.h"

namespace {

std::size_t FilesIn(const std::string& folder) {
  std::size_t count = 0;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    if (entry.path().filename() != "items.lock") ++count;
  }
  return count;
}

}  // namespace

TEST_F(SoundCacheTest, TooLittleFreeSpaceFailsWithTheMessageAndCreatesNothing) {
  // 1,000,000 stereo frames need 8,000,000 bytes plus 100 MB of head-room.
  const long long required = 8000000LL + kLSoundCacheHeadRoomBytes;
  LDiskFreeBytesOverride([&](const char*) { return required - 1; });
  LProcessInterfaceQuiet process;
  LSoundCacheItemHandle item;
  long long length = -5;
  EXPECT_EQ(LSoundCacheItemAdd(process, MakeStaircase(1000000, 2), item, length), kLProcessFailed);
  EXPECT_FALSE(item.IsItem());
  EXPECT_EQ(FilesIn(cacheFolder_), 0u);
  char expected[512];
  std::snprintf(expected, sizeof expected,
                "Unzureichender Festplattenspeicher, um Audio zu speichern. Sonvale benötigt 107.63 MB freien "
                "Speicher auf dem \"%s\", um die Datei zu laden (107.63 MB verfügbar).",
                LVolumeMountPoint(cacheFolder_.c_str()).c_str());
  EXPECT_EQ(process.Error(), expected);
  EXPECT_EQ(LSoundCache::Instance().ItemNumberGetNextAvailable(), 0);

  // Exactly enough is enough.
  LDiskFreeBytesOverride([&](const char*) { return required; });
  EXPECT_EQ(LSoundCacheItemAdd(process, MakeStaircase(1000000, 2), item, length), kLProcessSuccess);
  EXPECT_EQ(length, 1000000);
  item.Reset();
}

TEST_F(SoundCacheTest, AnAddReadsTheSourceFromItsStartAndACancelledOrFailedOneLeavesNothingBehind) {
  LSoundSource source = MakeStaircase(50000, 1);
  source.Seek(20000);
  LProcessInterfaceQuiet done;
  LSoundCacheItemHandle added;
  long long frames = 0;
  ASSERT_EQ(LSoundCacheItemAdd(done, source, added, frames), kLProcessSuccess);
  EXPECT_EQ(frames, 50000);
  EXPECT_EQ(done.Progress(), 1.0);
  EXPECT_EQ(LSoundCacheItemLengthGet(added.Number()), 50000);
  EXPECT_EQ(LSoundCache::Instance().RefCountGet(added.Number()), 1);
  added.Reset();
  source.Close();

  LProcessInterfaceQuiet process;
  process.CancelAfterChecks(3);
  LSoundCacheItemHandle item;
  long long length = -1;
  EXPECT_EQ(LSoundCacheItemAdd(process, MakeStaircase(100000, 2), item, length), kLProcessCancelled);
  EXPECT_FALSE(item.IsItem());
  EXPECT_EQ(length, 0);
  EXPECT_EQ(FilesIn(cacheFolder_), 0u);
  EXPECT_EQ(LSoundCache::Instance().ItemNumberGetNextAvailable(), 0);

  LProcessInterfaceQuiet again;
  EXPECT_EQ(LSoundCacheItemAdd(again, LMakeSource<VectorSource>(std::vector<float>(), 0), item, length),
            kLProcessFailed);
  EXPECT_FALSE(item.IsItem());
  EXPECT_EQ(FilesIn(cacheFolder_), 0u);
}

TEST_F(SoundCacheTest, RecordingTheLastUseKeepsTheRestOfTheDescription) {
  LSoundCacheItemHandle item = AddItem(MakeStaircase(10, 2, 32000));
  LSoundCacheClockOverride([] { return 1234567890LL; });
  ASSERT_TRUE(LSoundCacheItemLastAccessTimeUpdate(item.Number()));
  LSoundCacheAudioInfo info;
  ASSERT_TRUE(LSoundCacheAudioInfoLoad(CachePath(item.Number(), kLSoundCacheExtInfo).c_str(), &info));
  EXPECT_EQ(info.lastUse, 1234567890LL);
  EXPECT_EQ(info.sampleRate, 32000);
  EXPECT_EQ(info.channels, 2);
  EXPECT_FALSE(LSoundCacheItemLastAccessTimeUpdate(kLSoundCacheItemSilence));
}
