#include "app/mark_commands.h"

#include <cstring>
#include <functional>
#include <iterator>

#include "app/window_manager.h"

namespace {

bool CanMark(const SVFileGUI* window) { return window && window->File() && !window->IsClosing(); }

// One undoable step: snapshot, change, and what every change of a document shows.
void Step(SVFileGUI* window, const char* label, const std::function<void(SVFile&)>& change) {
  SVFile& file = *window->File();
  SVWindowManager& manager = window->Manager();
  file.SaveForUndo(label);
  change(file);
  file.FlagsSet();
  manager.FrontEnd().Notify(window, kSVNotifyModified);
  manager.FrontEnd().Refresh(window);
  manager.UndoMenuUpdate();
}

SVRegionList::iterator RegionNamed(SVRegionList& regions, const char* name) {
  auto it = regions.begin();
  while (it != regions.end() && std::strcmp(it->name, name ? name : "") != 0) ++it;
  return it;
}

// A region step: records the change for Undo and Redo, then makes it.
void RegionStep(SVFileGUI* window, const char* label, SVRegionChange change) {
  SVWindowManager& manager = window->Manager();
  Step(window, label, [&](SVFile& file) {
    SVRegionList& regions = manager.Project().Regions();
    change.Apply(regions);
    file.RegionChangeRecord(std::move(change));
  });
  manager.Project().RegionsChangedSet(true);
  manager.RegionsApply(true);
}

void RegionCopyFrom(const SVFile& file, SVRegion& region, long long start, long long end) {
  region.RangeSet(start, end, static_cast<std::int32_t>(file.CutList().GetSampleRate()));
  file.CutList().EfCopy(start, end, region.cutList);
}

// A step that starts from the named region as it is now; false when there is none.
bool RegionChangeOfNamed(SVFileGUI* window, const char* name, SVRegionChange& change) {
  SVRegionList& regions = window->Manager().Project().Regions();
  auto it = RegionNamed(regions, name);
  if (it == regions.end()) return false;
  if (it->id == 0) it->id = SVRegionIdNew();
  change.id = it->id;
  change.index = static_cast<std::size_t>(std::distance(regions.begin(), it));
  change.hasBefore = true;
  change.before = *it;
  return true;
}

}  // namespace

bool SVMarkCommands::BookmarkAdd(SVFileGUI* window, const char* name, long long position) {
  if (!CanMark(window)) return false;
  Step(window, kSVBookmarkAddLabel, [&](SVFile& file) { file.AddBookmark(name, position); });
  return true;
}

bool SVMarkCommands::BookmarkDelete(SVFileGUI* window, const char* name) {
  if (!CanMark(window)) return false;
  const LList<LSVBookmark>& marks = window->File()->Bookmarks();
  auto it = marks.begin();
  while (it != marks.end() && std::strcmp(it->name, name ? name : "") != 0) ++it;
  if (it == marks.end()) return false;
  Step(window, kSVBookmarkDeleteLabel, [&](SVFile& file) { (void)file.DeleteBookmark(name); });
  return true;
}

bool SVMarkCommands::BookmarkMove(SVFileGUI* window, const char* name, long long position) {
  if (!CanMark(window)) return false;
  LList<LSVBookmark> marks = window->File()->Bookmarks();
  auto it = marks.begin();
  while (it != marks.end() && std::strcmp(it->name, name ? name : "") != 0) ++it;
  if (it == marks.end()) return false;
  // The bookmark keeps everything but its place, and the list its order.
  LSVBookmark moved = std::move(*it);
  marks.erase(it);
  moved.PositionSet(position);
  auto at = marks.begin();
  while (at != marks.end() && at->position <= position) ++at;
  marks.insert(at, std::move(moved));
  Step(window, kSVBookmarkMoveLabel, [&](SVFile& file) { file.BookmarksSet(std::move(marks)); });
  return true;
}

bool SVMarkCommands::RegionAdd(SVFileGUI* window, const char* name, long long start, long long end) {
  if (!CanMark(window)) return false;
  const SVFile& file = *window->File();
  SVRegionChange change;
  change.id = SVRegionIdNew();
  change.index = window->Manager().Project().Regions().size();
  change.hasAfter = true;
  change.after.NameSet(name);
  change.after.SourceFileNameSet(file.FileName());
  change.after.id = change.id;
  RegionCopyFrom(file, change.after, start, end);
  RegionStep(window, kSVRegionAddLabel, std::move(change));
  return true;
}

bool SVMarkCommands::RegionDelete(SVFileGUI* window, const char* name) {
  if (!CanMark(window)) return false;
  SVRegionChange change;
  if (!RegionChangeOfNamed(window, name, change)) return false;
  RegionStep(window, kSVRegionDeleteLabel, std::move(change));
  return true;
}

bool SVMarkCommands::RegionMove(SVFileGUI* window, const char* name, long long start, long long end) {
  if (!CanMark(window)) return false;
  SVRegionChange change;
  if (!RegionChangeOfNamed(window, name, change)) return false;
  change.hasAfter = true;
  change.after = change.before;
  RegionCopyFrom(*window->File(), change.after, start, end);
  RegionStep(window, kSVRegionMoveLabel, std::move(change));
  return true;
}
