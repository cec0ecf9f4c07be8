#include "app/file.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <iterator>

#include "app/app_settings.h"
#include "base/platform_file.h"
#include "base/user_settings.h"

namespace {

// Local short date and time of now: "dd.mm.yyyy HH:MM:SS".
void TimeStampWrite(char* out, std::size_t size) {
  std::time_t now = std::time(nullptr);
  std::tm local {};
  char date[32] = {};
  char time[32] = {};
  if (localtime_r(&now, &local)) {
    std::strftime(date, sizeof date, "%d.%m.%Y", &local);
    std::strftime(time, sizeof time, "%H:%M:%S", &local);
  }
  std::snprintf(out, size, "%s %s", date, time);
}

}  // namespace

SVFile::SVFile(const LCutListAudio& list) : cutList_(list) {}

SVFile::SVFile(const char* path, const LCutListAudio& list) : cutList_(list) {
  PathSet(path);
  FileTimeModifiedUpdate();
}

void SVFile::PathSet(const char* path) { std::snprintf(path_, sizeof path_, "%s", path ? path : ""); }

const char* SVFile::FileName() const {
  const char* slash = std::strrchr(path_, '/');
  return slash ? slash + 1 : path_;
}

void SVFile::LiveToEntry(unsigned long index) {
  SVFileUndo& entry = ring_[index];
  entry.cutList = cutList_;
  entry.modified = modified_;
  entry.changed = changed_;
  entry.selection = selection_;
  entry.cursor = cursor_;
  entry.bookmarks = bookmarks_;
  LCountedPtr<SVRegionList> regions = regions_.lock();
  if (regions)
    entry.regions = *regions;
  else
    entry.regions.clear();
  entry.view = view_;
  entry.selection.CollapseIfEmpty(entry.cursor);
  entry.regionChange = SVRegionChange();
}

void SVFile::SaveForUndo(const char* description) {
  const unsigned long k = UndoIndexNext(undoCurrent_);
  undoCurrent_ = k;
  LiveToEntry(k);
  SVFileUndo& entry = ring_[k];
  std::snprintf(entry.description, sizeof entry.description, "%s", description ? description : "");
  TimeStampWrite(entry.timeStamp, sizeof entry.timeStamp);
  ring_[UndoIndexNext(k)].Clear();
  ring_[UndoIndexNext(UndoIndexNext(k))].Clear();
  if (!ring_[undoOldest_].IsUsed()) undoOldest_ = UndoIndexNext(undoOldest_);
}

void SVFile::UndoRedoApply(unsigned long index, bool regionsToProject) {
  const SVFileUndo& entry = ring_[index & (kSVUndoRingSize - 1)];
  FlagsSet();
  cutList_ = entry.cutList;
  modified_ = entry.modified;
  changed_ = entry.changed;
  selection_ = entry.selection;
  cursor_ = entry.cursor;
  view_ = entry.view;
  selection_.CollapseIfEmpty(cursor_);
  bookmarks_ = entry.bookmarks;
  if (regionsToProject) {
    if (LCountedPtr<SVRegionList> regions = regions_.lock()) *regions = entry.regions;
  }
}

void SVFile::RegionChangeRecord(SVRegionChange change) { ring_[undoCurrent_].regionChange = std::move(change); }

void SVFile::RegionStepReplay(unsigned long index, bool undo) {
  const SVRegionChange& change = ring_[index & (kSVUndoRingSize - 1)].regionChange;
  LCountedPtr<SVRegionList> regions = regions_.lock();
  if (change.IsEmpty() || !regions) return;
  if (undo)
    change.Revert(*regions);
  else
    change.Apply(*regions);
}

bool SVFile::IsUndoAvailable() const { return ring_[UndoIndexPrev(undoCurrent_)].IsUsed(); }

bool SVFile::IsRedoAvailable() const { return ring_[(undoCurrent_ + 2) & (kSVUndoRingSize - 1)].IsUsed(); }

bool SVFile::Undo() {
  if (!IsUndoAvailable()) return false;
  if (!ring_[UndoIndexNext(undoCurrent_)].IsUsed()) {
    // Keep the present state so that Redo can come back to it.
    SaveForUndo(kSVUndoLabelRedo);
    undoCurrent_ = UndoIndexPrev(undoCurrent_);
  }
  // The regions belong to every document: only this step's change goes back.
  UndoRedoApply(undoCurrent_, false);
  RegionStepReplay(undoCurrent_, true);
  undoCurrent_ = UndoIndexPrev(undoCurrent_);
  if (!ring_[undoOldest_].IsUsed()) undoOldest_ = UndoIndexNext(undoOldest_);
  return true;
}

bool SVFile::Redo() {
  if (!IsRedoAvailable()) return false;
  UndoRedoApply((undoCurrent_ + 2) & (kSVUndoRingSize - 1), false);
  undoCurrent_ = UndoIndexNext(undoCurrent_);
  RegionStepReplay(undoCurrent_, false);
  if (!ring_[undoOldest_].IsUsed()) undoOldest_ = UndoIndexNext(undoOldest_);
  return true;
}

void SVFile::UndoRollBack() {
  UndoRedoApply(undoCurrent_, false);
  UndoEntryDrop();
}

void SVFile::UndoEntryDrop() {
  ring_[undoCurrent_].Clear();
  ring_[UndoIndexNext(undoCurrent_)].Clear();
  undoCurrent_ = UndoIndexPrev(undoCurrent_);
}

