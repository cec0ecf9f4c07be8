#pragma once
// The progress display of the command: a bar with the status lines on a
// terminal, a plain percentage otherwise. Ctrl-C raises the cancel flag.
#include <atomic>
#include <chrono>
#include <string>

#include "base/process_interface.h"

class TerminalProgress final : public LProcessInterface {
public:
  // quiet: shows no progress at all (errors are still kept).
  explicit TerminalProgress(bool quiet = false);
  ~TerminalProgress() override;

  bool IsCancelled() override;
  void SetStatus(const char* text, int line) override;
  void SetProgress(double fraction) override;
  void SetError(const char* text) override;

  const std::string& Error() const { return error_; }
  // Clears the line the bar was drawn on.
  void Finish();
  // Forgets a cancel so that the next job can run.
  void Reset();

  // Installs the SIGINT handler that cancels the running job.
  static void InstallInterruptHandler();
  static bool Interrupted();
  // Clears an interrupt that ended the last job, before the next one starts.
  static void ResetInterrupt();
  // Readable after an interrupt until ResetInterrupt; -1 before the handler is installed.
  static int InterruptFd();

private:
  void Draw();
  bool quiet_;
  bool tty_;
  std::string status_[2];
  std::string error_;
  int lastShown_ = -1;
  int lastDecile_ = -1;
  std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
  bool drawn_ = false;
};
