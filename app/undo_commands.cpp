#include "app/undo_commands.h"

#include "app/file.h"
#include "app/window_manager.h"

bool SVUndoCommands::CanUndoOn(const SVFileGUI* window) { return window && window->File() && !window->IsClosing(); }

void SVUndoCommands::AfterUndoRedo(SVFileGUI* window) {
  SVWindowManager& manager = window->Manager();
  SVFrontEnd& view = manager.FrontEnd();
  view.Notify(window, window->File()->IsModified() ? kSVNotifyModified : kSVNotifyClean);
  view.Refresh(window);
  manager.RegionsApply(true);
  manager.UndoMenuUpdate();
}

bool SVUndoCommands::CmUndo(SVFileGUI* window, int command) {
  if (command == kSVCmdRedo) return CmRedo(window);
  if (!CanUndoOn(window) || !window->File()->Undo()) return false;
  AfterUndoRedo(window);
  return true;
}

bool SVUndoCommands::CmRedo(SVFileGUI* window) {
  if (!CanUndoOn(window) || !window->File()->Redo()) return false;
  AfterUndoRedo(window);
  return true;
}

bool SVUndoCommands::CmUndoSave(SVFileGUI* window) {
  if (!CanUndoOn(window) || !window->File()->UndoLastSave()) return false;
  AfterUndoRedo(window);
  return true;
}
