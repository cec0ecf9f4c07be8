#include "support/reporting_child.h"

#include <csignal>
#include <cstdio>
#include <sys/wait.h>
#include <unistd.h>

ReportingChild::ReportingChild(const std::function<int(int reportFd)>& work) {
  int fds[2];
  if (pipe(fds) != 0) return;
  // Buffered output would be printed by both processes.
  std::fflush(nullptr);
  pid_ = fork();
  if (pid_ == 0) {
    close(fds[0]);
    _exit(work(fds[1]));
  }
  close(fds[1]);
  if (pid_ < 0) {
    close(fds[0]);
    return;
  }
  reports_ = fds[0];
}

ReportingChild::~ReportingChild() {
  if (pid_ > 0) (void)Kill();
  if (reports_ >= 0) close(reports_);
}

bool ReportingChild::Read(void* buffer, std::size_t size) {
  auto* at = static_cast<char*>(buffer);
  while (size > 0) {
    const ssize_t n = read(reports_, at, size);
    if (n <= 0) return false;
    at += n;
    size -= static_cast<std::size_t>(n);
  }
  return true;
}

bool ReportingChild::Kill() {
  if (pid_ <= 0) return false;
  kill(pid_, SIGKILL);
  int status = 0;
  const bool waited = waitpid(pid_, &status, 0) == pid_;
  pid_ = -1;
  return waited && WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL;
}
