#pragma once
// LSoundCache: the folder of numbered working files that every opened, recorded
// or computed sound is decoded into once. An item n has the files "n.aud" (raw
// native float frames), "n.grf" (the peak overview), "n.audinfo" (its
// description, an SDF file), and may have "n.orbmp3" and "n.fft"; an item is
// written once by the thread that creates it and only read afterwards.
//
// The cache hands out item numbers, counts references to them and deletes an
// item's files when its last reference goes, unless the item is pinned or is a
// still-valid decoded copy of an untouched original file (kept for reuse and
// removed later by the clean-up, see sound_cache_cleanup.h).
//
// Threads: every operation may be called from any thread. One mutex guards the
// counts and flags; file work is done outside it.
// Processes: several running instances may share one folder. Each claims the
// numbers it counts with a record lock on one byte of the folder's lock file, and
// never deletes files of a number another instance claims. The claim is held for
// as long as this process counts the number: a claim refused while another
// instance briefly holds the number is waited for (at most kLLockWaitMs) and
// tried again with every later count change and clean-up until it is had.
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

#include "base/file_stream.h"
#include "base/string_long.h"

// Item numbers, unsigned 16 bit: 0 .. kLSoundCacheItemLast name items. Both
// reserved numbers are stored in cut lists on disk; never change them.
constexpr unsigned short kLSoundCacheItemLast = 65533;
constexpr unsigned short kLSoundCacheItemNone = 65534;     // no item; every operation ignores it
constexpr unsigned short kLSoundCacheItemSilence = 65535;  // silence, never has files

// Counts stop rising (and falling) here.
constexpr std::uint16_t kLSoundCacheCountSaturated = 65534;

// File extensions of an item. On disk; never change them.
inline constexpr const char* kLSoundCacheExtAudio = ".aud";
inline constexpr const char* kLSoundCacheExtOverview = ".grf";
inline constexpr const char* kLSoundCacheExtInfo = ".audinfo";
inline constexpr const char* kLSoundCacheExtMP3Frames = ".orbmp3";
inline constexpr const char* kLSoundCacheExtSpectrum = ".fft";
// Beside an item being recorded, or recovered after a crash and not yet offered:
// no release or clean-up deletes the item while it is there.
inline constexpr const char* kLSoundCacheExtRecording = ".recording";
// A description being replaced (kLSoundCacheExtInfo plus kLSoundCacheInfoTempSuffix).
inline constexpr const char* kLSoundCacheExtInfoTemp = ".audinfo.tmp";

// Change codes passed to the analyzers. Part of the analyzers' interface; never change them.
constexpr unsigned int kLSoundCacheChangeItemAdded = 1;  // an item was completed

// The environment variable that names the cache folder for scripts and tests,
// over the default and the configured working folder.
inline constexpr const char* kLSoundCacheFolderVariable = "SONVALE_CACHE_DIR";
// Setting ("Settings" domain) of the configured working folder, and of the clean-up.
inline constexpr const char* kLSoundCacheSettingsSection = "Cache";
inline constexpr const char* kLSoundCacheWorkingFolderKey = "WorkingFolder";

// What a cache analyzer attaches: told of changes to items and of every item the
// folder scan finds. Either function may be empty. Called on the calling thread,
// outside the cache's count mutex.
struct LSoundCacheAnalyzer {
  std::function<void(unsigned short item, unsigned int change)> change;
  std::function<void(unsigned short item)> scan;
};

class LSoundCache {
public:
  [[nodiscard]] static LSoundCache& Instance();

  // Folder. Setting a different folder clears every count, flag and override and
  // makes the next allocation scan the folder; the folder is created if missing.
  void FolderSet(const char* folder);
  // "<user data folder>/soundcache", replaced by the configured working folder,
  // both overridden by the environment variable. This is how the application
  // starts the cache, so it also starts the background clean-up unless told not to.
  void FolderSetDefault(bool cleanUp = true);
  [[nodiscard]] LStringLong Folder();

  // Counts. Numbers above kLSoundCacheItemLast are ignored by IncRef; counts
  // saturate at kLSoundCacheCountSaturated and then never change.
  void IncRef(unsigned short item);
  // Releases one reference; at the last one the item's files are deleted unless
  // it is pinned or a valid copy of an untouched original file.
  void DecRef(unsigned short item);

