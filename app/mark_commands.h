#pragma once
// SVMarkCommands: adding, deleting and moving bookmarks and regions, each an
// undoable step of the window's document. The snapshot is taken first, so Undo
// takes back the mark alone and leaves the edits before it; a region step
// records its own change of the project's shared list, so undoing it in one
// document keeps the regions other documents made since.
//
// No audio changes here, so there is no progress job and no playback after it.
// Main thread only.
#include "app/file_gui.h"

// Undo labels of the steps.
inline constexpr const char* kSVBookmarkAddLabel = "Lesezeichen hinzufügen";
inline constexpr const char* kSVBookmarkDeleteLabel = "Lesezeichen löschen";
inline constexpr const char* kSVBookmarkMoveLabel = "Lesezeichen verschieben";
inline constexpr const char* kSVRegionAddLabel = "Region hinzufügen";
inline constexpr const char* kSVRegionDeleteLabel = "Region löschen";
inline constexpr const char* kSVRegionMoveLabel = "Region verschieben";

class SVMarkCommands {
public:
  // False when the window has no document or is closing; the delete and move
  // steps also when no mark has that name (nothing is changed then).
  static bool BookmarkAdd(SVFileGUI* window, const char* name, long long position);
  static bool BookmarkDelete(SVFileGUI* window, const char* name);
  static bool BookmarkMove(SVFileGUI* window, const char* name, long long position);
  // A region over [start, end) of the document, holding a copy of that audio.
  static bool RegionAdd(SVFileGUI* window, const char* name, long long start, long long end);
  static bool RegionDelete(SVFileGUI* window, const char* name);
  // The region takes the new range and the document's audio there.
  static bool RegionMove(SVFileGUI* window, const char* name, long long start, long long end);
};
