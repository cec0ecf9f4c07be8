#include "support/file_size_limit.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

bool LimitFileSizeOfThisProcess(long long limitBytes) {
  if (limitBytes < 0) return false;
  std::signal(SIGXFSZ, SIG_IGN);
  rlimit limit{};
  limit.rlim_cur = static_cast<rlim_t>(limitBytes);
  limit.rlim_max = static_cast<rlim_t>(limitBytes);
  return setrlimit(RLIMIT_FSIZE, &limit) == 0;
}

int RunWithFileSizeLimit(long long limitBytes, const std::function<int()>& work) {
  // What the parent has buffered must not come out twice.
  std::fflush(nullptr);
  pid_t child = fork();
  if (child < 0) return kFileSizeLimitChildDied;
  if (child == 0) {
    if (!LimitFileSizeOfThisProcess(limitBytes)) _exit(255);
    _exit(work() & 0xFF);
  }
  int status = 0;
  while (waitpid(child, &status, 0) < 0) {
    if (errno != EINTR) return kFileSizeLimitChildDied;
  }
  return WIFEXITED(status) ? WEXITSTATUS(status) : kFileSizeLimitChildDied;
}
