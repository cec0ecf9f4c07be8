#include "engine/sound_cache_cleanup.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <mutex>
#include <thread>
#include <vector>

#include "base/disk_space.h"
#include "base/folder_list.h"
#include "base/user_settings.h"
#include "engine/sound_cache.h"
#include "engine/sound_cache_item.h"

namespace {

constexpr long long kBytesPerMB = 1048576;
constexpr long long kHourSeconds = 3600;
constexpr long long kDaySeconds = 86400;
constexpr long long kTwoWeeksSeconds = 14 * kDaySeconds;    // 1,209,600
constexpr long long kFourWeeksSeconds = 28 * kDaySeconds;   // 2,419,200

// Free space limits in MB.
constexpr long long kFreeSpaceAllMB = 500;         // mode 1: below, everything goes
constexpr long long kFreeSpaceHourMB = 1000;       // mode 1: below, an hour
constexpr long long kFreeSpaceDayMB = 2000;        // mode 1: below, a day; mode 2: below, everything
constexpr long long kRetentionDayMB = 10000;       // mode 2: below, a day
constexpr long long kRetentionCappedMaxMB = 99999; // mode 2: up to here the setting is capped
constexpr long kRetentionCapDays = 14;
constexpr long long kTwoWeeksAllMB = 5000;         // mode 3: below, everything

LSoundCacheCleanupPlan DeleteAll() { return {true, -1}; }
LSoundCacheCleanupPlan OlderThan(long long seconds) { return {false, seconds}; }

}  // namespace

LSoundCacheCleanupPlan LSoundCacheCleanupPlanGet(int mode, long long freeMB, long retentionDays) {
  switch (mode) {
    case kLSoundCacheCleanupFreeSpace:
      if (freeMB < kFreeSpaceAllMB) return DeleteAll();
      if (freeMB < kFreeSpaceHourMB) return OlderThan(kHourSeconds);
      if (freeMB < kFreeSpaceDayMB) return OlderThan(kDaySeconds);
      return OlderThan(kFourWeeksSeconds);
    case kLSoundCacheCleanupRetention:
      if (retentionDays < 1 || freeMB < kFreeSpaceDayMB) return DeleteAll();
      if (freeMB < kRetentionDayMB) return OlderThan(kDaySeconds);
      if (freeMB > kRetentionCappedMaxMB) return OlderThan(retentionDays * kDaySeconds);
      return OlderThan(std::min(retentionDays, kRetentionCapDays) * kDaySeconds);
    case kLSoundCacheCleanupTwoWeeks:
      if (freeMB < kTwoWeeksAllMB) return DeleteAll();
      return OlderThan(kTwoWeeksSeconds);
    case kLSoundCacheCleanupAll:
      return DeleteAll();
    default:
      return {};
  }
}

void LSoundCacheCleanup(int mode) {
  LSoundCache& cache = LSoundCache::Instance();
  LStringLong folder = cache.Folder();
  if (folder.empty()) return;
  // Claims another instance kept from us must be had before it deletes anything.
  cache.ClaimsPendingRetry();

  // Items are found by any of their three files: a writer that died before the
  // end left ".aud" and ".grf" without ".audinfo".
  std::vector<unsigned short> found;
  for (const char* extension : {kLSoundCacheExtInfo, kLSoundCacheExtAudio, kLSoundCacheExtOverview}) {
    LFolderListFiles(folder.c_str(), extension, [&](const char* name) {
      int number = LSoundCacheItemNumberFromName(name);
      if (number >= 0 && number <= kLSoundCacheItemLast) found.push_back(static_cast<unsigned short>(number));
    });
  }
  std::sort(found.begin(), found.end());
  found.erase(std::unique(found.begin(), found.end()), found.end());
  for (unsigned short item : found) {
    if (cache.IsUnused(item) && !LSoundCacheItemIsValid(item)) cache.ItemDeleteIfUnused(item);
  }

  long long freeBytes = LDiskFreeBytes(folder.c_str());
  long long freeMB = freeBytes > 0 ? freeBytes / kBytesPerMB : 0;
  long retentionDays = 0;
  if (mode == kLSoundCacheCleanupRetention) {
    retentionDays = LUserSettings::Instance().GetInt(kLSettingsDomain, kLSoundCacheSettingsSection,
                                                     kLSoundCacheRetentionDaysKey, kLSoundCacheRetentionDaysDefault);
  }
  LSoundCacheCleanupPlan plan = LSoundCacheCleanupPlanGet(mode, freeMB, retentionDays);
  if (plan.deleteAll) {
    cache.DeleteCachedFiles();
  } else if (plan.maxAgeSeconds >= 0) {
    cache.ItemsDelete(static_cast<long>(LSoundCacheNow() - plan.maxAgeSeconds));
  }
}

namespace {

// The worker lives as long as the process; never destroyed, so exit never meets it half torn down.
struct Background {
  std::mutex mutex;
  std::condition_variable wake;
  std::thread worker;
  bool stop = false;
  bool exitHandlerSet = false;
};

Background& TheBackground() {
  static Background* background = new Background();
  return *background;
}

void Work() {
  Background& background = TheBackground();
  // The first run always happens, even when a stop comes at once: it is the one at start.
  for (;;) {
    LSoundCacheCleanup(kLSoundCacheCleanupDefaultMode);
    std::unique_lock<std::mutex> lock(background.mutex);
    if (background.wake.wait_for(lock, std::chrono::seconds(kLSoundCacheCleanupIntervalSeconds),
                                 [&] { return background.stop; }))
      return;
  }
}

}  // namespace

void LSoundCacheCleanupBackgroundStop() {
  Background& background = TheBackground();
  std::thread worker;
  {
    std::lock_guard<std::mutex> lock(background.mutex);
    if (!background.worker.joinable() || background.worker.get_id() == std::this_thread::get_id()) return;
    background.stop = true;
    worker = std::move(background.worker);
  }
  background.wake.notify_all();
  worker.join();
}

void LSoundCacheCleanupBackgroundStart() {
  LSoundCacheCleanupBackgroundStop();
  Background& background = TheBackground();
  std::lock_guard<std::mutex> lock(background.mutex);
  // A run must not outlive the objects that exit destroys (settings, the clock).
  if (!background.exitHandlerSet) background.exitHandlerSet = std::atexit(LSoundCacheCleanupBackgroundStop) == 0;
  background.stop = false;
  background.worker = std::thread(Work);
}
