#include "app/document_commands.h"

#include <algorithm>

#include "app/cut_list_load.h"
#include "app/edit_commands.h"
#include "app/paste_source.h"

namespace {

// Place of index in the ring counted from the oldest entry.
unsigned long Age(const SVFile& file, unsigned long index) {
  return (index + kSVUndoRingSize - file.UndoIndexOldest()) % kSVUndoRingSize;
}

}  // namespace

LArray<SVUndoHistoryEntry> SVDocumentCommands::UndoHistory(const SVFile* file) {
  LArray<SVUndoHistoryEntry> entries;
  if (!file) return entries;
  const unsigned long current = file->UndoIndexCurrent();
  unsigned long index = file->UndoIndexOldest();
  for (unsigned long n = 0; n < kSVUndoRingSize && file->UndoEntry(index).IsUsed(); ++n) {
    const SVFileUndo& entry = file->UndoEntry(index);
    entries.push_back({index, entry.description, entry.timeStamp, index == current});
    index = SVFile::UndoIndexNext(index);
  }
  // After an Undo the last entry keeps the newest state for Redo; it is the
  // state after the entry before it, not a step of its own.
  if (!entries.empty() && Age(*file, entries.back().index) > Age(*file, current)) entries.pop_back();
  return entries;
}

int SVDocumentCommands::UndoHistoryStepsTo(const SVFile* file, unsigned long index) {
  const LArray<SVUndoHistoryEntry> entries = UndoHistory(file);
  const bool known = std::any_of(entries.begin(), entries.end(), [index](const auto& e) { return e.index == index; });
  if (!known) return 0;
  return static_cast<int>(Age(*file, index)) - static_cast<int>(Age(*file, file->UndoIndexCurrent()));
}

SVFileGUI* SVDocumentCommands::PasteToNew(MainDialog& main, std::string* message) {
  const LCutListAudio clip = SVPasteSource::GetAudioFromClipboard(main.FrontEnd(), main.SystemClipboard());
  if (clip.GetLength() == 0) {
    *message = "Die Zwischenablage enthält kein Audio.";
    return nullptr;
  }
  SVFileGUI* window = main.FileNewFromCutList(clip, "Unbenannt", MainDialog::kInitialPasteToNew);
  if (!window) *message = "Es kann kein weiteres Dokument angelegt werden.";
  return window;
}

int SVDocumentCommands::Reload(SVFileGUI* window) {
  if (!window || !window->File() || !*window->File()->Path()) return kLProcessFailed;
  SVFile& file = *window->File();
  LCutListAudio loaded;
  const LProcessResult result = window->Manager().FrontEnd().RunProcess(
      kSVLoadTitle, [&](LProcessInterface& process) { return SVCutListLoadFile(process, file.Path(), loaded); });
  if (result != kLProcessSuccess) return result;
  const int changed = SVEditCommands::Change(window, kSVReloadLabel, [&loaded](SVFile& f) {
    const long long length = loaded.GetLength();
    f.OffsetBookmarks(length, -(f.CutList().GetLength() - std::min(length, f.CutList().GetLength())));
    f.CutList() = loaded;
    f.CursorSet(std::min(f.Cursor(), length));
    f.Selection() = SVSelection{f.Cursor(), f.Cursor()};
  });
  if (changed != kLProcessSuccess) return changed;
  file.SetFileClean();
  file.FileTimeModifiedUpdate();
  window->Manager().FrontEnd().Notify(window, kSVNotifyClean);
  window->Manager().FrontEnd().Refresh(window);
  window->Manager().UndoMenuUpdate();
  return kLProcessSuccess;
}
