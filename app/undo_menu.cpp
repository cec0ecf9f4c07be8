#include "app/undo_menu.h"

#include <cstdio>

#include "app/file.h"

namespace {

LStringLong Label(const char* format, const char* description) {
  char text[2 * kLPathMax];
  std::snprintf(text, sizeof text, format, description);
  return text;
}

}  // namespace

SVUndoMenuState SVUndoMenuStateGet(const SVFile* file) {
  SVUndoMenuState state;
  state.undo.command = kSVCmdUndo;
  state.undo.key = kSVKeyUndo;
  state.redo.command = kSVCmdRedo;
  state.redo.key = kSVKeyRedo;
  const unsigned long current = file ? file->UndoIndexCurrent() : 0;
  state.undo.enabled = file && file->IsUndoAvailable();
  state.undo.label = Label(kSVUndoLabelFormat, state.undo.enabled ? file->UndoEntry(current).description : "");
  state.redo.enabled = file && file->IsRedoAvailable();
  state.redo.label = Label(kSVRedoLabelFormat, state.redo.enabled ? file->UndoEntry(current + 1).description : "");
  return state;
}
