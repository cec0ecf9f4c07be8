#include "app/project_load.h"

#include <cstdio>
#include <map>

#include "app/associated_files.h"
#include "app/main_dialog.h"
#include "app/project_chunk_walk.h"
#include "app/project_chunks.h"
#include "app/project_cut_list.h"
#include "app/project_messages.h"
#include "base/file_stream.h"
#include "base/platform_file.h"
#include "base/sdf_format.h"
#include "base/sdf_reader.h"
#include "base/user_folders.h"

namespace {

// A document read from the file, before it joins the windows.
struct LoadedDocument {
  LCountedPtr<SVFile> file;
  int tab = 0;
  LArray<LStringLong> messages;
};

// Everything the file holds; applied to the project only once it was read whole.
struct LoadedProject {
  LArray<LoadedDocument> documents;
  SVRegionList regions;
  LList<LSDFUnknownChunk> unknown;
  LList<LSDFUnknownChunk> documentsUnknown;
  LList<LSDFUnknownChunk> regionsUnknown;
  LStringLong linkedTo;
  bool regionListShown = false;
  LArray<LStringLong> messages;  // the project's own, regions' among them
};

// One load: the reader, the request and the cache items made so far.
class Loader {
public:
  Loader(LProcessInterface& process, LSDFReader& reader, const LStringLong& path, const LStringLong& filesFolder)
      : process_(process), reader_(reader), path_(path), filesFolder_(filesFolder) {}

  LProcessResult Read(LoadedProject& project);

private:
  LProcessResult ReadDocuments(const LSDFChunkInfo& container, LoadedProject& project);
  LProcessResult ReadDocument(const LSDFChunkInfo& container, LoadedProject& project);
  void ReadBookmarks(const LSDFChunkInfo& container, LList<LSVBookmark>& bookmarks, LList<LSDFUnknownChunk>& unknown);
  void ReadBookmark(const LSDFChunkInfo& container, LSVBookmark& bookmark);
  LProcessResult ReadRegions(const LSDFChunkInfo& container, LoadedProject& project);
  LProcessResult ReadRegion(const LSDFChunkInfo& container, SVRegion& region, LArray<LStringLong>& messages);
  // A new folder of the document's own for the files the project carried; empty when none can be made.
  LStringLong FilesFolderMake();
  void Progress() {
    const double size = static_cast<double>(reader_.StreamSize());
    if (size > 0) process_.SetProgress(static_cast<double>(reader_.Position()) / size);
  }
  // Read what a value chunk holds; a short value marks the file damaged.
  void Value(SVChunkWalk& walk, bool& value) {
    if (!walk.Chunk().ReadBool(value)) damaged_ = true;
  }
  void Value(SVChunkWalk& walk, int& value) {
    if (!walk.Chunk().ReadInt(value)) damaged_ = true;
  }
  void Value(SVChunkWalk& walk, long long& value) {
    if (!walk.Chunk().ReadInt64(value)) damaged_ = true;
  }
  void Text(SVChunkWalk& walk, LStringLong& value) {
    if (!walk.Chunk().ReadString(value)) damaged_ = true;
  }
  void Keep(SVChunkWalk& walk, LList<LSDFUnknownChunk>& list) {
    if (!walk.Chunk().ReadUnknownChunk(list)) damaged_ = true;
  }
  void Walked(const SVChunkWalk& walk) {
    if (!walk.IsComplete()) damaged_ = true;
  }

