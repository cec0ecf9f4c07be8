#pragma once
// LFileModifier: the modification protocol as a scope guard, for edits with
// early exits. Start takes the snapshot; Commit ends the edit; leaving the
// scope started but not committed puts the snapshot back and drops it, so an
// edit that failed half way leaves the document and the undo ring as they were.
//
//   LFileModifier modifier(window);
//   if (!modifier.Start("Löschen")) return;
//   ... change the cut list, return on failure ...
//   modifier.Commit();
#include "app/file_gui.h"

class LFileModifier {
public:
  explicit LFileModifier(SVFileGUI* window) : window_(window) {}
  ~LFileModifier();
  LFileModifier(const LFileModifier&) = delete;
  LFileModifier& operator=(const LFileModifier&) = delete;

  // SVCoreUtils::StartModifyFile; true when the edit may go ahead.
  [[nodiscard]] bool Start(const char* description, bool channelEdit = true);
  // SVCoreUtils::EndModifyFile; its answer is also kept: false means the guard
  // will roll the edit back.
  bool Commit();

  [[nodiscard]] bool IsStarted() const { return started_; }
  [[nodiscard]] bool IsCommitted() const { return committed_; }
  [[nodiscard]] SVFileGUI* Window() const { return window_; }

private:
  SVFileGUI* window_ = nullptr;
  bool started_ = false;
  bool committed_ = false;
};
