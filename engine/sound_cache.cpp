#include "engine/sound_cache.h"

#include <cstdlib>
#include <cstring>
#include <ctime>
#include <string>

#include "base/environment.h"
#include "base/file_record_lock.h"
#include "base/file_stream.h"
#include "base/folder_list.h"
#include "base/platform_file.h"
#include "base/user_folders.h"
#include "base/user_settings.h"
#include "engine/sound_cache_audio_info.h"
#include "engine/sound_cache_cleanup.h"

namespace {

constexpr std::size_t kNumbers = 65536;

// Sub-folder of the user's data folder that holds the cache by default.
constexpr const char* kDefaultFolderName = "/soundcache";
// The file whose bytes n are the claims of running instances on item n. Shared
// between instances; never rename it.
constexpr const char* kLockFileName = "/items.lock";

// The files of an item, in the order they are deleted.
constexpr const char* kItemExtensions[] = {kLSoundCacheExtAudio,     kLSoundCacheExtOverview, kLSoundCacheExtInfo,
                                           kLSoundCacheExtMP3Frames, kLSoundCacheExtSpectrum, kLSoundCacheExtInfoTemp};

std::mutex gClockMutex;
std::function<long long()> gClock;

}  // namespace

long long LSoundCacheNow() {
  {
    std::lock_guard<std::mutex> lock(gClockMutex);
    if (gClock) return gClock();
  }
  return static_cast<long long>(std::time(nullptr));
}

void LSoundCacheClockOverride(std::function<long long()> clock) {
  std::lock_guard<std::mutex> lock(gClockMutex);
  gClock = std::move(clock);
}

int LSoundCacheItemNumberFromName(const char* name) {
  if (!name || name[0] < '0' || name[0] > '9') return -1;
  long value = 0;
  for (const char* p = name; *p >= '0' && *p <= '9'; ++p) {
    value = value * 10 + (*p - '0');
    if (value >= static_cast<long>(kNumbers)) return kLSoundCacheItemNone;
  }
  return static_cast<int>(value);
}

LSoundCache& LSoundCache::Instance() {
  // Never destroyed: handles in other static objects may release items during exit.
  static LSoundCache* instance = new LSoundCache();
  return *instance;
}

LSoundCache::LSoundCache()
    : counts_(kNumbers, 0), pinned_(kNumbers, 0), inUse_(kNumbers, 0), claims_(kNumbers, Claim::None) {}

void LSoundCache::FolderSet(const char* folder) {
  LStringLong path = folder ? folder : "";
  while (path.size() > 1 && path.back() == '/') path.pop_back();
  if (path.size() >= static_cast<std::size_t>(kLPathMax)) return;
  {
    std::lock_guard<std::mutex> lock(mutex_);
    if (path == folder_) return;
  }
  // The background clean-up works on the folder it started with.
  LSoundCacheCleanupBackgroundStop();
  auto lockFile = std::make_unique<LFileStream>(-1);
  if (!path.empty() && LFolderCreate(path))
    lockFile = std::make_unique<LFileStream>(LFileOpen((path + kLockFileName).c_str(), kLFileWrite | kLFileCreate));
  {
    std::lock_guard<std::mutex> lock(mutex_);
    folder_ = path;
    // The old file closes as lockFile goes, dropping every claim this instance held in the old folder.
    std::swap(lockFile_, lockFile);
    lockFd_ = lockFile_->Descriptor();
    std::fill(counts_.begin(), counts_.end(), 0);
    std::fill(pinned_.begin(), pinned_.end(), 0);
    std::fill(inUse_.begin(), inUse_.end(), 0);
    std::fill(claims_.begin(), claims_.end(), Claim::None);
    overrides_.clear();
    scanPending_ = true;
  }
}

