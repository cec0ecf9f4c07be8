#include "engine/sound_cache.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstring>
#include <cstdlib>
#include <filesystem>
#include <thread>
#include <sys/wait.h>
#include <unistd.h>

#include "base/file_record_lock.h"
#include "base/file_stream.h"
#include "base/platform_file.h"
#include "base/user_settings.h"
#include "engine/sound_cache_cleanup.h"
#include "engine/sound_cache_item.h"
#include "engine/sound_cache_sink.h"
#include "engine/sound_cache_source.h"
#include "sound_cache_fixture.h"
#include "support/reporting_child.h"

namespace {

// The second process of the shared-folder test: set, it runs the helper test below.
constexpr const char* kSecondInstanceVariable = "SONVALE_TEST_SECOND_INSTANCE";
constexpr const char* kParentItemsVariable = "SONVALE_TEST_PARENT_ITEMS";

constexpr const char* kAllExtensions[] = {kLSoundCacheExtAudio, kLSoundCacheExtOverview, kLSoundCacheExtInfo,
                                          kLSoundCacheExtMP3Frames, kLSoundCacheExtSpectrum};

// Adds the two files that other layers keep beside an item.
void AddSideFiles(const std::string& aud) {
  std::string stem = aud.substr(0, aud.size() - std::strlen(kLSoundCacheExtAudio));
  WriteFileBytes(stem + kLSoundCacheExtMP3Frames, "frames");
  WriteFileBytes(stem + kLSoundCacheExtSpectrum, "spectra");
}

int FilesOf(const std::string& aud) {
  std::string stem = aud.substr(0, aud.size() - std::strlen(kLSoundCacheExtAudio));
  int count = 0;
  for (const char* extension : kAllExtensions) count += Exists(stem + extension) ? 1 : 0;
  return count;
}

void MoveModTime(const std::string& path, int seconds) {
  auto when = std::filesystem::last_write_time(path);
  std::filesystem::last_write_time(path, when + std::chrono::seconds(seconds));
}

}  // namespace

TEST_F(SoundCacheTest, CountsIgnoreTheReservedNumbersAndSaturate) {
  LSoundCache& cache = LSoundCache::Instance();
  cache.IncRef(kLSoundCacheItemNone);
  cache.IncRef(kLSoundCacheItemSilence);
  EXPECT_EQ(cache.RefCountGet(kLSoundCacheItemNone), 0);
  EXPECT_EQ(cache.RefCountGet(kLSoundCacheItemSilence), 0);
  cache.DecRef(kLSoundCacheItemNone);
  cache.DecRef(kLSoundCacheItemSilence);

  LSoundCacheItemHandle item = AddItem(MakeStaircase(100, 1));
  const unsigned short n = item.Number();
  for (int i = 0; i < 70000; ++i) cache.IncRef(n);
  EXPECT_EQ(cache.RefCountGet(n), kLSoundCacheCountSaturated);
  cache.DecRef(n);
  cache.DecRef(n);
  EXPECT_EQ(cache.RefCountGet(n), kLSoundCacheCountSaturated);
  EXPECT_TRUE(LSoundCacheItemIsValid(n));

  // A saturated count is stuck for good; a new folder is what clears it.
  EXPECT_EQ(item.Release(), n);
  cache.FolderSet(temp_.File("other").c_str());
  EXPECT_EQ(cache.RefCountGet(n), 0);
  cache.FolderSet(cacheFolder_.c_str());
  EXPECT_NE(cache.ItemNumberGetNextAvailable(), n);
  EXPECT_TRUE(cache.IsInUse(n)) << "found by the scan";
  cache.DecRef(n);
  EXPECT_FALSE(Exists(CachePath(n, kLSoundCacheExtAudio)));
}

TEST_F(SoundCacheTest, CountsStayExactWhenManyThreadsShareAnItem) {
  LSoundCacheItemHandle item = AddItem(MakeStaircase(100, 1));
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([&item] {
      for (int i = 0; i < 20000; ++i) {
        LSoundCacheItemHandle copy = item;
        LSoundCacheItemHandle another = copy;
      }
    });
  }
  for (auto& thread : threads) thread.join();
  EXPECT_EQ(LSoundCache::Instance().RefCountGet(item.Number()), 1);
  EXPECT_TRUE(LSoundCacheItemIsValid(item.Number()));
}