  // The lowest number with count 0 that is not in use, or kLSoundCacheItemNone.
  // Scans the folder first after the folder was set.
  [[nodiscard]] unsigned short ItemNumberGetNextAvailable();
  // Allocates a number with count 1 (the caller's reference); when none is free
  // deletes all unused files and tries once more. kLSoundCacheItemNone on failure.
  [[nodiscard]] unsigned short ItemCreateNewAndIncRef();

  // The path of one file of an item into out (kLPathMax bytes): empty for
  // silence; the override prefix plus extension; else folder/number plus
  // extension. False (and out empty) when there is no path or it does not fit.
  bool GetFilePath(unsigned short item, char* out, const char* extension);
  [[nodiscard]] LStringLong FilePath(unsigned short item, const char* extension);

  // Unlinks the item's five files and clears its in-use flag, without looking
  // at its count (callers do).
  void CacheItemDelete(unsigned short item);
  // Deletes every unused item whose last use is at or before cutoff (seconds since 1970).
  void ItemsDelete(long cutoff);
  // Deletes the files of every unused item in the folder.
  void DeleteCachedFiles();

  // Analyzers.
  void NotifyAnalyzerChange(unsigned short item, unsigned int change);
  [[nodiscard]] int AnalyzerAdd(LSoundCacheAnalyzer analyzer);
  void AnalyzerRemove(int id);

  // A pinned item's files are never deleted by releasing or by clean-up.
  void PinnedSet(unsigned short item, bool pinned);
  // An item with an override keeps its files at prefix + extension; an empty prefix removes it.
  void PathOverrideSet(unsigned short item, const char* prefix);

  [[nodiscard]] std::uint16_t RefCountGet(unsigned short item);
  [[nodiscard]] bool IsInUse(unsigned short item);
  [[nodiscard]] bool IsPinned(unsigned short item);
  // Numbers whose count is not 0; a suite checks it is 0 at its end.
  [[nodiscard]] int CountedItemCount();

  // Deletes the item's files if nobody in this process or another instance
  // counts it and it is not pinned. The clean-up uses it; true when deleted.
  bool ItemDeleteIfUnused(unsigned short item);
  // True when the number's count is 0 and it is not pinned (in this process).
  [[nodiscard]] bool IsUnused(unsigned short item);
  // Tries once more, without waiting, every claim another instance kept us from
  // taking. The clean-up calls it.
  void ClaimsPendingRetry();

private:
  LSoundCache();
  LSoundCache(const LSoundCache&) = delete;
  LSoundCache& operator=(const LSoundCache&) = delete;

  // Cross-process claim of a number, held through the lock file. Pending: counted
  // here, but another instance held the number exclusively when we asked.
  enum class Claim : std::uint8_t { None, Shared, Deleting, Allocating, Pending };
  bool ClaimSharedLocked(unsigned short item);
  void ClaimSharedWait(unsigned short item);
  void ClaimReleaseLocked(unsigned short item);
  bool ClaimExclusiveLocked(unsigned short item, Claim purpose);
  void ClaimExclusiveEndLocked(unsigned short item);

  void ScanIfPending();
  bool KeepAfterRelease(unsigned short item);
  bool FilesExist(unsigned short item);
  void FilePathLocked(unsigned short item, const char* extension, LStringLong& out);

  std::mutex mutex_;
  LStringLong folder_;
  std::vector<std::uint16_t> counts_;
  std::vector<std::uint8_t> pinned_;
  std::vector<std::uint8_t> inUse_;
  std::vector<Claim> claims_;
  std::vector<std::pair<unsigned short, LStringLong>> overrides_;
  std::unique_ptr<LFileStream> lockFile_;
  int lockFd_ = -1;
  bool scanPending_ = false;

  std::mutex analyzerMutex_;
  std::vector<std::pair<int, std::shared_ptr<LSoundCacheAnalyzer>>> analyzers_;
  int analyzerNextId_ = 1;
};

// The present time in seconds since 1970, as the cache sees it.
[[nodiscard]] long long LSoundCacheNow();
// Replaces the cache's clock (an empty function restores the real one). Tests only.
void LSoundCacheClockOverride(std::function<long long()> clock);

// Parses the number at the start of a cache file's name: -1 when the name does
// not start with a digit; values of 65536 and more give kLSoundCacheItemNone.
[[nodiscard]] int LSoundCacheItemNumberFromName(const char* name);