  LProcessInterface& process_;
  LSDFReader& reader_;
  const LStringLong& path_;
  const LStringLong& filesFolder_;
  SVProjectAudioRestore restore_;
  bool damaged_ = false;
};

LStringLong Loader::FilesFolderMake() {
  const LStringLong base = filesFolder_.empty() ? LUserDataFolder() + "/" + kSVProjectFilesFolder : filesFolder_;
  if (!LFolderCreate(base)) return {};
  LStringLong name = path_.substr(path_.rfind('/') == LStringLong::npos ? 0 : path_.rfind('/') + 1);
  if (name.size() > 4 && name.compare(name.size() - 4, 4, ".svp") == 0) name.resize(name.size() - 4);
  if (name.empty() || name[0] == '.') name.insert(name.begin(), '_');
  for (int n = 1; n < 100000; ++n) {
    const LStringLong folder = base + "/" + name + "_" + std::to_string(n);
    if (!LFileExists(folder.c_str())) return LFolderCreate(folder) ? folder : LStringLong();
  }
  return {};
}

LProcessResult Loader::Read(LoadedProject& project) {
  SVChunkWalk top(reader_);
  while (top.Next()) {
    if (process_.IsCancelled()) return kLProcessCancelled;
    LProcessResult result = kLProcessSuccess;
    switch (top.Id()) {
      case kSVProjectDocuments:
        result = ReadDocuments(top.Info(), project);
        break;
      case kSVProjectRegions:
        result = ReadRegions(top.Info(), project);
        break;
      case kSVProjectLinkedTo:
        Text(top, project.linkedTo);
        break;
      case kSVProjectRegionListShown:
        Value(top, project.regionListShown);
        break;
      default:
        Keep(top, project.unknown);
        break;
    }
    if (result != kLProcessSuccess) return result;
  }
  Walked(top);
  if (damaged_) {
    char message[3 * kLPathMax];
    std::snprintf(message, sizeof message, kSVProjectLoadDamaged, path_.c_str());
    project.messages.emplace_back(message);
  }
  return kLProcessSuccess;
}

LProcessResult Loader::ReadDocuments(const LSDFChunkInfo& container, LoadedProject& project) {
  SVChunkWalk walk(reader_, container);
  while (walk.Next()) {
    if (process_.IsCancelled()) return kLProcessCancelled;
    if (walk.Id() != kSVProjectDocument || walk.Type() != kSDFChunkTypeContainer) {
      Keep(walk, project.documentsUnknown);
      continue;
    }
    LProcessResult result = ReadDocument(walk.Info(), project);
    if (result != kLProcessSuccess) return result;
  }
  Walked(walk);
  return kLProcessSuccess;
}

LProcessResult Loader::ReadDocument(const LSDFChunkInfo& container, LoadedProject& project) {
  Progress();
  LStringLong path;
  int tab = 0;
  long long cursor = 0;
  SVSelection selection;
  SVViewState view;
  bool modified = false;
  bool changed = false;
  LList<LSVBookmark> bookmarks;
  LCutListAudio list;
  SVFileProjectState state;
  SVCutListLoadReport report;
  LArray<LStringLong> messages;

  SVChunkWalk walk(reader_, container);
  while (walk.Next()) {
    if (process_.IsCancelled()) return kLProcessCancelled;
    switch (walk.Id()) {
      case kSVDocumentPath:
        Text(walk, path);
        process_.SetStatusF(1, kSVProjectStatusLoadFile, path.c_str());
        break;
      case kSVDocumentTab:
        Value(walk, tab);
        break;
      case kSVDocumentCursor:
        Value(walk, cursor);
        break;
      case kSVDocumentSelectionStart:
        Value(walk, selection.start);
        break;
      case kSVDocumentSelectionEnd:
        Value(walk, selection.end);
        break;
      case kSVDocumentViewFirst:
        Value(walk, view.first);
        break;
      case kSVDocumentViewSecond:
        Value(walk, view.second);
        break;
      case kSVDocumentModified:
        Value(walk, modified);
        break;
      case kSVDocumentChanged:
        Value(walk, changed);
        break;
      case kSVDocumentBookmarks:
        ReadBookmarks(walk.Info(), bookmarks, state.bookmarksUnknownChunks);
        break;
      case kSVDocumentCutList:
      case kSVDocumentCutListLink: {
        const LProcessResult result =
            ProcessLoadCutListAudio(process_, reader_, walk.Info(), walk.Id() == kSVDocumentCutListLink, list,
                                    state.cutListUnknownChunks, restore_, report);
        if (result != kLProcessSuccess) return result;
        if (report.damaged) damaged_ = true;
        break;
      }
      case kSVDocumentAssociatedFiles: {
        bool damaged = false;
        const LProcessResult result = SVAssociatedFilesLoad(
            process_, reader_, walk.Info(), state, [this] { return FilesFolderMake(); }, messages, damaged);
        if (result != kLProcessSuccess) return result;
        if (damaged) damaged_ = true;
        break;
      }
      default:
        Keep(walk, state.unknownChunks);
        break;
    }
  }
  Walked(walk);

  auto file = path.empty() ? std::make_shared<SVFile>(list) : std::make_shared<SVFile>(path.c_str(), list);
  // The copy above starts the flag byte at 0; the project keeps it.
  file->CutList().SetFlags(list.GetFlags());
  file->CursorSet(cursor);
  file->Selection() = selection;
  file->View() = view;
  bookmarks.sort([](const LSVBookmark& a, const LSVBookmark& b) { return a.position < b.position; });
  file->BookmarksSet(std::move(bookmarks));
  file->ProjectState() = std::move(state);
  if (!modified) file->SetFileClean();
  file->ModifiedSet(modified);
  file->ChangedSet(changed);
  if (report.audioMissing) {
    char message[3 * kLPathMax];
    std::snprintf(message, sizeof message, kSVProjectLoadAudioMissing,
                  path.empty() ? kSVProjectUntitled : file->FileName());
    messages.insert(messages.begin(), message);
  }
  project.documents.push_back({std::move(file), tab, std::move(messages)});
  return kLProcessSuccess;
}

void Loader::ReadBookmarks(const LSDFChunkInfo& container, LList<LSVBookmark>& bookmarks,
                           LList<LSDFUnknownChunk>& unknown) {
  SVChunkWalk walk(reader_, container);
  while (walk.Next()) {
    if (walk.Id() != kSVProjectBookmark || walk.Type() != kSDFChunkTypeContainer) {
      Keep(walk, unknown);
      continue;
    }
    LSVBookmark bookmark;
    // Where it stood among the kept chunks, so that a save puts it back there.
    bookmark.sdfValue = static_cast<std::uint32_t>(walk.Info().index);
    ReadBookmark(walk.Info(), bookmark);
    bookmarks.push_back(std::move(bookmark));
  }
  Walked(walk);
}

void Loader::ReadBookmark(const LSDFChunkInfo& container, LSVBookmark& bookmark) {
  LStringLong text;
  int enabled = 1;
  long long time = 0;
  SVChunkWalk walk(reader_, container);
  while (walk.Next()) {
    switch (walk.Id()) {
      case kSVBookmarkName:
        Text(walk, text);
        bookmark.NameSet(text.c_str());
        break;
      case kSVBookmarkSourceFileName:
        Text(walk, text);
        bookmark.SourceFileNameSet(text.c_str());
        break;
      case kSVBookmarkPosition:
        Value(walk, bookmark.position);
        break;
      case kSVBookmarkSampleRate:
        Value(walk, bookmark.sampleRate);
        break;
      case kSVBookmarkIdentifier:
        Value(walk, bookmark.identifier);
        break;
      case kSVBookmarkEnabled:
        Value(walk, enabled);
        bookmark.enabled = enabled != 0 ? 1 : 0;
        break;
      case kSVBookmarkCreationTime:
        Value(walk, time);
        bookmark.creationTime = static_cast<std::time_t>(time);
        break;
      default:
        Keep(walk, bookmark.unknownChunks);
        break;
    }
  }
  Walked(walk);
  bookmark.MsRecompute();
}

LProcessResult Loader::ReadRegions(const LSDFChunkInfo& container, LoadedProject& project) {
  process_.SetStatus(kSVProjectStatusLoadRegions, 0);
  SVChunkWalk walk(reader_, container);
  while (walk.Next()) {
    if (process_.IsCancelled()) return kLProcessCancelled;
    if (walk.Id() != kSVProjectRegion || walk.Type() != kSDFChunkTypeContainer) {
      Keep(walk, project.regionsUnknown);
      continue;
    }
    Progress();
    SVRegion region;
    LProcessResult result = ReadRegion(walk.Info(), region, project.messages);
    if (result != kLProcessSuccess) return result;
    project.regions.push_back(std::move(region));
  }
  Walked(walk);
  return kLProcessSuccess;
}

LProcessResult Loader::ReadRegion(const LSDFChunkInfo& container, SVRegion& region, LArray<LStringLong>& messages) {
  LStringLong text;
  SVCutListLoadReport report;
  SVChunkWalk walk(reader_, container);
  while (walk.Next()) {
    if (process_.IsCancelled()) return kLProcessCancelled;
    switch (walk.Id()) {
      case kSVRegionName:
        Text(walk, text);
        region.NameSet(text.c_str());
        break;
      case kSVRegionSourceFileName:
        Text(walk, text);
        region.SourceFileNameSet(text.c_str());
        break;
      case kSVRegionStartMs:
        Value(walk, region.startMs);
        break;
      case kSVRegionEndMs:
        Value(walk, region.endMs);
        break;
      case kSVRegionStart:
        Value(walk, region.start);
        break;
      case kSVRegionEnd:
        Value(walk, region.end);
        break;
      case kSVRegionSampleRate:
        Value(walk, region.sampleRate);
        break;
      case kSVRegionValue:
        Value(walk, region.value);
        break;
      case kSVRegionCutList:
      case kSVRegionCutListLink: {
        const LProcessResult result =
            ProcessLoadCutListAudio(process_, reader_, walk.Info(), walk.Id() == kSVRegionCutListLink,
                                    region.cutList, region.cutListUnknownChunks, restore_, report);
        if (result != kLProcessSuccess) return result;
        if (report.damaged) damaged_ = true;
        break;
      }
      default:
        Keep(walk, region.unknownChunks);
        break;
    }
  }
  Walked(walk);
  if (report.audioMissing) {
    char message[3 * kLPathMax];
    std::snprintf(message, sizeof message, kSVProjectLoadRegionAudioMissing, region.name);
    messages.emplace_back(message);
  }
  return kLProcessSuccess;
}

}  // namespace

