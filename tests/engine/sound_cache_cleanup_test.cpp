#include "engine/sound_cache_cleanup.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <map>

#include "base/disk_space.h"
#include "base/user_settings.h"
#include "engine/sound_cache_audio_info.h"
#include "engine/sound_cache_item.h"
#include "sound_cache_fixture.h"

namespace {

constexpr long long kNow = 1700000000;
constexpr long long kDay = 86400;
constexpr long long kMinute = 60;
constexpr long long kDeleteAll = -2;
constexpr long long kNoAgeLimit = -1;
constexpr long kRetentionUnset = -1000;

struct CleanupCase {
  const char* name;
  int mode;
  long long freeMB;  // -1: the volume cannot be measured
  long retentionDays;
  long long expected;  // kDeleteAll, kNoAgeLimit, or the age limit in seconds
};

void PrintTo(const CleanupCase& c, std::ostream* os) { *os << c.name; }

// Ages of the unused items: ten minutes either side of every limit in use, one fresh, one very old.
std::vector<long long> Ages() {
  std::vector<long long> ages = {kMinute, 60 * kDay};
  for (long long limit : {3600LL, kDay, 7 * kDay, 10 * kDay, 14 * kDay, 28 * kDay, 30 * kDay}) {
    ages.push_back(limit - 10 * kMinute);
    ages.push_back(limit + 10 * kMinute);
  }
  return ages;
}

class SoundCacheCleanupTest : public SoundCacheTest, public ::testing::WithParamInterface<CleanupCase> {
protected:
  // An unused item kept on disk as the copy of an untouched original, last used age seconds ago.
  unsigned short KeptItem(long long age, bool withLastUse = true) {
    LSoundCacheClockOverride([age] { return kNow - age; });
    LSoundCacheItemHandle item = AddItem(MakeStaircase(10, 1));
    LSoundCacheClockOverride([] { return kNow; });
    EXPECT_TRUE(LSoundCacheItemOriginalFileDetailsSet(item.Number(), original_.c_str()));
    // As an older build left them.
    if (!withLastUse) {
      EXPECT_TRUE(LSoundCacheAudioInfoModify(CachePath(item.Number(), kLSoundCacheExtInfo).c_str(),
                                             [](LSoundCacheAudioInfo& info) { info.hasLastUse = false; }));
    }
    unsigned short number = item.Number();
    item.Reset();
    EXPECT_TRUE(LSoundCacheItemIsValid(number));
    return number;
  }

  void SetUp() override {
    SoundCacheTest::SetUp();
    original_ = temp_.File("original.wav");
    WriteFileBytes(original_, "the original");
    LSoundCacheClockOverride([] { return kNow; });
  }

