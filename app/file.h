#pragma once
// SVFile: an open audio document. It holds the live editing state (the cut list,
// the two change flags, selection, cursor, bookmarks, view state), the file it
// came from and its tags, and a ring of 32 undo snapshots.
//
// Undo and redo exchange complete snapshots, never invert operations. The entry
// at the current index holds the state before the most recent edit and carries
// that edit's name; Undo is possible when the entry before it is used, Redo when
// the entry two places ahead is used. Every snapshot frees the two entries ahead
// of it, which cuts off any redo chain and lets the ring overwrite its oldest
// entries as edits accumulate.
//
// The project's regions are not the document's: the window manager's project
// holds them (SVProject) and the document is told where. Snapshots copy that
// list; undo and redo take back or repeat only the region change of the step
// they cross, since other documents change the same list.
//
// Threads: the main thread owns a document. LCountedPtr<SVFile> counts
// atomically, so a long job on a worker thread may hold the document alive.
#include <cstddef>
#include <cstdint>
#include <memory>

#include "app/file_project_state.h"
#include "app/file_undo.h"
#include "base/counted_ptr.h"
#include "formats/file_tag_data_audio.h"

// Entries of the undo ring; indices run modulo this.
inline constexpr unsigned long kSVUndoRingSize = 32;
// The last-save index when it is not known.
inline constexpr unsigned long kSVUndoIndexUnknown = 32;
// Channel-edit mode word: one channel of a multi-channel file is edited on its own.
inline constexpr std::uint32_t kSVChannelEditSingle = 2;
// A document's path buffer, terminator included.
inline constexpr std::size_t kSVFilePathMax = 520;

// Labels of the snapshots the undo machinery takes itself.
inline constexpr const char* kSVUndoLabelRedo = "Wiederholen";
inline constexpr const char* kSVUndoLabelRevert = "Wiederherstellen";

class SVFile {
public:
  // An untitled document over a copy of list; both change flags start set.
  explicit SVFile(const LCutListAudio& list);
  // A document of the file at path (at most 519 bytes kept); records the file's
  // modification time. Both change flags start set; the loader calls SetFileClean.
  SVFile(const char* path, const LCutListAudio& list);
  virtual ~SVFile() = default;
  SVFile(const SVFile&) = delete;
  SVFile& operator=(const SVFile&) = delete;

  // Live state.
  [[nodiscard]] LCutListAudio& CutList() { return cutList_; }
  [[nodiscard]] const LCutListAudio& CutList() const { return cutList_; }
  [[nodiscard]] bool IsModified() const { return modified_; }
  [[nodiscard]] bool IsChanged() const { return changed_; }
  void ModifiedSet(bool on) { modified_ = on; }
  void ChangedSet(bool on) { changed_ = on; }
  // What every edit does: both flags on.
  void FlagsSet() { modified_ = changed_ = true; }
  [[nodiscard]] SVSelection& Selection() { return selection_; }
  [[nodiscard]] const SVSelection& Selection() const { return selection_; }
  [[nodiscard]] long long Cursor() const { return cursor_; }
  void CursorSet(long long frames) { cursor_ = frames; }
  [[nodiscard]] const LList<LSVBookmark>& Bookmarks() const { return bookmarks_; }
  // Replaces the bookmarks as they are (a project load); they must be sorted by position.
  void BookmarksSet(LList<LSVBookmark> bookmarks) { bookmarks_ = std::move(bookmarks); }
  [[nodiscard]] SVViewState& View() { return view_; }
  [[nodiscard]] const SVViewState& View() const { return view_; }

  // The project's region list that snapshots copy and undo restores; none
  // (the default) snapshots an empty list and restores nothing.
  void RegionListSet(const LCountedPtr<SVRegionList>& regions) { regions_ = regions; }
  [[nodiscard]] LCountedPtr<SVRegionList> RegionList() const { return regions_.lock(); }

  // Undo ring.
  [[nodiscard]] static unsigned long UndoIndexNext(unsigned long index) { return (index + 1) & (kSVUndoRingSize - 1); }
  [[nodiscard]] static unsigned long UndoIndexPrev(unsigned long index) {
    return index == 0 ? kSVUndoRingSize - 1 : index - 1;
  }
  [[nodiscard]] unsigned long UndoIndexCurrent() const { return undoCurrent_; }
  [[nodiscard]] unsigned long UndoIndexOldest() const { return undoOldest_; }
  [[nodiscard]] unsigned long UndoIndexLastSave() const { return lastSave_; }
  // Entry index modulo the ring size.
  [[nodiscard]] const SVFileUndo& UndoEntry(unsigned long index) const { return ring_[index & (kSVUndoRingSize - 1)]; }

