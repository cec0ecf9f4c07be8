#pragma once
// LRecentFileList: the ten files opened last, newest first, kept in the
// preferences domain "RecentFileList" under "File0" to "File9". A path is never
// listed twice: opening a listed file moves it to the top.
#include "app/front_end.h"
#include "base/array.h"
#include "base/string_long.h"

inline constexpr int kSVRecentFileCount = 10;
// Key of entry i; stored in the preferences, never change.
inline constexpr const char* kSVRecentFileKeyFormat = "File%d";

class LRecentFileList {
public:
  // view, when given, is shown the menu list whenever it is reloaded.
  explicit LRecentFileList(SVFrontEnd* view = nullptr) : view_(view) {}

  // Puts path at the top: a listed path moves up, the others move down one
  // place, and the oldest falls off a full list. Nothing changes when path is
  // already the newest.
  void RecentFileListAdd(const char* path);
  // All ten entries as stored ("" where there is none).
  [[nodiscard]] LArray<LStringLong> Entries() const;
  // Reads the list again and keeps what the menu shows: the entries whose
  // extension SVFileGetRecentFileData::IsExtValid accepts.
  void Reload();
  [[nodiscard]] const LArray<LStringLong>& MenuList() const { return menu_; }

private:
  SVFrontEnd* view_;
  LArray<LStringLong> menu_;
};