void SVFile::SetFileClean() {
  modified_ = false;
  for (SVFileUndo& entry : ring_) entry.modified = true;
  // The next edit's snapshot goes there and will hold the saved state.
  const unsigned long next = UndoIndexNext(undoCurrent_);
  ring_[next].modified = false;
  lastSave_ = next;
}

bool SVFile::HoldsSavedState(unsigned long index) const {
  // SetFileClean marks every other entry modified, and only a copy of the saved
  // state is taken clean afterwards; a free entry holds nothing at all.
  const SVFileUndo& entry = ring_[index & (kSVUndoRingSize - 1)];
  return entry.IsUsed() && !entry.modified;
}

bool SVFile::IsUndoLastSaveAvailable() {
  // Deliberately not wrapped: a save at index 31 wrote 0, so this does not
  // match and the steps below decide.
  if (lastSave_ == undoCurrent_ + 1) return false;
  if (lastSave_ != kSVUndoIndexUnknown && HoldsSavedState(lastSave_)) return true;
  if (!IsUndoAvailable()) return false;
  // A document that was never clean, or whose saved state the ring has since
  // overwritten, has nothing to go back to: the walk meets a free entry or
  // goes round without finding the saved state.
  unsigned long index = undoCurrent_;
  for (unsigned long steps = 0; steps < kSVUndoRingSize; ++steps, index = UndoIndexPrev(index)) {
    if (!ring_[index].IsUsed()) return false;
    if (!ring_[index].modified) {
      lastSave_ = index;
      return true;
    }
  }
  return false;
}

bool SVFile::UndoLastSave() {
  if (!IsUndoLastSaveAvailable()) return false;
  const unsigned long s = lastSave_;
  const unsigned long before = UndoIndexPrev(s);
  // The steps between here and the save, replayed on the regions before the
  // entries that record them are overwritten: back from the current one when
  // the save lies behind, forward (the redo side) when it lies ahead.
  bool behind = false;
  for (unsigned long i = undoCurrent_, n = 0; s != UndoIndexNext(undoCurrent_) && n < kSVUndoRingSize && ring_[i].IsUsed();
       ++n, i = UndoIndexPrev(i)) {
    if (i == s) {
      behind = true;
      break;
    }
  }
  if (behind) {
    for (unsigned long i = undoCurrent_;; i = UndoIndexPrev(i)) {
      RegionStepReplay(i, true);
      if (i == s) break;
    }
  } else {
    for (unsigned long i = UndoIndexNext(undoCurrent_); i != s; i = UndoIndexNext(i)) RegionStepReplay(i, false);
  }
  LiveToEntry(before);
  SVFileUndo& entry = ring_[before];
  std::snprintf(entry.description, sizeof entry.description, "%s", kSVUndoLabelRevert);
  TimeStampWrite(entry.timeStamp, sizeof entry.timeStamp);
  // Freeing both neighbours makes the revert final: neither Undo nor Redo finds an entry.
  ring_[UndoIndexPrev(before)].Clear();
  ring_[UndoIndexNext(s)].Clear();
  ring_[UndoIndexNext(UndoIndexNext(s))].Clear();
  UndoRedoApply(s, false);
  undoCurrent_ = before;
  return true;
}

void SVFile::AddBookmark(const char* name, long long position) {
  LSVBookmark bookmark;
  bookmark.NameSet(name);
  bookmark.SourceFileNameSet(FileName());
  bookmark.enabled = 1;
  bookmark.creationTime = std::time(nullptr);
  std::int32_t largest = 0;
  for (const LSVBookmark& other : bookmarks_) largest = std::max(largest, other.identifier);
  bookmark.identifier = largest + 1;
  bookmark.sampleRate = static_cast<std::int32_t>(cutList_.GetSampleRate());
  bookmark.PositionSet(position);
  auto it = bookmarks_.begin();
  while (it != bookmarks_.end() && it->position <= position) ++it;
  bookmarks_.insert(it, std::move(bookmark));
  FlagsSet();
}

bool SVFile::DeleteBookmark(const char* name) {
  for (auto it = bookmarks_.begin(); it != bookmarks_.end(); ++it) {
    if (std::strcmp(it->name, name ? name : "") == 0) {
      bookmarks_.erase(it);
      return true;
    }
  }
  return false;
}

void SVFile::OffsetBookmarks(long long from, long long delta) {
  for (auto it = bookmarks_.begin(); it != bookmarks_.end();) {
    if (it->position < from) {
      ++it;
    } else if (delta < 0 && it->position < from - delta) {
      it = bookmarks_.erase(it);
    } else {
      it->PositionSet(it->position + delta);
      ++it;
    }
  }
}

bool SVFile::FileTimeModifiedUpdate() {
  if (LUserSettings::Instance().Get(kLSettingsDomain, kSVSettingsSection, kSVSettingFileModAlert) == "0")
    return false;
  LFileDetails details;
  const long long time = path_[0] != '\0' && LFileDetailsGet(path_, &details) ? details.modTime : 0;
  timeRecorded_ = time;
  timeLastSeen_ = time;
  return true;
}

bool SVFile::TestForFileModifications() {
  // With the check switched off nothing was recorded, so nothing is reported either.
  if (LUserSettings::Instance().Get(kLSettingsDomain, kSVSettingsSection, kSVSettingFileModAlert) == "0")
    return false;
  LFileDetails details;
  if (path_[0] == '\0' || !LFileDetailsGet(path_, &details)) return false;
  const long long time = details.modTime;
  if (time == 0 || time == timeLastSeen_) return false;
  timeLastSeen_ = time;
  return time != timeRecorded_;
}
