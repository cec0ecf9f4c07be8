#pragma once
// Document services a window offers beyond the command language: the undo
// history as a list with jumps to any of its entries, paste into a new
// document, and reloading a file that another program changed. Toolkit-free;
// main thread only.
#include <string>

#include "app/file_gui.h"
#include "app/main_dialog.h"
#include "base/array.h"
#include "base/string_long.h"

// Undo label of a reload.
inline constexpr const char* kSVReloadLabel = "Neu laden";

// One reachable state of a document's history: the state after the edit the
// entry is named after (the oldest entry: how the document came to be).
struct SVUndoHistoryEntry {
  unsigned long index = 0;  // the entry's index in the undo ring
  LStringLong description;
  LStringLong timeStamp;
  bool current = false;  // the live state is this one
};

class SVDocumentCommands {
public:
  // The states Undo and Redo can reach, oldest first; empty without a document.
  [[nodiscard]] static LArray<SVUndoHistoryEntry> UndoHistory(const SVFile* file);
  // Steps to the entry at ring index: positive counts Redos, negative Undos;
  // 0 when it is the current one or not in the history.
  [[nodiscard]] static int UndoHistoryStepsTo(const SVFile* file, unsigned long index);

  // The clipboard's audio as a new document titled "Unbenannt" (made unique).
  // nullptr with the reason in message when there is no audio or no room.
  static SVFileGUI* PasteToNew(MainDialog& main, std::string* message);

  // Loads the window's file again in place of its audio, as an edit that Undo
  // takes back, so the edits made before are not lost; the document then equals
  // its file. Results as SVEditCommands (0 done, 1 cancelled, 2 failed).
  [[nodiscard]] static int Reload(SVFileGUI* window);
};
