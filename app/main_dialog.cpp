#include "app/main_dialog.h"

#include <cstring>
#include <iterator>
#include <string>

#include "app/cut_list_load.h"
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
    : frontEnd_(frontEnd), windows_(frontEnd), clipboard_(board, frontEnd), recent_(&frontEnd) {}

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
