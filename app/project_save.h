#pragma once
// Saving a project (".svp", an SDF file of type 26, data version 7): every open
// document with its cut list, cursor, selection, view, flags, bookmarks and
// associated files, in tab order, then the project's regions.
//
// A full save writes each cut list with the audio it plays (the project opens
// without the cache) and clears the change flags; a link save writes the cut
// lists as references into the cache (fast, for the autosave while the items
// live), adds the path of the project it stands for and clears nothing but the
// autosave flag. Chunks that a newer version wrote and a load kept go back into
// the containers they came from.
//
// Runs on the main thread (it reads the documents), typically inside a progress
// display; the cancellation test is asked between documents, bookmarks,
// regions and blocks of audio.
#include "app/project.h"
#include "app/window_manager.h"
#include "base/array.h"
#include "base/byte_stream.h"
#include "base/process_interface.h"
#include "base/string_long.h"

class LSVSaveProject {
public:
  // The documents of the manager's file windows, tab by tab (windows being
  // closed are left out), and the manager's project.
  LSVSaveProject(SVWindowManager& windows, const char* path);
  // The project's documents, each in a tab of its own.
  LSVSaveProject(SVProject& project, const char* path);

  [[nodiscard]] const LStringLong& Path() const { return path_; }
  [[nodiscard]] SVProject& Project() { return project_; }

  struct Document {
    LCountedPtr<SVFile> file;
    int tab = 0;  // 0-based position of the document's tab
  };
  // What the save writes, in order, as the windows are now.
  [[nodiscard]] LArray<Document> Documents() const;

private:
  SVProject& project_;
  SVWindowManager* windows_ = nullptr;
  LStringLong path_;
};

// Opens the request's path (created when missing) under an exclusive lock,
// waiting at most kLLockWaitMs, empties it and writes the project. Answers
// kLProcessSuccess, kLProcessCancelled (the file is left as written so far) or
// kLProcessFailed with the reason set; a target that cannot be opened or locked
// is not touched.
[[nodiscard]] LProcessResult Process(LProcessInterface& process, LSVSaveProject& request, bool link);

// The same into a stream, from its present position.
[[nodiscard]] LProcessResult SVProjectWrite(LProcessInterface& process, LSVSaveProject& request, LByteStream& stream,
                                            bool link);

// What the save command does: writes into a temporary file beside the target,
// which replaces the target only when the save succeeded; a failed or cancelled
// save leaves the old file as it was. A full save then makes the target the
// project's path.
[[nodiscard]] LProcessResult SVProjectSaveSafe(LProcessInterface& process, LSVSaveProject& request, bool link);

// The save command on the manager's project, under the front end's progress display.
[[nodiscard]] LProcessResult SVProjectSave(SVWindowManager& windows, const char* path, bool link);