namespace {

void Install(LoadedProject& loaded, SVProject& project, SVWindowManager* windows, const LStringLong& path,
             LArray<LStringLong>& messages, LArray<LCountedPtr<SVFile>>& documents) {
  project.UnknownChunks() = std::move(loaded.unknown);
  project.DocumentsUnknownChunks() = std::move(loaded.documentsUnknown);
  project.RegionsUnknownChunks() = std::move(loaded.regionsUnknown);
  // The list object stays: documents hold it for their undo snapshots.
  project.Regions() = std::move(loaded.regions);
  project.RegionListShownSet(loaded.regionListShown);
  project.ChangedSet(false);
  project.RegionsChangedSet(false);
  project.AutosaveDueSet(false);
  // A link save leads back to the project it stands for.
  project.PathSet(!loaded.linkedTo.empty() ? loaded.linkedTo.c_str() : path.c_str());

  const char* baseLabel = MainDialog::InitialActionLabel(MainDialog::kInitialLoad);
  LArray<LCountedPtr<SVFile>> joined = windows ? LArray<LCountedPtr<SVFile>>() : project.Documents();
  std::map<int, int> tabs;  // tab in the file -> tab of the manager
  for (LoadedDocument& document : loaded.documents) {
    SVFile& file = *document.file;
    for (const LStringLong& message : document.messages) messages.push_back(message);
    if (!windows) {
      file.RegionListSet(project.RegionListPtr());
      file.SaveForUndo(baseLabel);
      joined.push_back(document.file);
      documents.push_back(document.file);
      continue;
    }
    if (!windows->CheckMaxFiles()) break;
    auto tab = tabs.find(document.tab);
    SVFileGUI* window = windows->FileWindowAdd(document.file, file.Path()[0] ? file.FileName() : kSVProjectUntitled,
                                               false, tab == tabs.end() ? kSVNewTab : tab->second);
    tabs[document.tab] = windows->TabOf(window);
    // The base entry, as for a file that was opened: the first edit can be undone back to it.
    file.SaveForUndo(baseLabel);
    documents.push_back(document.file);
    SVFrontEnd& frontEnd = windows->FrontEnd();
    frontEnd.Notify(window, file.IsModified() ? kSVNotifyModified : kSVNotifyClean);
    for (const LStringLong& message : document.messages) frontEnd.WindowMessage(window, message.c_str());
    frontEnd.Refresh(window);
  }
  if (!windows) project.DocumentsSet(std::move(joined));

  for (const LStringLong& message : loaded.messages) messages.push_back(message);
  if (windows) {
    windows->RegionsApply(true);
    for (const LStringLong& message : loaded.messages) windows->FrontEnd().Alert(kSVProjectLoadTitle, message.c_str());
    windows->UndoMenuUpdate();
  }
}

}  // namespace