void LSoundCache::FolderSetDefault(bool cleanUp) {
  LStringLong folder = LUserDataFolder() + kDefaultFolderName;
  if (const char* forced = LEnvironmentGet(kLSoundCacheFolderVariable); forced && *forced) {
    folder = forced;
  } else {
    LStringLong working = LUserSettings::Instance().Get(kLSettingsDomain, kLSoundCacheSettingsSection,
                                                        kLSoundCacheWorkingFolderKey, "");
    if (!working.empty() && working != folder && working.size() < static_cast<std::size_t>(kLPathMax))
      folder = working;
  }
  FolderSet(folder.c_str());
  // This is the application's start: what earlier runs left behind ages out from here.
  if (cleanUp && !Folder().empty()) LSoundCacheCleanupBackgroundStart();
}

LStringLong LSoundCache::Folder() {
  std::lock_guard<std::mutex> lock(mutex_);
  return folder_;
}

// Claims. A number this instance counts is held with a shared lock; deleting or
// allocating it takes the exclusive lock, which fails while another instance
// holds either. Everything here runs under mutex_ and never waits.

bool LSoundCache::ClaimSharedLocked(unsigned short item) {
  // During our own delete or allocation the end of that claim turns it shared.
  if (claims_[item] != Claim::None && claims_[item] != Claim::Pending) return true;
  if (lockFd_ < 0 || LFileRecordLock(lockFd_, item, 1, LFileLock::Shared)) {
    claims_[item] = Claim::Shared;
    return true;
  }
  claims_[item] = Claim::Pending;
  return false;
}

void LSoundCache::ClaimSharedWait(unsigned short item) {
  // Another instance holds the number only while it deletes or allocates it.
  constexpr int kRetryMs = 10;
  for (int waited = 0; waited < kLLockWaitMs; waited += kRetryMs) {
    LSleepMs(kRetryMs);
    std::lock_guard<std::mutex> lock(mutex_);
    if (claims_[item] != Claim::Pending || ClaimSharedLocked(item)) return;
  }
}

void LSoundCache::ClaimReleaseLocked(unsigned short item) {
  if (claims_[item] == Claim::Pending) claims_[item] = Claim::None;
  if (claims_[item] != Claim::Shared) return;
  if (lockFd_ >= 0) (void)LFileRecordLock(lockFd_, item, 1, LFileLock::None);  // our own lock; cannot fail
  claims_[item] = Claim::None;
}

bool LSoundCache::ClaimExclusiveLocked(unsigned short item, Claim purpose) {
  if (claims_[item] != Claim::None) return false;
  if (lockFd_ >= 0 && !LFileRecordLock(lockFd_, item, 1, LFileLock::Exclusive)) return false;
  claims_[item] = purpose;
  return true;
}

void LSoundCache::ClaimExclusiveEndLocked(unsigned short item) {
  bool counted = counts_[item] != 0;
  if (lockFd_ >= 0) {
    // Turning our own exclusive lock into a shared one, or dropping it, cannot conflict.
    (void)LFileRecordLock(lockFd_, item, 1, counted ? LFileLock::Shared : LFileLock::None);
  }
  claims_[item] = counted ? Claim::Shared : Claim::None;
}

void LSoundCache::IncRef(unsigned short item) {
  if (item > kLSoundCacheItemLast) return;
  {
    std::lock_guard<std::mutex> lock(mutex_);
    if (counts_[item] >= kLSoundCacheCountSaturated) return;
    ++counts_[item];
    if (claims_[item] != Claim::None && claims_[item] != Claim::Pending) return;
    if (ClaimSharedLocked(item)) return;
  }
  ClaimSharedWait(item);
}

void LSoundCache::ClaimsPendingRetry() {
  std::lock_guard<std::mutex> lock(mutex_);
  for (std::size_t item = 0; item <= kLSoundCacheItemLast; ++item) {
    if (claims_[item] == Claim::Pending) (void)ClaimSharedLocked(static_cast<unsigned short>(item));
  }
}

