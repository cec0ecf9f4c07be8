#pragma once
// LProcessInterface: what a long operation is handed, to report progress and
// status and to learn that the user has stopped it. Implemented by front ends
// (a terminal progress bar, a dialog) and by tests.
#include <atomic>
#include <string>

// Results of long operations. Also the exit status of the command.
enum LProcessResult : int {
  kLProcessSuccess = 0,
  kLProcessCancelled = 1,
  kLProcessFailed = 2,
};

class LProcessInterface {
public:
  virtual ~LProcessInterface() = default;

  // True once the user has stopped the job. Operations ask between blocks.
  [[nodiscard]] virtual bool IsCancelled() = 0;
  // Status text on a line of the display (0 is the title line, 1 the detail).
  virtual void SetStatus(const char* text, int line) = 0;
  // Progress from 0 to 1.
  virtual void SetProgress(double fraction) = 0;
  // A message for the user about why the job failed.
  virtual void SetError(const char* text) = 0;
  virtual void SetProgressIndeterminateOn() {}
  virtual void SetProgressIndeterminateOff() {}

  void SetErrorF(const char* format, ...) __attribute__((format(printf, 2, 3)));
  void SetStatusF(int line, const char* format, ...) __attribute__((format(printf, 3, 4)));
};

// Maps progress of a sub-job into [from, to] of its parent and forwards the rest.
class LProcessInterfaceSubProcess final : public LProcessInterface {
public:
  LProcessInterfaceSubProcess(LProcessInterface& parent, double from, double to)
      : parent_(parent), from_(from), to_(to) {}

  bool IsCancelled() override { return parent_.IsCancelled(); }
  void SetStatus(const char* text, int line) override { parent_.SetStatus(text, line); }
  void SetProgress(double fraction) override;
  void SetError(const char* text) override { parent_.SetError(text); }
  void SetProgressIndeterminateOn() override { parent_.SetProgressIndeterminateOn(); }
  void SetProgressIndeterminateOff() override { parent_.SetProgressIndeterminateOff(); }

private:
  LProcessInterface& parent_;
  double from_;
  double to_;
};

// Shows nothing; keeps the last error and status texts and a cancel flag that
// another thread or a signal handler may raise.
class LProcessInterfaceQuiet : public LProcessInterface {
public:
  bool IsCancelled() override;
  void SetStatus(const char* text, int line) override;
  void SetProgress(double fraction) override { progress_ = fraction; }
  void SetError(const char* text) override { error_ = text ? text : ""; }

  void Cancel() { cancel_.store(true, std::memory_order_relaxed); }
  // Cancels once the cancellation test has been asked this many times (tests).
  void CancelAfterChecks(long checks) { cancelAfter_ = checks; }

  const std::string& Error() const { return error_; }
  const std::string& Status(int line) const { return status_[line == 0 ? 0 : 1]; }
  double Progress() const { return progress_; }
  long Checks() const { return checks_; }

private:
  std::atomic<bool> cancel_{false};
  std::string error_;
  std::string status_[2];
  double progress_ = 0.0;
  long checks_ = 0;
  long cancelAfter_ = -1;
};
