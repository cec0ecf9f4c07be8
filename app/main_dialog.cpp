#include "app/main_dialog.h"

#include <cstring>
#include <iterator>
#include <string>

#include "app/cut_list_load.h"
#include "base/safe_save.h"
#include "formats/sound_file.h"

namespace {

constexpr const char* kInitialLabels[] = {
    "Datei laden",
    "Leere Datei erstellen",
    "In neue Datei kopieren",
    "In eine neue Datei einfügen",
    "Inhalte wiederherstellen",
    "Duplikat",
    "Duplikatdatei geladen",
};
static_assert(std::size(kInitialLabels) == MainDialog::kInitialDuplicateLoaded + 1);

}  // namespace

MainDialog::MainDialog(SVFrontEnd& frontEnd, SVSystemClipboard& board)
    : frontEnd_(frontEnd), board_(board), windows_(frontEnd), clipboard_(board, frontEnd), recent_(&frontEnd) {}

SVUndoMenuState MainDialog::UpdateUndoMenuItem() { return windows_.UndoMenuUpdate(); }

const char* MainDialog::InitialActionLabel(int action) {
  if (action < 0 || action >= static_cast<int>(std::size(kInitialLabels))) return nullptr;
  return kInitialLabels[action];
}

void MainDialog::InitialUndoEntrySave(INITIAL_ACTION action) {
  const char* label = InitialActionLabel(action);
  SVFileGUI* window = windows_.CurrentFileWindow();
  if (!label || !window || !window->File()) return;
  if (windows_.TabFileWindowCount(windows_.TabOf(window)) < 1) return;
  window->File()->SaveForUndo(label);
  UpdateUndoMenuItem();
}

SVFileGUI* MainDialog::FileOpen(const char* path) {
  if (!path || !*path || !windows_.CheckMaxFiles()) return nullptr;
  LCutListAudio list;
  LSoundFileInfo info;
  const LProcessResult result = frontEnd_.RunProcess(
      kSVLoadTitle, [&](LProcessInterface& process) { return SVCutListLoadFile(process, path, list, true, &info); });
  if (result != kLProcessSuccess) return nullptr;
  auto file = std::make_shared<SVFile>(path, list);
  // The tags travel with the document to the files it is saved to.
  file->Tags() = info.tags;
  // The file's markers become the document's bookmarks.
  const LArray<std::uint64_t> markers = info.tags.MarkerSamplesGet();
  for (std::size_t i = 0; i < markers.size(); ++i) {
    const std::string name = "Marke " + std::to_string(i + 1);
    file->AddBookmark(name.c_str(), static_cast<long long>(markers[i]));
  }
  file->SetFileClean();
  file->FileTimeModifiedUpdate();
  const char* slash = std::strrchr(path, '/');
  SVFileGUI* window = windows_.FileWindowAdd(std::move(file), slash ? slash + 1 : path, false);
  InitialUndoEntrySave(kInitialLoad);
  recent_.RecentFileListAdd(path);
  frontEnd_.Notify(window, kSVNotifyClean);
  frontEnd_.Refresh(window);
  return window;
}

SVFileGUI* MainDialog::FileNewFromCutList(const LCutListAudio& list, const char* wanted, INITIAL_ACTION action) {
  if (!windows_.CheckMaxFiles()) return nullptr;
  SVFileGUI* window = windows_.FileWindowAdd(std::make_shared<SVFile>(list), wanted, true);
  InitialUndoEntrySave(action);
  frontEnd_.Notify(window, kSVNotifyModified);
  frontEnd_.Refresh(window);
  return window;
}

LProcessResult MainDialog::FileSave(SVFileGUI* window, const SVFileSaveRequest& request, std::string* message,
                                    std::string* warnings) {
  SVFile* file = window ? window->File() : nullptr;
  if (!file) return kLProcessFailed;
  const std::string target = request.path.empty() ? std::string(file->Path()) : request.path;
  if (target.empty()) {
    *message = "Das Dokument hat noch keinen Dateinamen. Mit \"save PFAD\" speichern.";
    return kLProcessFailed;
  }
  // The document's own file tells the format it keeps unless another is asked for.
  LSoundFileInfo info;
  LSoundFileFormat original;
  const bool known = *file->Path() && LSoundFile::Describe(file->Path(), &info) && LSoundFileFormatOf(info, &original);
  LSoundFileFormat format;
  if (!LSoundFileFormatChoose(target, request.format, known ? &original : nullptr, &format, message) ||
      (!request.quality.empty() && !LSoundFileQualityParse(request.quality, &format, message)))
    return kLProcessFailed;
  format.dither = request.dither;
  format.tags = file->Tags();
  // Bookmarks travel as the file's markers.
  format.tags.MarkersClear();
  for (const LSVBookmark& b : file->Bookmarks()) format.tags.MarkerAddSample(static_cast<std::uint64_t>(b.position));
  if (const char* missing = LSoundFile::MissingCodec(format)) {
    *message = std::string("Der Codec \"") + missing + "\" ist in dieser Ausgabe von Sonvale nicht verfügbar.";
    return kLProcessFailed;
  }
  LSafeSave save(target.c_str());
  if (!save.IsReady()) {
    *message = "Die Datei \"" + target +
               "\" kann nicht geschrieben werden. Überprüfen Sie, ob der Ordner existiert und Sie Schreibzugriff haben.";
    return kLProcessFailed;
  }
  LSoundSource source = file->CutList().OpenSource();
  LSoundFileSaveNotes notes;
  const LProcessResult result = frontEnd_.RunProcess(kSVSaveTitle, [&](LProcessInterface& process) {
    LSafeSaveProcess reporting(process, save);
    return LSoundFile::Save(reporting, source, save.TempPath().c_str(), format, kSVSaveTitle, &notes);
  });
  if (result != kLProcessSuccess) {
    *message = frontEnd_.LastError().empty() ? std::string(kSVSaveTitle) + " ist fehlgeschlagen." : frontEnd_.LastError();
    return result;
  }
  if (!save.Commit()) {
    *message = "Die Datei \"" + target + "\" konnte nicht ersetzt werden. Sie bleibt unverändert.";
    return kLProcessFailed;
  }
  if (target != file->Path()) file->PathSet(target.c_str());
  file->SetFileClean();
  file->FileTimeModifiedUpdate();
  recent_.RecentFileListAdd(target.c_str());
  frontEnd_.Notify(window, kSVNotifyClean);
  UpdateUndoMenuItem();
  *warnings = LSoundFileSaveWarnings(notes, format, target.c_str());
  return kLProcessSuccess;
}