  std::string original_;
};

TEST_P(SoundCacheCleanupTest, DeletesByTheStaggeredLimits) {
  const CleanupCase& c = GetParam();
  LSoundCache& cache = LSoundCache::Instance();
  if (c.retentionDays != kRetentionUnset) {
    ASSERT_TRUE(LUserSettings::Instance().SetInt(kLSettingsDomain, kLSoundCacheSettingsSection,
                                                 kLSoundCacheRetentionDaysKey, c.retentionDays));
  }
  std::map<unsigned short, long long> aged;
  for (long long age : Ages()) aged[KeptItem(age)] = age;
  unsigned short undated = KeptItem(0, false);
  unsigned short broken = KeptItem(60 * kDay);
  ASSERT_EQ(std::remove(CachePath(broken, kLSoundCacheExtOverview).c_str()), 0);
  unsigned short pinned = KeptItem(60 * kDay);
  cache.PinnedSet(pinned, true);
  LSoundCacheItemHandle counted = AddItem(MakeStaircase(10, 1));
  LSoundCacheClockOverride([] { return kNow - 60 * kDay; });
  ASSERT_TRUE(LSoundCacheItemLastAccessTimeUpdate(counted.Number()));
  LSoundCacheClockOverride([] { return kNow; });

  const long long freeMB = c.freeMB;
  LDiskFreeBytesOverride([freeMB](const char*) { return freeMB < 0 ? -1LL : freeMB * 1048576LL; });
  LSoundCacheCleanup(c.mode);

  for (const auto& [number, age] : aged) {
    bool kept = c.expected == kNoAgeLimit || (c.expected != kDeleteAll && age < c.expected);
    EXPECT_EQ(LSoundCacheItemIsValid(number), kept) << "last used " << age << " s ago";
    EXPECT_EQ(Exists(CachePath(number, kLSoundCacheExtAudio)), kept);
  }
  EXPECT_EQ(LSoundCacheItemIsValid(undated), c.expected != kDeleteAll) << "no last use: only clearing all takes it";
  if (c.expected > 0) {
    LSoundCacheAudioInfo info;
    ASSERT_TRUE(LSoundCacheAudioInfoLoad(CachePath(undated, kLSoundCacheExtInfo).c_str(), &info));
    EXPECT_EQ(info.lastUse, kNow) << "an undated item ages from its first clean-up";
  }
  EXPECT_FALSE(Exists(CachePath(broken, kLSoundCacheExtAudio))) << "an invalid item always goes";
  EXPECT_FALSE(Exists(CachePath(broken, kLSoundCacheExtInfo)));
  EXPECT_TRUE(LSoundCacheItemIsValid(pinned));
  EXPECT_TRUE(LSoundCacheItemIsValid(counted.Number()));

  cache.PinnedSet(pinned, false);
  counted.Reset();
  cache.DeleteCachedFiles();
}

constexpr long long kHour = 3600;

INSTANTIATE_TEST_SUITE_P(
    Limits, SoundCacheCleanupTest,
    ::testing::Values(
        CleanupCase{"FreeSpaceBelow500ClearsAll", kLSoundCacheCleanupFreeSpace, 499, kRetentionUnset, kDeleteAll},
        CleanupCase{"FreeSpaceUnmeasuredCountsAsNone", kLSoundCacheCleanupFreeSpace, -1, kRetentionUnset, kDeleteAll},
        CleanupCase{"FreeSpaceAt500KeepsAnHour", kLSoundCacheCleanupFreeSpace, 500, kRetentionUnset, kHour},
        CleanupCase{"FreeSpaceAt999KeepsAnHour", kLSoundCacheCleanupFreeSpace, 999, kRetentionUnset, kHour},
        CleanupCase{"FreeSpaceAt1000KeepsADay", kLSoundCacheCleanupFreeSpace, 1000, kRetentionUnset, kDay},
        CleanupCase{"FreeSpaceAt1999KeepsADay", kLSoundCacheCleanupFreeSpace, 1999, kRetentionUnset, kDay},
        CleanupCase{"FreeSpaceAt2000KeepsFourWeeks", kLSoundCacheCleanupFreeSpace, 2000, kRetentionUnset, 28 * kDay},
        CleanupCase{"RetentionBelow2000ClearsAll", kLSoundCacheCleanupRetention, 1999, 30, kDeleteAll},
        CleanupCase{"RetentionAt2000KeepsADay", kLSoundCacheCleanupRetention, 2000, 30, kDay},
        CleanupCase{"RetentionAt9999KeepsADay", kLSoundCacheCleanupRetention, 9999, 30, kDay},
        CleanupCase{"RetentionAt10000IsCappedAtTwoWeeks", kLSoundCacheCleanupRetention, 10000, 30, 14 * kDay},
        CleanupCase{"RetentionAt99999IsCappedAtTwoWeeks", kLSoundCacheCleanupRetention, 99999, 30, 14 * kDay},
        CleanupCase{"RetentionAt100000KeepsTheSetting", kLSoundCacheCleanupRetention, 100000, 30, 30 * kDay},
        CleanupCase{"RetentionShorterThanTheCapIsKept", kLSoundCacheCleanupRetention, 50000, 7, 7 * kDay},
        CleanupCase{"RetentionUnsetIsFourWeeks", kLSoundCacheCleanupRetention, 200000, kRetentionUnset, 28 * kDay},
        CleanupCase{"RetentionOfZeroClearsAll", kLSoundCacheCleanupRetention, 200000, 0, kDeleteAll},
        CleanupCase{"TwoWeeksBelow5000ClearsAll", kLSoundCacheCleanupTwoWeeks, 4999, kRetentionUnset, kDeleteAll},
        CleanupCase{"TwoWeeksAt5000KeepsTwoWeeks", kLSoundCacheCleanupTwoWeeks, 5000, kRetentionUnset, 14 * kDay},
        CleanupCase{"AllClearsAllWhateverIsFree", kLSoundCacheCleanupAll, 1000000, kRetentionUnset, kDeleteAll},
        CleanupCase{"AnUnknownModeOnlyRemovesInvalidItems", 0, 0, kRetentionUnset, kNoAgeLimit},
        CleanupCase{"ModeFiveIsUnknownToo", 5, 100, kRetentionUnset, kNoAgeLimit}),
    [](const ::testing::TestParamInfo<CleanupCase>& info) { return std::string(info.param.name); });

}  // namespace

