#pragma once
// LSoundCacheSummaryGet: what the cache folder holds, item by item, for the
// user to see how large it has grown and what a clean-up removed.
#include <cstdint>
#include <vector>

#include "base/string_long.h"

struct LSoundCacheSummaryItem {
  unsigned short item = 0;
  std::uint64_t bytes = 0;  // all of the item's files
  bool hasLastUse = false;
  long long lastUse = 0;    // seconds since 1970
};

struct LSoundCacheSummary {
  LStringLong folder;
  std::vector<LSoundCacheSummaryItem> items;  // by number
  [[nodiscard]] std::uint64_t Bytes() const;
  // The item used least recently, null when no item has a last use.
  [[nodiscard]] const LSoundCacheSummaryItem* Oldest() const;
  [[nodiscard]] const LSoundCacheSummaryItem* Find(unsigned short item) const;
};

// Lists the current cache folder; reading a description waits for its lock at most kLLockWaitMs.
[[nodiscard]] LSoundCacheSummary LSoundCacheSummaryGet();