TEST_F(SoundCacheTest, TheLastReleaseDeletesAllFiveFilesUnlessPinned) {
  LSoundCache& cache = LSoundCache::Instance();
  LSoundCacheItemHandle item = AddItem(MakeStaircase(100, 2));
  const unsigned short n = item.Number();
  std::string aud = CachePath(n, kLSoundCacheExtAudio);
  AddSideFiles(aud);
  ASSERT_EQ(FilesOf(aud), 5);

  LSoundCacheItemHandle copy = item;
  EXPECT_EQ(cache.RefCountGet(n), 2);
  item.Reset();
  EXPECT_EQ(cache.RefCountGet(n), 1);
  EXPECT_EQ(FilesOf(aud), 5);

  cache.PinnedSet(n, true);
  copy.Reset();
  EXPECT_EQ(FilesOf(aud), 5) << "pinned";
  cache.DeleteCachedFiles();
  EXPECT_EQ(FilesOf(aud), 5) << "pinned";

  cache.PinnedSet(n, false);
  cache.IncRef(n);
  cache.DecRef(n);
  EXPECT_EQ(FilesOf(aud), 0);
  EXPECT_FALSE(cache.IsInUse(n));
}

TEST_F(SoundCacheTest, ACopyOfAnUntouchedOriginalIsKeptAndFoundAgainUntilTheOriginalChanges) {
  LSoundCache& cache = LSoundCache::Instance();
  std::string original = temp_.File("song.wav");
  WriteFileBytes(original, "not really a song");
  LFileDetails details;
  ASSERT_TRUE(LFileDetailsGet(original.c_str(), &details));

  LSoundCacheItemHandle item = AddItem(MakeStaircase(500, 2));
  const unsigned short n = item.Number();
  ASSERT_TRUE(LSoundCacheItemOriginalFileDetailsSet(n, original.c_str()));
  auto matches = [&](const std::string& path, long modTime, std::uint64_t size, std::uint32_t attributes) {
    return LSoundCacheItemOriginalFileDetailsMatch(n, path.c_str(), modTime, size, attributes);
  };
  EXPECT_TRUE(matches(original, details.modTime, details.size, details.attributes));
  EXPECT_FALSE(matches(original, details.modTime + 1, details.size, details.attributes));
  EXPECT_FALSE(matches(original, details.modTime, details.size + 1, details.attributes));
  EXPECT_FALSE(matches(original, details.modTime, details.size, details.attributes ^ 1));
  EXPECT_FALSE(matches(temp_.File("other.wav"), details.modTime, details.size, details.attributes));

  std::string aud = CachePath(n, kLSoundCacheExtAudio);
  AddSideFiles(aud);
  item.Reset();
  EXPECT_EQ(FilesOf(aud), 5) << "an untouched original keeps its copy";
  EXPECT_EQ(cache.RefCountGet(n), 0);

  // Reopening the untouched file reuses the item, with its audio intact.
  LSoundCacheItemHandle again = LSoundCacheItemFindForOriginalFile(original.c_str());
  ASSERT_EQ(again.Number(), n);
  EXPECT_EQ(cache.RefCountGet(n), 1);
  LSoundSource source = LSoundCacheSourceOpen(n);
  std::vector<float> frame(2);
  source.Seek(499);
  source.Read(frame.data(), 1);
  EXPECT_EQ(frame[1], StaircaseValue(499, 1));
  source.Close();
  again.Reset();
  EXPECT_EQ(FilesOf(aud), 5);

  // A new modification time alone is enough to make the same release delete it.
  MoveModTime(original, 5);
  EXPECT_FALSE(LSoundCacheItemFindForOriginalFile(original.c_str()).IsItem());
  cache.IncRef(n);
  cache.DecRef(n);
  EXPECT_EQ(FilesOf(aud), 0);

  // And so is a new size.
  LSoundCacheItemHandle second = AddItem(MakeStaircase(10, 1));
  const unsigned short n2 = second.Number();
  ASSERT_TRUE(LSoundCacheItemOriginalFileDetailsSet(n2, original.c_str()));
  std::string aud2 = CachePath(n2, kLSoundCacheExtAudio);
  second.Reset();
  EXPECT_EQ(FilesOf(aud2), 3);
  WriteFileBytes(original, "a longer text than before");
  cache.IncRef(n2);
  cache.DecRef(n2);
  EXPECT_EQ(FilesOf(aud2), 0);
}