  // Pushes a snapshot of the live state labelled description (at most 259 bytes).
  void SaveForUndo(const char* description);
  // Makes entry index the live state. regionsToProject: the entry's regions
  // also replace the project's list. Undo and Redo pass false and replay only
  // the region change of the step they cross, which keeps what other documents
  // did to the shared list.
  void UndoRedoApply(unsigned long index, bool regionsToProject);
  // Records what the step now being made (its snapshot is at the current
  // index) does to the project's regions.
  void RegionChangeRecord(SVRegionChange change);
  [[nodiscard]] bool IsUndoAvailable() const;
  [[nodiscard]] bool IsRedoAvailable() const;
  // The ring part of Undo and Redo; false (and nothing changed) when there is
  // nothing to undo or redo.
  [[nodiscard]] bool Undo();
  [[nodiscard]] bool Redo();
  // Drops the snapshot of an edit that did nothing: frees the entry at the
  // current index and the one after it and steps back. The live state stays.
  void UndoEntryDrop();
  // Rolls back an edit that failed half way: the snapshot its start took
  // becomes the live state again and is dropped. Entries before it and the
  // project's regions stay as they are.
  void UndoRollBack();

  // The document now equals its file (after a save or a load).
  virtual void SetFileClean();
  // Whether undo to last save can run; remembers the index it found.
  [[nodiscard]] bool IsUndoLastSaveAvailable();
  // Reverts to the saved state when IsUndoLastSaveAvailable; the revert is
  // final (Undo and Redo are unavailable afterwards). False when not available.
  [[nodiscard]] bool UndoLastSave();

  // Bookmarks, kept sorted by position.
  // Adds a bookmark after every one at or before position and sets both flags.
  void AddBookmark(const char* name, long long position);
  // Removes the first bookmark of that name; false when there is none.
  bool DeleteBookmark(const char* name);
  // After an insertion (delta > 0) or deletion (delta < 0) starting at from:
  // bookmarks inside a deleted range go, the others at or after from move.
  void OffsetBookmarks(long long from, long long delta);

  // File.
  [[nodiscard]] const char* Path() const { return path_; }
  // At most kSVFilePathMax - 1 bytes.
  void PathSet(const char* path);
  // The file name without its folder.
  [[nodiscard]] const char* FileName() const;
  [[nodiscard]] LFileTagDataAudio& Tags() { return tags_; }
  [[nodiscard]] const LFileTagDataAudio& Tags() const { return tags_; }
  // Associated files and the chunks a project file kept for the document.
  [[nodiscard]] SVFileProjectState& ProjectState() { return projectState_; }
  [[nodiscard]] const SVFileProjectState& ProjectState() const { return projectState_; }
  [[nodiscard]] std::uint32_t ChannelEditMode() const { return channelEditMode_; }
  void ChannelEditModeSet(std::uint32_t mode) { channelEditMode_ = mode; }

  // Outside changes. After a load or save: records the file's modification time
  // as both the recorded and the last seen time (0 when the file cannot be
  // examined), unless the setting "FileModAlert" is "0"; true when recorded.
  bool FileTimeModifiedUpdate();
  // On activation: true once for each outside change of the file.
  [[nodiscard]] bool TestForFileModifications();
  [[nodiscard]] long long TimeModifiedRecorded() const { return timeRecorded_; }
  [[nodiscard]] long long TimeModifiedLastSeen() const { return timeLastSeen_; }

private:
  // Entry index is used and still holds the state that was last saved.
  [[nodiscard]] bool HoldsSavedState(unsigned long index) const;
  // Replays the region change of the step entry index names: taken back
  // (undo) or made again.
  void RegionStepReplay(unsigned long index, bool undo);
  // Copies the live state into entry index, an empty selection collapsed to the cursor.
  void LiveToEntry(unsigned long index);

  // Live state.
  LCutListAudio cutList_;
  bool modified_ = true;
  bool changed_ = true;
  SVSelection selection_;
  long long cursor_ = 0;
  LList<LSVBookmark> bookmarks_;
  std::weak_ptr<SVRegionList> regions_;
  SVViewState view_;

  unsigned long undoCurrent_ = 0;
  unsigned long undoOldest_ = 0;
  SVFileUndo ring_[kSVUndoRingSize];
  char path_[kSVFilePathMax] = {};
  LFileTagDataAudio tags_;
  SVFileProjectState projectState_;
  std::uint32_t channelEditMode_ = 0;
  unsigned long lastSave_ = kSVUndoIndexUnknown;
  long long timeRecorded_ = 0;
  long long timeLastSeen_ = 0;
};