void LSoundCache::DecRef(unsigned short item) {
  if (item == kLSoundCacheItemNone) return;
  bool pinned;
  {
    std::lock_guard<std::mutex> lock(mutex_);
    if (folder_.empty()) return;
    std::uint16_t count = counts_[item];
    if (count >= kLSoundCacheCountSaturated) return;
    if (count >= 2) {
      --counts_[item];
      if (claims_[item] == Claim::Pending) (void)ClaimSharedLocked(item);
      return;
    }
    counts_[item] = 0;
    pinned = pinned_[item] != 0;
    if (count == 1) ClaimReleaseLocked(item);
  }
  if (item == kLSoundCacheItemSilence || pinned) return;
  if (KeepAfterRelease(item)) return;
  ItemDeleteIfUnused(item);
}

bool LSoundCache::KeepAfterRelease(unsigned short item) {
  LSoundCacheAudioInfo info;
  if (!LSoundCacheAudioInfoLoad(FilePath(item, kLSoundCacheExtInfo).c_str(), &info)) return false;
  if (!info.hasOriginal || info.original.path.empty()) return false;
  // A decoded copy of a file that is still as it was is worth keeping for the next open.
  const LStringLong resolved = LPathResolve(info.original.path.c_str());
  LFileDetails now;
  return LFileDetailsGet(resolved.c_str(), &now) && LSoundCacheOriginalFileIs(info.original, resolved, now);
}

bool LSoundCache::IsUnused(unsigned short item) {
  std::lock_guard<std::mutex> lock(mutex_);
  return counts_[item] == 0 && pinned_[item] == 0;
}

bool LSoundCache::ItemDeleteIfUnused(unsigned short item) {
  if (item > kLSoundCacheItemLast) return false;
  {
    std::lock_guard<std::mutex> lock(mutex_);
    if (folder_.empty() || counts_[item] != 0 || pinned_[item] != 0) return false;
  }
  // A recording that a crash cut short is kept until it has been offered.
  if (LFileExists(FilePath(item, kLSoundCacheExtRecording).c_str())) return false;
  {
    std::lock_guard<std::mutex> lock(mutex_);
    if (counts_[item] != 0 || pinned_[item] != 0) return false;
    if (!ClaimExclusiveLocked(item, Claim::Deleting)) return false;
  }
  CacheItemDelete(item);
  std::lock_guard<std::mutex> lock(mutex_);
  ClaimExclusiveEndLocked(item);
  return true;
}

void LSoundCache::CacheItemDelete(unsigned short item) {
  if (item > kLSoundCacheItemLast) return;
  for (const char* extension : kItemExtensions) {
    LStringLong path = FilePath(item, extension);
    if (!path.empty()) LFileDelete(path.c_str());
  }
  std::lock_guard<std::mutex> lock(mutex_);
  inUse_[item] = 0;
}

void LSoundCache::FilePathLocked(unsigned short item, const char* extension, LStringLong& out) {
  out.clear();
  if (item > kLSoundCacheItemLast) return;
  for (const auto& [number, prefix] : overrides_) {
    if (number == item) {
      out = prefix + extension;
      return;
    }
  }
  if (folder_.empty()) return;
  out = folder_ + "/" + std::to_string(item) + extension;
}

LStringLong LSoundCache::FilePath(unsigned short item, const char* extension) {
  LStringLong path;
  std::lock_guard<std::mutex> lock(mutex_);
  FilePathLocked(item, extension ? extension : "", path);
  return path;
}

bool LSoundCache::GetFilePath(unsigned short item, char* out, const char* extension) {
  if (!out) return false;
  out[0] = '\0';
  LStringLong path = FilePath(item, extension);
  if (path.empty() || path.size() >= static_cast<std::size_t>(kLPathMax)) return false;
  std::memcpy(out, path.c_str(), path.size() + 1);
  return true;
}

bool LSoundCache::FilesExist(unsigned short item) {
  return LFileExists(FilePath(item, kLSoundCacheExtAudio).c_str()) ||
         LFileExists(FilePath(item, kLSoundCacheExtOverview).c_str()) ||
         LFileExists(FilePath(item, kLSoundCacheExtInfo).c_str());
}