TEST_F(SoundCacheTest, ASameLookingFileElsewhereUnderTheSameNameOrRewrittenWithinTheSecondIsAnotherFile) {
  namespace fs = std::filesystem;
  fs::create_directories(temp_.File("a"));
  fs::create_directories(temp_.File("b"));
  const std::string inA = temp_.File("a/x.wav");
  const std::string inB = temp_.File("b/x.wav");
  WriteFileBytes(inA, "the same bytes");
  WriteFileBytes(inB, "the same bytes");
  const auto when = fs::last_write_time(inA);
  fs::last_write_time(inB, when);
  const fs::path cwd = fs::current_path();

  // Opened as typed, "x.wav", first in a, then in b.
  fs::current_path(temp_.File("a"));
  LSoundCacheItemHandle item = AddItem(MakeStaircase(50, 1));
  const unsigned short n = item.Number();
  ASSERT_TRUE(LSoundCacheItemOriginalFileDetailsSet(n, "x.wav"));
  item.Reset();
  fs::current_path(temp_.File("b"));
  const bool foundInB = LSoundCacheItemFindForOriginalFile("x.wav").IsItem();
  fs::current_path(temp_.File("a"));
  const bool foundInA = LSoundCacheItemFindForOriginalFile("x.wav").Number() == n;
  fs::current_path(cwd);
  EXPECT_FALSE(foundInB) << "b's file was given a's audio";
  EXPECT_TRUE(foundInA);
  EXPECT_TRUE(LSoundCacheItemFindForOriginalFile(inA.c_str()).IsItem()) << "the same file by its full path";

  // The same name, size, second and mode, but a new file or a new time within the second.
  fs::last_write_time(inA, when + std::chrono::nanoseconds(1));
  EXPECT_FALSE(LSoundCacheItemFindForOriginalFile(inA.c_str()).IsItem());
  fs::last_write_time(inA, when);
  fs::rename(inB, inA);
  EXPECT_FALSE(LSoundCacheItemFindForOriginalFile(inA.c_str()).IsItem());
  LSoundCache::Instance().CacheItemDelete(n);
}

TEST_F(SoundCacheTest, AllocationTakesTheLowestNumberNeitherCountedNorOnDisk) {
  LSoundCache& cache = LSoundCache::Instance();
  std::string folder = temp_.File("prefilled");
  ASSERT_TRUE(std::filesystem::create_directory(folder));
  for (const char* name : {"0.aud", "1.aud", "123abc.aud", "70000.aud", "2.grf", "notanumber.aud"})
    WriteFileBytes(folder + "/" + name, "x");
  cache.FolderSet(folder.c_str());

  EXPECT_EQ(cache.ItemNumberGetNextAvailable(), 2) << "a stray overview does not take a number";
  EXPECT_TRUE(cache.IsInUse(0));
  EXPECT_TRUE(cache.IsInUse(123));
  EXPECT_FALSE(cache.IsInUse(2));
  EXPECT_EQ(cache.ItemNumberGetNextAvailable(), 2) << "asking does not allocate";

  // Files of the number appear after the scan: allocation passes over it.
  WriteFileBytes(folder + "/2.audinfo", "x");
  unsigned short a = cache.ItemCreateNewAndIncRef();
  EXPECT_EQ(a, 3);
  EXPECT_EQ(cache.RefCountGet(a), 1);
  EXPECT_TRUE(cache.IsInUse(a));
  unsigned short b = cache.ItemCreateNewAndIncRef();
  EXPECT_EQ(b, 4);

  cache.DeleteCachedFiles();
  for (const char* name : {"123abc.aud", "0.aud", "2.grf"}) EXPECT_FALSE(Exists(folder + "/" + name)) << name;
  // Numbers past the range count as no item and stay.
  for (const char* name : {"70000.aud", "notanumber.aud"}) EXPECT_TRUE(Exists(folder + "/" + name)) << name;
  EXPECT_FALSE(cache.IsInUse(0));
  EXPECT_EQ(cache.ItemNumberGetNextAvailable(), 0);
  cache.DecRef(a);
  cache.DecRef(b);
  cache.FolderSet(cacheFolder_.c_str());
}

