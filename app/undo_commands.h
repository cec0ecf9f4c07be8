#pragma once
// SVUndoCommands: Undo, Redo and undo to last save on a window's document, as
// the commands run them: the ring of the document is stepped, then the window
// is told whether its document is modified, its views are refreshed, the
// project's regions are re-applied and the menu entries updated. Main thread only.
#include "app/file_gui.h"
#include "app/undo_menu.h"

// Undo to last save found no saved state that the ring still holds.
inline constexpr const char* kSVRevertUnavailableText =
    "Es gibt keinen gespeicherten Stand, zu dem zurückgekehrt werden kann.";

class SVUndoCommands {
public:
  // Undo (kSVCmdUndo) or Redo (kSVCmdRedo) on the window; false when
  // there is nothing to do, the window has no document or is closing.
  static bool CmUndo(SVFileGUI* window, int command = kSVCmdUndo);
  static bool CmRedo(SVFileGUI* window);
  // Undo to last save; final (neither Undo nor Redo is possible afterwards).
  static bool CmUndoSave(SVFileGUI* window);

private:
  // Notify, refresh and regions after the live state was replaced from the ring.
  static void AfterUndoRedo(SVFileGUI* window);
  static bool CanUndoOn(const SVFileGUI* window);
};