void LSoundCache::ScanIfPending() {
  LStringLong folder;
  {
    std::lock_guard<std::mutex> lock(mutex_);
    if (!scanPending_) return;
    folder = folder_;
  }
  std::vector<unsigned short> found;
  LFolderListFiles(folder.c_str(), kLSoundCacheExtAudio, [&](const char* name) {
    int number = LSoundCacheItemNumberFromName(name);
    if (number >= 0) found.push_back(static_cast<unsigned short>(number));
  });
  {
    std::lock_guard<std::mutex> lock(mutex_);
    if (folder_ != folder) return;  // set again meanwhile; that one scans
    std::fill(inUse_.begin(), inUse_.end(), 0);
    for (unsigned short number : found) inUse_[number] = 1;
    scanPending_ = false;
  }
  std::vector<std::shared_ptr<LSoundCacheAnalyzer>> analyzers;
  {
    std::lock_guard<std::mutex> lock(analyzerMutex_);
    for (const auto& entry : analyzers_) analyzers.push_back(entry.second);
  }
  for (const auto& analyzer : analyzers) {
    if (!analyzer->scan) continue;
    for (unsigned short number : found) {
      if (number <= kLSoundCacheItemLast) analyzer->scan(number);
    }
  }
}

unsigned short LSoundCache::ItemNumberGetNextAvailable() {
  if (Folder().empty()) FolderSetDefault();
  ScanIfPending();
  std::lock_guard<std::mutex> lock(mutex_);
  for (unsigned number = 0; number <= kLSoundCacheItemLast; ++number) {
    if (counts_[number] == 0 && inUse_[number] == 0 && claims_[number] == Claim::None)
      return static_cast<unsigned short>(number);
  }
  return kLSoundCacheItemNone;
}

unsigned short LSoundCache::ItemCreateNewAndIncRef() {
  if (Folder().empty()) FolderSetDefault();
  for (int attempt = 0; attempt < 2; ++attempt) {
    ScanIfPending();
    unsigned start = 0;
    for (;;) {
      unsigned short number = kLSoundCacheItemNone;
      {
        std::lock_guard<std::mutex> lock(mutex_);
        for (unsigned at = start; at <= kLSoundCacheItemLast; ++at) {
          if (counts_[at] != 0 || inUse_[at] != 0 || claims_[at] != Claim::None) continue;
          // Reserved for us; or, when another instance holds it, skipped until the next scan.
          inUse_[at] = 1;
          if (ClaimExclusiveLocked(static_cast<unsigned short>(at), Claim::Allocating)) {
            number = static_cast<unsigned short>(at);
            break;
          }
        }
      }
      if (number == kLSoundCacheItemNone) break;
      // Files that appeared since the scan belong to someone else; with the
      // exclusive claim held, no other instance can be creating them now.
      bool taken = FilesExist(number);
      std::lock_guard<std::mutex> lock(mutex_);
      if (!taken) counts_[number] = 1;
      ClaimExclusiveEndLocked(number);
      if (!taken) return number;
      start = number + 1u;
    }
    if (attempt == 0) LSoundCacheCleanup(kLSoundCacheCleanupAll);
  }
  return kLSoundCacheItemNone;
}

void LSoundCache::ItemsDelete(long cutoff) {
  LStringLong folder = Folder();
  if (folder.empty()) return;
  std::vector<std::pair<unsigned short, LStringLong>> infos;
  LFolderListFiles(folder.c_str(), kLSoundCacheExtInfo, [&](const char* name) {
    int number = LSoundCacheItemNumberFromName(name);
    if (number >= 0 && number <= kLSoundCacheItemLast) infos.emplace_back(static_cast<unsigned short>(number), name);
  });
  for (const auto& [number, name] : infos) {
    if (!IsUnused(number)) continue;
    LSoundCacheAudioInfo info;
    const LStringLong path = folder + "/" + name;
    if (!LSoundCacheAudioInfoLoad(path.c_str(), &info)) continue;
    if (!info.hasLastUse) {
      // Left by a build that wrote none: it ages from now instead of staying for ever.
      const long long now = LSoundCacheNow();
      (void)LSoundCacheAudioInfoModify(path.c_str(), [now](LSoundCacheAudioInfo& changed) {
        if (changed.hasLastUse) return;
        changed.hasLastUse = true;
        changed.lastUse = now;
      });
      continue;
    }
    if (info.lastUse <= static_cast<long long>(cutoff)) ItemDeleteIfUnused(number);
  }
}

