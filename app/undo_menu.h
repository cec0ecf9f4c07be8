#pragma once
// The Undo and Redo entries of the menu and toolbar as data: labels, tips and
// enabled states that a front end shows (SVFrontEnd::UndoMenuShow).
#include "app/command_table.h"
#include "base/string_long.h"

class SVFile;

// The menu keys of Undo and Redo (kSVCmdUndo, kSVCmdRedo): 'Z' with the menu
// modifier, Redo adding Shift, as toolkit key values. Saved with shortcuts; keep them.
inline constexpr int kSVKeyUndo = 0x1005A;
inline constexpr int kSVKeyRedo = 0x3005A;

// Label formats; the argument is the description of the entry concerned.
inline constexpr const char* kSVUndoLabelFormat = "Rückgängig %s";
inline constexpr const char* kSVRedoLabelFormat = "Wiederholen %s";

struct SVUndoMenuItem {
  int command = 0;
  int key = 0;
  LStringLong label;  // also the toolbar item's tip
  bool enabled = false;
  bool operator==(const SVUndoMenuItem&) const = default;
};

struct SVUndoMenuState {
  SVUndoMenuItem undo;
  SVUndoMenuItem redo;
  bool operator==(const SVUndoMenuState&) const = default;
};

// The entries for a document; with none both are disabled and carry no description.
[[nodiscard]] SVUndoMenuState SVUndoMenuStateGet(const SVFile* file);
