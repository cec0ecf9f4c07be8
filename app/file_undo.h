#pragma once
// SVFileUndo: one snapshot of a document's editable state in its undo ring. The
// first eight fields are also the shape of the live state of SVFile.
//
// Snapshots are cheap: the cut list is copied as a list of segments and the
// audio it names is shared through the cache's references.
#include "app/bookmark.h"
#include "app/region.h"
#include "app/selection.h"
#include "base/list.h"
#include "base/string_long.h"
#include "engine/cut_list_audio.h"

// Two values the views keep with every snapshot; copied verbatim.
struct SVViewState {
  long long first = 0;
  long long second = 0;
  bool operator==(const SVViewState&) const = default;
};

struct SVFileUndo {
  LCutListAudio cutList;
  bool modified = false;  // differs from what was last saved
  bool changed = false;   // set with modified by every edit; saving leaves it
  SVSelection selection;
  long long cursor = 0;  // frames
  LList<LSVBookmark> bookmarks;
  SVRegionList regions;  // the project's regions when the snapshot was taken
  SVViewState view;
  char description[kLPathMax] = {};  // the action's label; empty marks a free entry
  char timeStamp[kLPathMax] = {};    // local date and time of the snapshot
  SVRegionChange regionChange;       // what the step this entry names did to the project's regions

  [[nodiscard]] bool IsUsed() const { return description[0] != '\0'; }
  // Frees the entry: empties description, time stamp, bookmarks and segments.
  void Clear();
};
