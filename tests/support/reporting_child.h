#pragma once
// A child process that reports to its parent through a pipe until the parent
// kills it, for the tests of what a crash part way leaves behind.
#include <cstddef>
#include <functional>
#include <sys/types.h>

class ReportingChild {
public:
  // Forks; the child runs work with the pipe's writing end and leaves with
  // _exit(work's value) should work return.
  explicit ReportingChild(const std::function<int(int reportFd)>& work);
  ~ReportingChild();
  ReportingChild(const ReportingChild&) = delete;
  ReportingChild& operator=(const ReportingChild&) = delete;

  [[nodiscard]] bool Started() const { return pid_ > 0; }
  // Reads exactly size bytes of reports; false once the child closed the pipe first.
  [[nodiscard]] bool Read(void* buffer, std::size_t size);
  // Sends SIGKILL and waits; true when the signal ended the child. Reports
  // written before it died can still be read.
  [[nodiscard]] bool Kill();

private:
  pid_t pid_ = -1;
  int reports_ = -1;
};
