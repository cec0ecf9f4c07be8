#pragma once
// Loading a project file: every document is rebuilt (window, cut list, cursor,
// selection, view, flags, bookmarks, associated files) and the project's regions
// replace the present ones. Chunks this build does not know stay with the object
// whose container held them and go back on the next save.
//
// The audio of a full save goes into new cache items; a link save's references
// must still name living items. Audio that is gone reads as silence and the
// document (or region) loads with a message saying so; the rest of the project
// loads as well. A damaged or cut-short file loads as far as it can be read,
// with a message. Nothing is added to the windows or the project before the
// whole file was read: a cancelled or failed load changes nothing.
//
// Runs on the main thread (it makes windows), typically inside a progress display.
#include "app/project.h"
#include "app/window_manager.h"
#include "base/array.h"
#include "base/byte_stream.h"
#include "base/counted_ptr.h"
#include "base/process_interface.h"
#include "base/string_long.h"

// Folder, under the user's data folder, that carried files are written back
// into when the request names none.
inline constexpr const char* kSVProjectFilesFolder = "project_files";

class LSVLoadProject {
public:
  // Opens each document in a file window of the manager, in the tabs it was
  // saved in, and loads into the manager's project.
  LSVLoadProject(SVWindowManager& windows, const char* path);
  // Adds the documents to the project without windows.
  LSVLoadProject(SVProject& project, const char* path);

  [[nodiscard]] const LStringLong& Path() const { return path_; }
  // The folder under which carried files are written back, a new folder per
  // document; empty (the default) is kSVProjectFilesFolder in the user's data folder.
  void FilesFolderSet(const char* folder) { filesFolder_ = folder ? folder : ""; }
  [[nodiscard]] const LStringLong& FilesFolder() const { return filesFolder_; }

  // After Process: what the user was told did not load as it was, in order.
  [[nodiscard]] const LArray<LStringLong>& Messages() const { return messages_; }
  // After Process: the documents loaded, in the order of the file.
  [[nodiscard]] const LArray<LCountedPtr<SVFile>>& Documents() const { return documents_; }

private:
  friend LProcessResult SVProjectRead(LProcessInterface& process, LSVLoadProject& request, LByteStream& stream);

  SVProject& project_;
  SVWindowManager* windows_ = nullptr;
  LStringLong path_;
  LStringLong filesFolder_;
  LArray<LStringLong> messages_;
  LArray<LCountedPtr<SVFile>> documents_;
};

// Opens the request's path under a shared lock (waiting at most kLLockWaitMs)
// and loads it. kLProcessFailed, with the reason set, when the file cannot be
// opened or is not a project file; kLProcessCancelled when stopped.
[[nodiscard]] LProcessResult Process(LProcessInterface& process, LSVLoadProject& request);

// The same from a stream, from its present position.
[[nodiscard]] LProcessResult SVProjectRead(LProcessInterface& process, LSVLoadProject& request, LByteStream& stream);

// The open command: loads into the manager under the front end's progress display.
[[nodiscard]] LProcessResult SVProjectOpen(SVWindowManager& windows, const char* path);
