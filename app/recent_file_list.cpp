#include "app/recent_file_list.h"

#include <cstdio>

#include "app/app_settings.h"
#include "app/recent_file_data.h"
#include "base/user_settings.h"

namespace {

LStringLong Key(int index) {
  char key[16];
  std::snprintf(key, sizeof key, kSVRecentFileKeyFormat, index);
  return key;
}

void EntrySet(int index, const LStringLong& path) {
  LUserSettings& settings = LUserSettings::Instance();
  if (path.empty())
    settings.Remove(kLRecentFileListDomain, kSVRecentFileSection, Key(index).c_str());
  else
    settings.Set(kLRecentFileListDomain, kSVRecentFileSection, Key(index).c_str(), path.c_str());
}

}  // namespace

LArray<LStringLong> LRecentFileList::Entries() const {
  LArray<LStringLong> entries;
  for (int i = 0; i < kSVRecentFileCount; ++i)
    entries.push_back(LUserSettings::Instance().Get(kLRecentFileListDomain, kSVRecentFileSection, Key(i).c_str()));
  return entries;
}

void LRecentFileList::RecentFileListAdd(const char* path) {
  if (!path || !*path) return;
  const LArray<LStringLong> entries = Entries();
  int found = -1;
  for (int i = 0; i < kSVRecentFileCount && found < 0; ++i)
    if (entries[static_cast<std::size_t>(i)] == path) found = i;
  if (found == 0) return;
  // Entries above the old place move down one; without one, the last falls off.
  const int last = found > 0 ? found : kSVRecentFileCount - 1;
  for (int i = last; i >= 1; --i) EntrySet(i, entries[static_cast<std::size_t>(i - 1)]);
  EntrySet(0, path);
  Reload();
}

void LRecentFileList::Reload() {
  menu_.clear();
  for (const LStringLong& path : Entries()) {
    if (path.empty()) continue;
    const std::size_t slash = path.rfind('/');
    const std::size_t dot = path.rfind('.');
    const bool hasExtension = dot != LStringLong::npos && (slash == LStringLong::npos || dot > slash);
    if (SVFileGetRecentFileData::IsExtValid(hasExtension ? path.c_str() + dot : "")) menu_.push_back(path);
  }
  if (view_) view_->RecentFilesShow(menu_);
}
