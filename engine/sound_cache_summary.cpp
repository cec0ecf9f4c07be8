#include "engine/sound_cache_summary.h"

#include <algorithm>
#include <map>

#include "base/folder_list.h"
#include "base/platform_file.h"
#include "engine/sound_cache.h"
#include "engine/sound_cache_audio_info.h"

std::uint64_t LSoundCacheSummary::Bytes() const {
  std::uint64_t total = 0;
  for (const LSoundCacheSummaryItem& item : items) total += item.bytes;
  return total;
}

const LSoundCacheSummaryItem* LSoundCacheSummary::Oldest() const {
  const LSoundCacheSummaryItem* oldest = nullptr;
  for (const LSoundCacheSummaryItem& item : items) {
    if (item.hasLastUse && (!oldest || item.lastUse < oldest->lastUse)) oldest = &item;
  }
  return oldest;
}

const LSoundCacheSummaryItem* LSoundCacheSummary::Find(unsigned short item) const {
  auto it = std::lower_bound(items.begin(), items.end(), item,
                             [](const LSoundCacheSummaryItem& a, unsigned short b) { return a.item < b; });
  return it != items.end() && it->item == item ? &*it : nullptr;
}

LSoundCacheSummary LSoundCacheSummaryGet() {
  LSoundCache& cache = LSoundCache::Instance();
  LSoundCacheSummary summary;
  summary.folder = cache.Folder();
  if (summary.folder.empty()) return summary;
  std::map<unsigned short, LSoundCacheSummaryItem> found;
  for (const char* extension : {kLSoundCacheExtAudio, kLSoundCacheExtOverview, kLSoundCacheExtInfo,
                                kLSoundCacheExtMP3Frames, kLSoundCacheExtSpectrum, kLSoundCacheExtInfoTemp}) {
    LFolderListFiles(summary.folder.c_str(), extension, [&](const char* name) {
      const int number = LSoundCacheItemNumberFromName(name);
      if (number < 0 || number > kLSoundCacheItemLast) return;
      LSoundCacheSummaryItem& item = found[static_cast<unsigned short>(number)];
      item.item = static_cast<unsigned short>(number);
      LFileDetails details;
      if (LFileDetailsGet((summary.folder + "/" + name).c_str(), &details)) item.bytes += details.size;
    });
  }
  for (auto& [number, item] : found) {
    LSoundCacheAudioInfo info;
    if (LSoundCacheAudioInfoLoad(cache.FilePath(number, kLSoundCacheExtInfo).c_str(), &info) && info.hasLastUse) {
      item.hasLastUse = true;
      item.lastUse = info.lastUse;
    }
    summary.items.push_back(item);
  }
  return summary;
}
