// A process killed in the middle of writing a cache item: its half-written item
// must go at the next clean-up, while complete items, used or kept, stay whole.
#include <gtest/gtest.h>

#include <unistd.h>

#include "base/disk_space.h"
#include "base/platform_file.h"
#include "engine/sound_cache_cleanup.h"
#include "engine/sound_cache_item.h"
#include "engine/sound_cache_sink.h"
#include "engine/sound_cache_source.h"
#include "sound_cache_fixture.h"
#include "support/reporting_child.h"

namespace {

constexpr long long kBlockFrames = 1000;
constexpr int kChannels = 2;
// Blocks the writer has written before the parent may kill it.
constexpr long long kBlocksBeforeKill = 5;

struct Report {
  unsigned short item;
  long long frames;
};

// Writes a staircase into a new item for ever, telling the parent after every block.
[[noreturn]] void WriteItemUntilKilled(const std::string& folder, int reportFd) {
  LSoundCache& cache = LSoundCache::Instance();
  cache.FolderSet("");
  cache.FolderSet(folder.c_str());
  const unsigned short number = cache.ItemCreateNewAndIncRef();
  LSoundSink sink = LMakeSink<LSoundCacheSink>(44100, kChannels, LSoundCacheItemHandle::Adopt(number));
  const std::vector<float> stairs = Staircase(kBlockFrames * 1000, kChannels);
  for (long long block = 0;; block = (block + 1) % 1000) {
    sink.Write(stairs.data() + block * kBlockFrames * kChannels, kBlockFrames);
    const Report report{number, sink.GetPosition()};
    if (write(reportFd, &report, sizeof report) != sizeof report) _exit(1);
    LSleepMs(1);
  }
}

bool FileExists(const std::string& path) { return LFileExists(path.c_str()); }

}  // namespace

TEST_F(SoundCacheTest, AnItemHalfWrittenByAKilledProcessGoesAtTheNextCleanUpAndCompleteItemsStay) {
  // A complete item in use, and a complete unused one kept as the copy of an original file.
  LSoundCacheItemHandle used = AddItem(MakeStaircase(3000, kChannels));
  const std::string original = temp_.File("original.wav");
  WriteFileBytes(original, "RIFF");
  LSoundCacheItemHandle keptHandle = AddItem(MakeStaircase(2000, kChannels));
  ASSERT_TRUE(LSoundCacheItemOriginalFileDetailsSet(keptHandle.Number(), original.c_str()));
  ASSERT_TRUE(LSoundCacheItemLastAccessTimeUpdate(keptHandle.Number()));
  const unsigned short kept = keptHandle.Number();
  keptHandle.Reset();
  ASSERT_TRUE(LSoundCacheItemIsValid(kept));

  ReportingChild child([&](int reportFd) -> int { WriteItemUntilKilled(cacheFolder_, reportFd); });
  ASSERT_TRUE(child.Started());
  Report report{};
  for (long long blocks = 0; blocks < kBlocksBeforeKill; ++blocks) ASSERT_TRUE(child.Read(&report, sizeof report));
  ASSERT_TRUE(child.Kill());

  const unsigned short half = report.item;
  ASSERT_NE(half, used.Number());
  ASSERT_NE(half, kept);
  ASSERT_TRUE(FileExists(CachePath(half, kLSoundCacheExtAudio)));
  ASSERT_FALSE(FileExists(CachePath(half, kLSoundCacheExtInfo))) << "the description comes only at the end";
  EXPECT_FALSE(LSoundCacheItemIsValid(half));

  // Plenty of space: the clean-up keeps unused items for four weeks, but not half-written ones.
  LDiskFreeBytesOverride([](const char*) { return 100000LL * 1048576; });
  LSoundCacheCleanup(kLSoundCacheCleanupFreeSpace);
  for (const char* extension : {kLSoundCacheExtAudio, kLSoundCacheExtOverview, kLSoundCacheExtInfo}) {
    EXPECT_FALSE(FileExists(CachePath(half, extension))) << extension << " of the half-written item stayed";
  }
  EXPECT_TRUE(LSoundCacheItemIsValid(used.Number()));
  EXPECT_TRUE(LSoundCacheItemIsValid(kept));
  for (auto [item, frames] : {std::pair<unsigned short, long long>{used.Number(), 3000}, {kept, 2000}}) {
    LSoundSource source = LSoundCacheSourceOpen(item);
    ASSERT_EQ(source.GetEndSample(), frames);
    std::vector<float> samples(static_cast<std::size_t>(frames * kChannels));
    source.Read(samples.data(), frames);
    EXPECT_EQ(samples, Staircase(frames, kChannels)) << "item " << item;
  }
  LSoundCache::Instance().CacheItemDelete(kept);
}