TEST_F(SoundCacheTest, WhenEveryNumberIsTakenUnusedFilesAreClearedOnceForASecondTry) {
  LSoundCache& cache = LSoundCache::Instance();
  std::string folder = temp_.File("full");
  ASSERT_TRUE(std::filesystem::create_directory(folder));
  WriteFileBytes(folder + "/7.aud", "left over");
  cache.FolderSet(folder.c_str());
  for (unsigned n = 0; n <= kLSoundCacheItemLast; ++n) {
    if (n != 7) cache.IncRef(static_cast<unsigned short>(n));
  }
  EXPECT_EQ(cache.ItemNumberGetNextAvailable(), kLSoundCacheItemNone);
  unsigned short got = cache.ItemCreateNewAndIncRef();
  EXPECT_EQ(got, 7);
  EXPECT_FALSE(Exists(folder + "/7.aud"));
  EXPECT_EQ(cache.ItemCreateNewAndIncRef(), kLSoundCacheItemNone);
  for (unsigned n = 0; n <= kLSoundCacheItemLast; ++n) cache.DecRef(static_cast<unsigned short>(n));
  EXPECT_EQ(cache.CountedItemCount(), 0);
  cache.FolderSet(cacheFolder_.c_str());
}

TEST_F(SoundCacheTest, PathsComeFromTheFolderOrAnOverrideAndSilenceHasNone) {
  LSoundCache& cache = LSoundCache::Instance();
  char path[kLPathMax];
  EXPECT_TRUE(cache.GetFilePath(12, path, kLSoundCacheExtAudio));
  EXPECT_EQ(std::string(path), cacheFolder_ + "/12.aud");
  EXPECT_FALSE(cache.GetFilePath(kLSoundCacheItemSilence, path, kLSoundCacheExtAudio));
  EXPECT_STREQ(path, "");

  cache.PathOverrideSet(12, "/elsewhere/take");
  EXPECT_TRUE(cache.GetFilePath(12, path, kLSoundCacheExtInfo));
  EXPECT_STREQ(path, "/elsewhere/take.audinfo");
  cache.PathOverrideSet(12, std::string(300, 'x').c_str());
  EXPECT_FALSE(cache.GetFilePath(12, path, kLSoundCacheExtAudio)) << "does not fit 260 bytes";
  cache.PathOverrideSet(12, "");
  EXPECT_EQ(cache.FilePath(12, kLSoundCacheExtOverview), cacheFolder_ + "/12.grf");

  // Deleting an item removes the files wherever they are and ignores missing ones.
  std::string prefix = temp_.File("moved");
  cache.PathOverrideSet(40, prefix.c_str());
  WriteFileBytes(prefix + ".aud", "a");
  WriteFileBytes(prefix + ".fft", "f");
  cache.CacheItemDelete(40);
  EXPECT_FALSE(Exists(prefix + ".aud"));
  EXPECT_FALSE(Exists(prefix + ".fft"));
}

TEST_F(SoundCacheTest, TheFolderComesFromTheEnvironmentTheSettingOrTheUserDataFolder) {
  LSoundCache& cache = LSoundCache::Instance();
  const char* savedData = std::getenv("XDG_DATA_HOME");
  std::string saved = savedData ? savedData : "";
  const char* savedForced = std::getenv(kLSoundCacheFolderVariable);
  std::string forcedSaved = savedForced ? savedForced : "";

  setenv("XDG_DATA_HOME", temp_.File("data").c_str(), 1);
  unsetenv(kLSoundCacheFolderVariable);
  cache.FolderSetDefault();
  EXPECT_EQ(cache.Folder(), temp_.File("data") + "/sonvale/soundcache");
  EXPECT_TRUE(std::filesystem::is_directory(cache.Folder()));

  ASSERT_TRUE(LUserSettings::Instance().Set(kLSettingsDomain, kLSoundCacheSettingsSection,
                                            kLSoundCacheWorkingFolderKey, temp_.File("work").c_str()));
  cache.FolderSetDefault();
  EXPECT_EQ(cache.Folder(), temp_.File("work"));

  setenv(kLSoundCacheFolderVariable, temp_.File("forced").c_str(), 1);
  cache.FolderSetDefault();
  EXPECT_EQ(cache.Folder(), temp_.File("forced"));

  if (savedData) setenv("XDG_DATA_HOME", saved.c_str(), 1); else unsetenv("XDG_DATA_HOME");
  if (savedForced) setenv(kLSoundCacheFolderVariable, forcedSaved.c_str(), 1); else unsetenv(kLSoundCacheFolderVariable);
  cache.FolderSet(cacheFolder_.c_str());
}