LSVLoadProject::LSVLoadProject(SVWindowManager& windows, const char* path)
    : project_(windows.Project()), windows_(&windows), path_(path ? path : "") {}

LSVLoadProject::LSVLoadProject(SVProject& project, const char* path) : project_(project), path_(path ? path : "") {}

LProcessResult SVProjectRead(LProcessInterface& process, LSVLoadProject& request, LByteStream& stream) {
  request.messages_.clear();
  request.documents_.clear();
  LSDFReader reader;
  if (!reader.Open(stream, kSDFFileTypeProject)) {
    process.SetErrorF(kSVProjectLoadNotProject, request.path_.c_str());
    return kLProcessFailed;
  }
  process.SetStatus(kSVProjectStatusLoad, 0);
  process.SetProgress(0.0);
  LoadedProject loaded;
  {
    Loader loader(process, reader, request.path_, request.filesFolder_);
    const LProcessResult result = loader.Read(loaded);
    if (result != kLProcessSuccess) return result;
  }
  Install(loaded, request.project_, request.windows_, request.path_, request.messages_, request.documents_);
  process.SetProgress(1.0);
  return kLProcessSuccess;
}

LProcessResult Process(LProcessInterface& process, LSVLoadProject& request) {
  LFileStream file(LFileOpen(request.Path().c_str(), kLFileRead, LFileLock::Shared, kLLockWaitMs));
  if (!file.IsOpen()) {
    process.SetErrorF(kSVProjectLoadOpenError, request.Path().c_str());
    return kLProcessFailed;
  }
  return SVProjectRead(process, request, file);
}

LProcessResult SVProjectOpen(SVWindowManager& windows, const char* path) {
  LSVLoadProject request(windows, path);
  return windows.FrontEnd().RunProcess(kSVProjectLoadTitle,
                                       [&](LProcessInterface& process) { return Process(process, request); });
}
