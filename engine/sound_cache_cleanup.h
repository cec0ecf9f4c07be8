#pragma once
// LSoundCacheCleanup: the policy that removes unused cache items by age and by
// the free space left on the cache's volume. The less space is free, the shorter
// unused items are kept; the limits are staggered on purpose and users know them.
//
// Every mode first deletes items that are no longer valid (a missing ".aud",
// ".grf" or ".audinfo"). Only unused items are touched: counted or pinned items,
// and items that another running instance counts, stay.
// The free-space measure (LDiskFreeBytesOverride) and the clock
// (LSoundCacheClockOverride) can be replaced, so tests reach every limit.

// Modes. Stored in the user's preferences; never change the numbers.
enum LSoundCacheCleanupMode : int {
  kLSoundCacheCleanupFreeSpace = 1,  // by free space: an hour, a day or four weeks
  kLSoundCacheCleanupRetention = 2,  // by the user's retention setting, shortened when space is low
  kLSoundCacheCleanupTwoWeeks = 3,   // two weeks, everything when space is low
  kLSoundCacheCleanupAll = 4,        // every unused file
};

// The user's retention in days: "RetentionDays" in section "Cache" of "Settings".
inline constexpr const char* kLSoundCacheRetentionDaysKey = "RetentionDays";
constexpr long kLSoundCacheRetentionDaysDefault = 28;

// What a mode decides for a measured free space (MB of 1,048,576 bytes).
struct LSoundCacheCleanupPlan {
  bool deleteAll = false;        // every unused file
  long long maxAgeSeconds = -1;  // else unused items last used longer ago than this; -1: none
};
[[nodiscard]] LSoundCacheCleanupPlan LSoundCacheCleanupPlanGet(int mode, long long freeMB, long retentionDays);

// Runs the clean-up on the current cache folder.
void LSoundCacheCleanup(int mode);

// The mode run at start, in the background and when an item is added while
// space is low: the user's retention, shortened as space runs out.
constexpr int kLSoundCacheCleanupDefaultMode = kLSoundCacheCleanupRetention;
// Below this much free space after an item's own size, adding it runs the clean-up first.
constexpr long long kLSoundCacheCleanupLowSpaceBytes = 2000LL * 1048576;
// Pause between runs of the background clean-up.
constexpr int kLSoundCacheCleanupIntervalSeconds = 3600;

// Runs the default mode at once on a worker thread, then every interval, until
// stopped; the cache starts it when the application sets its folder. Starting it
// again restarts it.
void LSoundCacheCleanupBackgroundStart();
// Stops the worker, waiting for a run in progress to end. Changing the folder
// and leaving the process stop it.
void LSoundCacheCleanupBackgroundStop();
