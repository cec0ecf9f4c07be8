#include "app/project_save.h"

#include <algorithm>
#include <cstdint>
#include <ctime>

#include "app/associated_files.h"
#include "app/project_chunk_order.h"
#include "app/project_chunks.h"
#include "app/project_cut_list.h"
#include "app/project_messages.h"
#include "base/file_stream.h"
#include "base/platform_file.h"
#include "base/safe_save.h"
#include "base/sdf_format.h"
#include "base/sdf_writer.h"

static_assert(sizeof(std::time_t) == 8, "bookmark creation times are stored as 8 bytes");

namespace {

// How a document's share of the progress is divided.
constexpr double kBookmarksShare = 0.05;  // then the cut list
constexpr double kCutListEnd = 0.9;       // then the associated files

LProcessResult WriteBookmarks(LProcessInterface& process, LSDFWriter& writer, int order, const SVFile& file) {
  const SVFileProjectState& state = file.ProjectState();
  process.SetStatus(kSVProjectStatusBookmarks, 1);
  SVChunkOrder bookmarksOrder(state.bookmarksUnknownChunks);
  writer.StartContainer(kSVDocumentBookmarks, state.bookmarksUnknownChunks, order);
  const double count = static_cast<double>(file.Bookmarks().size());
  double done = 0;
  for (const LSVBookmark& bookmark : file.Bookmarks()) {
    if (process.IsCancelled()) return kLProcessCancelled;
    // A bookmark read from a project goes back where it stood among the kept chunks.
    const int at = bookmark.sdfValue < kLSVBookmarkSdfValueNew ? bookmarksOrder.At(static_cast<int>(bookmark.sdfValue))
                                                                : bookmarksOrder.Next();
    SVChunkOrder fieldOrder(bookmark.unknownChunks);
    writer.StartContainer(kSVProjectBookmark, bookmark.unknownChunks, at);
    writer.WriteString(kSVBookmarkName, bookmark.name, fieldOrder.Next());
    writer.WriteString(kSVBookmarkSourceFileName, bookmark.sourceFileName, fieldOrder.Next());
    writer.WriteInt64(kSVBookmarkPosition, bookmark.position, fieldOrder.Next());
    writer.WriteInt(kSVBookmarkSampleRate, bookmark.sampleRate, fieldOrder.Next());
    writer.WriteInt(kSVBookmarkIdentifier, bookmark.identifier, fieldOrder.Next());
    writer.WriteInt(kSVBookmarkEnabled, bookmark.enabled != 0 ? 1 : 0, fieldOrder.Next());
    const int timeOrder = fieldOrder.Next();
    if (writer.IsOK()) {
      writer.StartChunk(kSVBookmarkCreationTime, kSDFChunkTypeRecord, timeOrder);
      writer.WriteData(&bookmark.creationTime, sizeof bookmark.creationTime);
      writer.EndChunk(kSVBookmarkCreationTime);
    }
    writer.EndContainer(kSVProjectBookmark);
    process.SetProgress(kBookmarksShare * ++done / count);
  }
  writer.EndContainer(kSVDocumentBookmarks);
  return kLProcessSuccess;
}

LProcessResult WriteDocument(LProcessInterface& process, LSDFWriter& writer, int order, SVFile& file, int tab,
                             bool link, SVProjectAudioStore& store) {
  SVFileProjectState& state = file.ProjectState();
  SVChunkOrder fieldOrder(state.unknownChunks);
  writer.StartContainer(kSVProjectDocument, state.unknownChunks, order);
  writer.WriteString(kSVDocumentPath, file.Path(), fieldOrder.Next());
  writer.WriteInt(kSVDocumentTab, tab, fieldOrder.Next());
  writer.WriteInt64(kSVDocumentCursor, file.Cursor(), fieldOrder.Next());
  writer.WriteInt64(kSVDocumentSelectionStart, file.Selection().start, fieldOrder.Next());
  writer.WriteInt64(kSVDocumentSelectionEnd, file.Selection().end, fieldOrder.Next());
  writer.WriteInt64(kSVDocumentViewFirst, file.View().first, fieldOrder.Next());
  writer.WriteInt64(kSVDocumentViewSecond, file.View().second, fieldOrder.Next());
  writer.WriteBool(kSVDocumentModified, file.IsModified(), fieldOrder.Next());
  writer.WriteBool(kSVDocumentChanged, file.IsChanged(), fieldOrder.Next());

  LProcessResult result = WriteBookmarks(process, writer, fieldOrder.Next(), file);
  if (result != kLProcessSuccess) return result;

  LProcessInterfaceSubProcess cutListProgress(process, kBookmarksShare, kCutListEnd);
  result = link ? ProcessSaveCutListAudioLink(cutListProgress, writer, kSVDocumentCutListLink, fieldOrder.Next(),
                                              file.CutList(), state.cutListUnknownChunks)
                : ProcessSaveCutListAudio(cutListProgress, writer, kSVDocumentCutList, fieldOrder.Next(),
                                          file.CutList(), state.cutListUnknownChunks, store);
  if (result != kLProcessSuccess) return result;

  LProcessInterfaceSubProcess filesProgress(process, kCutListEnd, 1.0);
  result = SVAssociatedFilesSave(filesProgress, writer, fieldOrder.Next(), state);
  if (result != kLProcessSuccess) return result;
  writer.EndContainer(kSVProjectDocument);
  return writer.IsOK() ? kLProcessSuccess : kLProcessFailed;
}

LProcessResult WriteRegion(LProcessInterface& process, LSDFWriter& writer, int order, const SVRegion& region,
                           bool link, SVProjectAudioStore& store) {
  SVChunkOrder fieldOrder(region.unknownChunks);
  writer.StartContainer(kSVProjectRegion, region.unknownChunks, order);
  writer.WriteString(kSVRegionName, region.name, fieldOrder.Next());
  writer.WriteString(kSVRegionSourceFileName, region.sourceFileName, fieldOrder.Next());
  writer.WriteInt64(kSVRegionStartMs, region.startMs, fieldOrder.Next());
  writer.WriteInt64(kSVRegionEndMs, region.endMs, fieldOrder.Next());
  writer.WriteInt64(kSVRegionStart, region.start, fieldOrder.Next());
  writer.WriteInt64(kSVRegionEnd, region.end, fieldOrder.Next());
  writer.WriteInt(kSVRegionSampleRate, region.sampleRate, fieldOrder.Next());
  writer.WriteInt(kSVRegionValue, region.value, fieldOrder.Next());
  LProcessResult result =
      link ? ProcessSaveCutListAudioLink(process, writer, kSVRegionCutListLink, fieldOrder.Next(), region.cutList,
                                         region.cutListUnknownChunks)
           : ProcessSaveCutListAudio(process, writer, kSVRegionCutList, fieldOrder.Next(), region.cutList,
                                     region.cutListUnknownChunks, store);
  if (result != kLProcessSuccess) return result;
  writer.EndContainer(kSVProjectRegion);
  return writer.IsOK() ? kLProcessSuccess : kLProcessFailed;
}

LProcessResult Write(LProcessInterface& process, LSVSaveProject& request, LByteStream& stream, bool link,
                     LSDFWriter& writer) {
  SVProject& project = request.Project();
  const LArray<LSVSaveProject::Document> documents = request.Documents();
  if (!writer.Open(stream, kSDFFileTypeProject, kSDFDataVersionProject, project.UnknownChunks()))
    return kLProcessFailed;
  SVChunkOrder topOrder(project.UnknownChunks());

  double total = 0;
  for (const LSVSaveProject::Document& document : documents)
    total += static_cast<double>(document.file->CutList().GetLength());
  for (const SVRegion& region : project.Regions()) total += static_cast<double>(std::max(0LL, region.Length()));
  if (total <= 0) total = 1.0;
  process.SetStatus(kSVProjectStatusFiles, 0);
  process.SetProgress(0.0);

  SVProjectAudioStore store;
  if (!link) {
    for (const LSVSaveProject::Document& document : documents) store.Plan(document.file->CutList());
    for (const SVRegion& region : project.Regions()) store.Plan(region.cutList);
  }

  double done = 0;
  SVChunkOrder documentsOrder(project.DocumentsUnknownChunks());
  writer.StartContainer(kSVProjectDocuments, project.DocumentsUnknownChunks(), topOrder.Next());
  for (const LSVSaveProject::Document& document : documents) {
    if (process.IsCancelled()) return kLProcessCancelled;
    SVFile& file = *document.file;
    if (!link) file.ChangedSet(false);
    process.SetStatusF(1, kSVProjectStatusFile, file.FileName());
    const double length = static_cast<double>(file.CutList().GetLength());
    LProcessInterfaceSubProcess share(process, done / total, (done + length) / total);
    LProcessResult result = WriteDocument(share, writer, documentsOrder.Next(), file, document.tab, link, store);
    if (result != kLProcessSuccess) return result;
    done += length;
  }
  if (!link) project.ChangedSet(false);
  writer.EndContainer(kSVProjectDocuments);

  process.SetStatus(kSVProjectStatusRegions, 0);
  SVChunkOrder regionsOrder(project.RegionsUnknownChunks());
  writer.StartContainer(kSVProjectRegions, project.RegionsUnknownChunks(), topOrder.Next());
  for (const SVRegion& region : project.Regions()) {
    if (process.IsCancelled()) return kLProcessCancelled;
    process.SetStatusF(1, kSVProjectStatusRegion, region.name);
    const double length = static_cast<double>(std::max(0LL, region.Length()));
    LProcessInterfaceSubProcess share(process, done / total, (done + length) / total);
    LProcessResult result = WriteRegion(share, writer, regionsOrder.Next(), region, link, store);
    if (result != kLProcessSuccess) return result;
    done += length;
  }
  if (!link) project.RegionsChangedSet(false);
  writer.EndContainer(kSVProjectRegions);

  if (link) writer.WriteString(kSVProjectLinkedTo, project.Path().c_str(), topOrder.Next());
  writer.WriteBool(kSVProjectRegionListShown, project.IsRegionListShown(), topOrder.Next());
  // Close puts the kept top-level chunks that stood after everything known last.
  if (!writer.IsOK() || !writer.Close()) return kLProcessFailed;
  project.AutosaveDueSet(false);
  process.SetProgress(1.0);
  return kLProcessSuccess;
}

LProcessResult SaveToPath(LProcessInterface& process, LSVSaveProject& request, const char* path, bool link) {
  LFileStream file(LFileOpen(path, kLFileWrite | kLFileCreate | kLFileTruncate, LFileLock::Exclusive, kLLockWaitMs));
  if (!file.IsOpen()) {
    process.SetErrorF(kSVProjectSaveOpenError, request.Path().c_str());
    return kLProcessFailed;
  }
  return SVProjectWrite(process, request, file, link);
}

}  // namespace

