#pragma once
// SVProject: what a project file stores besides the documents' own state: the
// open documents in tab order and the project's regions. The window manager
// holds it and keeps the document list in step with its windows. The region
// list is shared with the documents, whose undo snapshots copy and restore it.
//
// It also keeps what the project file holds beyond the documents and regions:
// the path of the project, the chunks a newer version wrote at the top level and
// into the two lists' containers (written back on the next save), and the
// project's flags.
#include "app/file.h"
#include "app/region.h"
#include "base/array.h"
#include "base/counted_ptr.h"
#include "base/list.h"
#include "base/sdf_unknown_chunk.h"
#include "base/string_long.h"

class SVProject {
public:
  SVProject() : regions_(std::make_shared<SVRegionList>()) {}

  [[nodiscard]] const LArray<LCountedPtr<SVFile>>& Documents() const { return documents_; }
  void DocumentsSet(LArray<LCountedPtr<SVFile>> documents) { documents_ = std::move(documents); }

  [[nodiscard]] SVRegionList& Regions() { return *regions_; }
  [[nodiscard]] const SVRegionList& Regions() const { return *regions_; }
  [[nodiscard]] const LCountedPtr<SVRegionList>& RegionListPtr() const { return regions_; }

  // The project file this project was loaded from or last saved whole to; a
  // link save records it, so that opening the link save leads back to it.
  [[nodiscard]] const LStringLong& Path() const { return path_; }
  void PathSet(const char* path) { path_ = path ? path : ""; }

  // Chunks kept from a project file: top level, documents' and regions' containers.
  [[nodiscard]] LList<LSDFUnknownChunk>& UnknownChunks() { return unknown_; }
  [[nodiscard]] LList<LSDFUnknownChunk>& DocumentsUnknownChunks() { return documentsUnknown_; }
  [[nodiscard]] LList<LSDFUnknownChunk>& RegionsUnknownChunks() { return regionsUnknown_; }

  // Something in the project changed since it was last saved whole; a full save clears it.
  [[nodiscard]] bool IsChanged() const { return changed_; }
  void ChangedSet(bool on) { changed_ = on; }
  // The regions changed since the project was last saved whole; a full save clears it.
  [[nodiscard]] bool IsRegionsChanged() const { return regionsChanged_; }
  void RegionsChangedSet(bool on) { regionsChanged_ = on; }
  // Whether the region list is shown; stored with the project.
  [[nodiscard]] bool IsRegionListShown() const { return regionListShown_; }
  void RegionListShownSet(bool on) { regionListShown_ = on; }
  // Something changed since the last save of either kind; the autosave writes
  // a link save while it is set, and every save clears it.
  [[nodiscard]] bool IsAutosaveDue() const { return autosaveDue_; }
  void AutosaveDueSet(bool on) { autosaveDue_ = on; }

private:
  LArray<LCountedPtr<SVFile>> documents_;
  LCountedPtr<SVRegionList> regions_;
  LStringLong path_;
  LList<LSDFUnknownChunk> unknown_;
  LList<LSDFUnknownChunk> documentsUnknown_;
  LList<LSDFUnknownChunk> regionsUnknown_;
  bool changed_ = false;
  bool regionsChanged_ = false;
  bool regionListShown_ = false;
  bool autosaveDue_ = false;
};