TEST_F(SoundCacheTest, AnalyzersHearOfNewItemsAndOfWhatTheScanFinds) {
  LSoundCache& cache = LSoundCache::Instance();
  std::vector<std::pair<unsigned short, unsigned>> changes;
  std::vector<unsigned short> scanned;
  int id = cache.AnalyzerAdd({[&](unsigned short item, unsigned int change) { changes.emplace_back(item, change); },
                              [&](unsigned short item) { scanned.push_back(item); }});
  LSoundCacheItemHandle item = AddItem(MakeStaircase(10, 1));
  ASSERT_EQ(changes.size(), 1u);
  EXPECT_EQ(changes[0].first, item.Number());
  EXPECT_EQ(changes[0].second, kLSoundCacheChangeItemAdded);

  cache.FolderSet(temp_.File("elsewhere").c_str());
  cache.FolderSet(cacheFolder_.c_str());
  const unsigned short n = item.Release();  // its count went with the folder change
  EXPECT_EQ(cache.ItemNumberGetNextAvailable(), n + 1);
  EXPECT_EQ(scanned, std::vector<unsigned short>{n});
  cache.AnalyzerRemove(id);
  cache.NotifyAnalyzerChange(3, 9);
  EXPECT_EQ(changes.size(), 1u);
  cache.DeleteCachedFiles();
}

TEST_F(SoundCacheTest, AReaderGivesUpOnADescriptionLockedForLongerThanThreeSeconds) {
  LSoundCacheItemHandle item = AddItem(MakeStaircase(10, 1, 8000));
  std::string info = CachePath(item.Number(), kLSoundCacheExtInfo);
  int rate = -1;
  unsigned char channels = 9;
  {
    LFileStream writer(LFileOpen(info.c_str(), kLFileWrite, LFileLock::Exclusive));
    ASSERT_TRUE(writer.IsOpen());
    EXPECT_FALSE(LSoundCacheItemAudioInfoGet(info.c_str(), rate, channels));
    EXPECT_EQ(rate, 0);
    EXPECT_EQ(channels, 0);

    // A lock let go during the wait is taken, and the reader goes on.
    std::thread release([&writer] {
      std::this_thread::sleep_for(std::chrono::milliseconds(300));
      LFileUnlock(writer.Descriptor());
    });
    EXPECT_TRUE(LSoundCacheItemAudioInfoGet(info.c_str(), rate, channels));
    release.join();
  }
  EXPECT_EQ(rate, 8000);
  EXPECT_EQ(channels, 1);
}

// Another instance holds a number exclusively (as it does while deleting) just
// when this one takes its first reference: the claim is had once it lets go, so
// its later clean-up cannot delete what this instance now uses.
TEST_F(SoundCacheTest, AClaimRefusedWhileAnotherInstanceHeldTheNumberIsTakenOnceItLetsGo) {
  LSoundCache& cache = LSoundCache::Instance();
  LSoundCacheItemHandle item = AddItem(MakeStaircase(100, 1));
  const unsigned short n = item.Number();
  cache.PinnedSet(n, true);  // unused here, files kept
  item.Reset();
  cache.PinnedSet(n, false);

  int go[2];
  ASSERT_EQ(pipe(go), 0);
  const std::string folder = cacheFolder_;
  ReportingChild other([&](int report) -> int {
    cache.FolderSet("");
    cache.FolderSet(folder.c_str());
    const int lockFile = LFileOpen((folder + "/items.lock").c_str(), kLFileWrite);
    if (!LFileRecordLock(lockFile, n, 1, LFileLock::Exclusive)) return 2;
    char byte = 1;
    if (write(report, &byte, 1) != 1) return 3;
    LSleepMs(300);
    (void)LFileRecordLock(lockFile, n, 1, LFileLock::None);
    if (read(go[0], &byte, 1) != 1) return 4;
    byte = cache.ItemDeleteIfUnused(n) ? 1 : 0;
    if (write(report, &byte, 1) != 1) return 5;
    for (;;) LSleepMs(1000);
  });
  ASSERT_TRUE(other.Started());
  char held = 0;
  ASSERT_TRUE(other.Read(&held, 1));
  cache.IncRef(n);
  char byte = 1;
  ASSERT_EQ(write(go[1], &byte, 1), 1);
  char deleted = 1;
  ASSERT_TRUE(other.Read(&deleted, 1));
  EXPECT_EQ(deleted, 0) << "the other instance deleted an item in use here";
  EXPECT_TRUE(LSoundCacheItemIsValid(n));
  ASSERT_TRUE(other.Kill());
  close(go[0]);
  close(go[1]);
  cache.DecRef(n);
}