LSVSaveProject::LSVSaveProject(SVWindowManager& windows, const char* path)
    : project_(windows.Project()), windows_(&windows), path_(path ? path : "") {}

LSVSaveProject::LSVSaveProject(SVProject& project, const char* path) : project_(project), path_(path ? path : "") {}

LArray<LSVSaveProject::Document> LSVSaveProject::Documents() const {
  LArray<Document> documents;
  if (!windows_) {
    int tab = 0;
    for (const LCountedPtr<SVFile>& file : project_.Documents()) {
      if (file) documents.push_back({file, tab});
      ++tab;
    }
    return documents;
  }
  for (int tab = 0; tab < windows_->TabCount(); ++tab) {
    for (int index = 0; index < windows_->TabFileWindowCount(tab); ++index) {
      SVFileGUI* window = windows_->FileWindowAt(tab, index);
      if (window && !window->IsClosing() && window->FilePtr()) documents.push_back({window->FilePtr(), tab});
    }
  }
  return documents;
}

LProcessResult SVProjectWrite(LProcessInterface& process, LSVSaveProject& request, LByteStream& stream, bool link) {
  LSDFWriter writer;
  const LProcessResult result = Write(process, request, stream, link, writer);
  // Reading the cache or an associated file set its own reason; a writer that failed did not.
  if (result == kLProcessFailed && !writer.IsOK()) process.SetErrorF(kSVProjectSaveWriteError, request.Path().c_str());
  return result;
}

LProcessResult Process(LProcessInterface& process, LSVSaveProject& request, bool link) {
  return SaveToPath(process, request, request.Path().c_str(), link);
}

LProcessResult SVProjectSaveSafe(LProcessInterface& process, LSVSaveProject& request, bool link) {
  LSafeSave safe(request.Path().c_str());
  if (!safe.IsReady()) {
    process.SetErrorF(kSVProjectSaveOpenError, request.Path().c_str());
    return kLProcessFailed;
  }
  const LProcessResult result = SaveToPath(process, request, safe.TempPath().c_str(), link);
  if (result != kLProcessSuccess) return result;
  if (!safe.Commit()) {
    process.SetErrorF(kSVProjectSaveWriteError, request.Path().c_str());
    return kLProcessFailed;
  }
  if (!link) request.Project().PathSet(request.Path().c_str());
  return kLProcessSuccess;
}

LProcessResult SVProjectSave(SVWindowManager& windows, const char* path, bool link) {
  LSVSaveProject request(windows, path);
  return windows.FrontEnd().RunProcess(
      kSVProjectSaveTitle, [&](LProcessInterface& process) { return SVProjectSaveSafe(process, request, link); });
}
