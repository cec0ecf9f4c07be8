#pragma once
// SVFrontEnd: what the document model asks of whatever shows it (the command
// line now, windows later, a recording double in tests). The model never calls
// a toolkit; it tells the front end that a window's document changed, asks the
// user questions and runs long jobs through it, which shows progress and lets
// the user cancel.
//
// All calls come on the main thread. RunProcess may run the job on another
// thread but returns only when the job has ended.
#include <functional>
#include <utility>

#include "app/region.h"
#include "base/array.h"
#include "base/process_interface.h"
#include "base/string_long.h"

class SVFileGUI;
struct SVUndoMenuState;

// Notifications to a file window: its document became modified, or clean.
// The numbers are those of the window messages; keep them.
inline constexpr int kSVNotifyModified = 132;
inline constexpr int kSVNotifyClean = 133;

// A long job, handed the progress interface of its dialog.
using SVProcessJob = std::function<LProcessResult(LProcessInterface&)>;

class SVFrontEnd {
public:
  virtual ~SVFrontEnd() = default;

  // kSVNotifyModified or kSVNotifyClean for the window's document.
  virtual void Notify(SVFileGUI* window, int code) = 0;
  // Redraw the window's views and its selection display.
  virtual void Refresh(SVFileGUI* window) = 0;
  // A question with buttons; answers the index of the button chosen (-1 when none).
  [[nodiscard]] virtual int Ask(const char* title, const char* text, const LArray<LStringLong>& buttons) = 0;
  // A message with a single "OK" button.
  virtual void Alert(const char* title, const char* text) = 0;
  // A message shown in the window (e.g. a warning bar).
  virtual void WindowMessage(SVFileGUI* window, const char* text) = 0;
  virtual void StartPlayback(SVFileGUI* window) = 0;
  // Runs job under a progress display titled title and answers its result.
  [[nodiscard]] virtual LProcessResult RunProcess(const char* title, const SVProcessJob& job) = 0;

  // The Undo and Redo entries changed (see undo_menu.h).
  virtual void UndoMenuShow(const SVUndoMenuState& state) { (void)state; }
  // The project's regions changed; full: redraw all of them.
  virtual void RegionsShow(const SVRegionList& regions, bool full) {
    (void)regions;
    (void)full;
  }
  // The recent-files menu holds these paths, newest first.
  virtual void RecentFilesShow(const LArray<LStringLong>& paths) { (void)paths; }

  // The message of the last job that failed with one; commands clear it before they run.
  [[nodiscard]] const LStringLong& LastError() const { return lastError_; }
  void LastErrorClear() { lastError_.clear(); }

protected:
  // For RunProcess: a job failed with this message.
  void LastErrorSet(LStringLong text) { lastError_ = std::move(text); }

private:
  LStringLong lastError_;
};

// Shows nothing: questions get a preset answer, jobs run with a quiet progress
// interface. What batch work and tests start from.
class SVFrontEndQuiet : public SVFrontEnd {
public:
  void Notify(SVFileGUI*, int) override {}
  void Refresh(SVFileGUI*) override {}
  int Ask(const char*, const char*, const LArray<LStringLong>&) override { return answer_; }
  void Alert(const char*, const char*) override {}
  void WindowMessage(SVFileGUI*, const char*) override {}
  void StartPlayback(SVFileGUI*) override {}
  LProcessResult RunProcess(const char* title, const SVProcessJob& job) override;

  // The button index Ask answers (0 unless set).
  void AnswerSet(int answer) { answer_ = answer; }

private:
  int answer_ = 0;
};