void LSoundCache::DeleteCachedFiles() {
  LStringLong folder = Folder();
  if (folder.empty()) return;
  constexpr const char* kPatterns[] = {kLSoundCacheExtAudio,    kLSoundCacheExtOverview,  kLSoundCacheExtInfo,
                                       kLSoundCacheExtSpectrum, kLSoundCacheExtMP3Frames, kLSoundCacheExtInfoTemp};
  for (const char* extension : kPatterns) {
    std::vector<std::pair<unsigned short, LStringLong>> files;
    LFolderListFiles(folder.c_str(), extension, [&](const char* name) {
      int number = LSoundCacheItemNumberFromName(name);
      if (number >= 0 && number != kLSoundCacheItemNone) files.emplace_back(static_cast<unsigned short>(number), name);
    });
    for (const auto& [number, name] : files) {
      if (LFileExists(FilePath(number, kLSoundCacheExtRecording).c_str())) continue;
      {
        std::lock_guard<std::mutex> lock(mutex_);
        if (counts_[number] != 0 || pinned_[number] != 0) continue;
        if (!ClaimExclusiveLocked(number, Claim::Deleting)) continue;
      }
      LFileDelete((folder + "/" + name).c_str());
      std::lock_guard<std::mutex> lock(mutex_);
      inUse_[number] = 0;
      ClaimExclusiveEndLocked(number);
    }
  }
}

void LSoundCache::NotifyAnalyzerChange(unsigned short item, unsigned int change) {
  std::vector<std::shared_ptr<LSoundCacheAnalyzer>> analyzers;
  {
    std::lock_guard<std::mutex> lock(analyzerMutex_);
    for (const auto& entry : analyzers_) analyzers.push_back(entry.second);
  }
  for (const auto& analyzer : analyzers) {
    if (analyzer->change) analyzer->change(item, change);
  }
}

int LSoundCache::AnalyzerAdd(LSoundCacheAnalyzer analyzer) {
  std::lock_guard<std::mutex> lock(analyzerMutex_);
  int id = analyzerNextId_++;
  analyzers_.emplace_back(id, std::make_shared<LSoundCacheAnalyzer>(std::move(analyzer)));
  return id;
}

void LSoundCache::AnalyzerRemove(int id) {
  std::lock_guard<std::mutex> lock(analyzerMutex_);
  for (auto it = analyzers_.begin(); it != analyzers_.end(); ++it) {
    if (it->first == id) {
      analyzers_.erase(it);
      return;
    }
  }
}

void LSoundCache::PinnedSet(unsigned short item, bool pinned) {
  if (item > kLSoundCacheItemLast) return;
  std::lock_guard<std::mutex> lock(mutex_);
  pinned_[item] = pinned ? 1 : 0;
}

void LSoundCache::PathOverrideSet(unsigned short item, const char* prefix) {
  if (item > kLSoundCacheItemLast) return;
  std::lock_guard<std::mutex> lock(mutex_);
  for (auto it = overrides_.begin(); it != overrides_.end(); ++it) {
    if (it->first == item) {
      overrides_.erase(it);
      break;
    }
  }
  if (prefix && *prefix) overrides_.emplace_back(item, prefix);
}

std::uint16_t LSoundCache::RefCountGet(unsigned short item) {
  std::lock_guard<std::mutex> lock(mutex_);
  return counts_[item];
}

bool LSoundCache::IsInUse(unsigned short item) {
  std::lock_guard<std::mutex> lock(mutex_);
  return inUse_[item] != 0;
}

bool LSoundCache::IsPinned(unsigned short item) {
  std::lock_guard<std::mutex> lock(mutex_);
  return pinned_[item] != 0;
}

int LSoundCache::CountedItemCount() {
  std::lock_guard<std::mutex> lock(mutex_);
  int counted = 0;
  for (std::uint16_t count : counts_) counted += count != 0 ? 1 : 0;
  return counted;
}