// Two instances sharing one folder: this process holds an allocated number with
// no files yet and a complete item; the second instance allocates, releases and
// clears everything it may, and both of ours survive.
TEST_F(SoundCacheTest, TwoProcessesSharingAFolderNeverDeleteEachOthersItems) {
  LSoundCache& cache = LSoundCache::Instance();
  unsigned short bare = cache.ItemCreateNewAndIncRef();
  LSoundCacheItemHandle item = AddItem(MakeStaircase(3000, 2));
  ASSERT_EQ(bare, 0);
  ASSERT_EQ(item.Number(), 1);
  ASSERT_TRUE(LSoundCacheItemLastAccessTimeUpdate(item.Number()));

  std::string folderVar = std::string(kLSoundCacheFolderVariable) + "=" + cacheFolder_;
  std::string itemsVar = std::string(kParentItemsVariable) + "=" + std::to_string(bare) + "," +
                         std::to_string(item.Number());
  std::string markVar = std::string(kSecondInstanceVariable) + "=1";
  std::string settingsVar = "XDG_CONFIG_HOME=" + temp_.File("child-config");
  std::string filter = "--gtest_filter=SoundCacheSecondInstance.*";
  char* argv[] = {const_cast<char*>("engine_tests"), filter.data(), nullptr};
  char* envp[] = {folderVar.data(), itemsVar.data(), markVar.data(), settingsVar.data(), nullptr};
  char self[4096];
  ssize_t selfLength = readlink("/proc/self/exe", self, sizeof self - 1);
  ASSERT_GT(selfLength, 0);
  self[selfLength] = '\0';

  pid_t child = fork();
  ASSERT_GE(child, 0);
  if (child == 0) {
    execve(self, argv, envp);
    _exit(127);
  }
  int status = 0;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  ASSERT_TRUE(WIFEXITED(status));
  EXPECT_EQ(WEXITSTATUS(status), 0) << "the second instance found a fault";

  EXPECT_TRUE(LSoundCacheItemIsValid(item.Number()));
  LSoundSource source = LSoundCacheSourceOpen(item.Number());
  std::vector<float> frame(2);
  source.Seek(2999);
  source.Read(frame.data(), 1);
  EXPECT_EQ(frame[0], StaircaseValue(2999, 0));
  source.Close();
  // The bare number is still ours to write.
  long long length = 0;
  LSoundSink sink = LMakeSink<LSoundCacheSink>(8000, 1, LSoundCacheItemHandle::Adopt(bare), &length);
  EXPECT_FALSE(sink.HasError());
  LSoundCacheItemHandle keep(bare);
  sink.Close();
  EXPECT_TRUE(LSoundCacheItemIsValid(bare));
}

TEST(SoundCacheSecondInstance, ClearsWhatItMayAndLeavesTheFirstInstancesItems) {
  const char* parentItems = std::getenv(kParentItemsVariable);
  if (!std::getenv(kSecondInstanceVariable) || !parentItems) GTEST_SKIP() << "runs only as the second instance";
  unsigned short bare = static_cast<unsigned short>(std::atoi(parentItems));
  unsigned short held = static_cast<unsigned short>(std::atoi(std::strchr(parentItems, ',') + 1));
  LSoundCache& cache = LSoundCache::Instance();
  cache.FolderSetDefault();
  ASSERT_FALSE(cache.Folder().empty());

  LProcessInterfaceQuiet process;
  LSoundCacheItemHandle mine;
  long long length = 0;
  ASSERT_EQ(LSoundCacheItemAdd(process, MakeStaircase(100, 1), mine, length), kLProcessSuccess);
  EXPECT_NE(mine.Number(), bare);
  EXPECT_NE(mine.Number(), held);
  std::string myAudio = cache.FilePath(mine.Number(), kLSoundCacheExtAudio);
  mine.Reset();
  EXPECT_FALSE(Exists(myAudio)) << "our own released item goes";

  // Stray releases and every kind of clearing.
  cache.IncRef(held);
  cache.DecRef(held);
  cache.DecRef(bare);
  cache.DeleteCachedFiles();
  cache.ItemsDelete(0x7FFFFFFF);
  LSoundCacheCleanup(kLSoundCacheCleanupAll);
  EXPECT_TRUE(LSoundCacheItemIsValid(held));
  EXPECT_NE(cache.ItemCreateNewAndIncRef(), bare);
  EXPECT_NE(cache.ItemNumberGetNextAvailable(), held);
}