TEST_F(SoundCacheTest, ItemsDeleteTakesItemsLastUsedAtOrBeforeTheCutoff) {
  std::string original = temp_.File("o.wav");
  WriteFileBytes(original, "o");
  std::vector<unsigned short> items;
  for (long long when : {999LL, 1000LL, 1001LL}) {
    LSoundCacheItemHandle item = AddItem(MakeStaircase(10, 1));
    ASSERT_TRUE(LSoundCacheItemOriginalFileDetailsSet(item.Number(), original.c_str()));
    LSoundCacheClockOverride([when] { return when; });
    ASSERT_TRUE(LSoundCacheItemLastAccessTimeUpdate(item.Number()));
    items.push_back(item.Number());
  }
  LSoundCache::Instance().ItemsDelete(1000);
  EXPECT_FALSE(LSoundCacheItemIsValid(items[0]));
  EXPECT_FALSE(LSoundCacheItemIsValid(items[1]));
  EXPECT_TRUE(LSoundCacheItemIsValid(items[2]));
  LSoundCache::Instance().DeleteCachedFiles();
}

TEST_F(SoundCacheTest, TheCleanUpRunsWhenTheApplicationStartsAndWhenAnItemIsAddedWithLittleSpaceLeft) {
  LSoundCache& cache = LSoundCache::Instance();
  const std::string original = temp_.File("o.wav");
  WriteFileBytes(original, "o");
  // Unused copies of an untouched original, dated when they were made.
  auto keptItem = [&](long long made) {
    LSoundCacheClockOverride([made] { return made; });
    LSoundCacheItemHandle item = AddItem(MakeStaircase(10, 1));
    EXPECT_TRUE(LSoundCacheItemOriginalFileDetailsSet(item.Number(), original.c_str()));
    LSoundCacheAudioInfo info;
    EXPECT_TRUE(LSoundCacheAudioInfoLoad(CachePath(item.Number(), kLSoundCacheExtInfo).c_str(), &info));
    EXPECT_EQ(info.lastUse, made);
    return item.Number();
  };
  const unsigned short old = keptItem(kNow - 60 * kDay);
  const unsigned short fresh = keptItem(kNow);
  ASSERT_TRUE(LSoundCacheItemIsValid(old));
  LDiskFreeBytesOverride([](const char*) { return 50000LL * 1048576; });

  // The application's start: the folder set by default, the first run in the background.
  const char* saved = std::getenv(kLSoundCacheFolderVariable);
  const std::string savedValue = saved ? saved : "";
  setenv(kLSoundCacheFolderVariable, cacheFolder_.c_str(), 1);
  cache.FolderSet("");
  cache.FolderSetDefault();
  LSoundCacheCleanupBackgroundStop();
  if (saved) setenv(kLSoundCacheFolderVariable, savedValue.c_str(), 1); else unsetenv(kLSoundCacheFolderVariable);
  EXPECT_FALSE(LSoundCacheItemIsValid(old)) << "unused for 60 days";
  EXPECT_TRUE(LSoundCacheItemIsValid(fresh));

  // Adding leaves under 2000 MB free: unused items make room first.
  LDiskFreeBytesOverride([](const char*) { return 1500LL * 1048576; });
  LSoundCacheItemHandle added = AddItem(MakeStaircase(10, 1));
  EXPECT_TRUE(added.IsItem());
  EXPECT_FALSE(LSoundCacheItemIsValid(fresh));
  EXPECT_TRUE(LSoundCacheItemIsValid(added.Number()));
}
