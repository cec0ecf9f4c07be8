#include "base/child_process.h"

#include <cerrno>
#include <cstdio>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

void EndFromStatus(pid_t pid, int status, LChildEnd* end) {
  end->id = static_cast<int>(pid);
  end->code = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

}  // namespace

int LChildStartCopy(const std::function<int()>& body) {
  std::fflush(nullptr);
  const pid_t pid = ::fork();
  if (pid == 0) _exit(body());
  return pid < 0 ? -1 : static_cast<int>(pid);
}

int LChildStartProgram(const char* path, char* const argv[], char* const environment[]) {
  pid_t child = -1;
  if (!path || posix_spawn(&child, path, nullptr, nullptr, argv, environment) != 0) return -1;
  return static_cast<int>(child);
}

bool LChildWaitAny(LChildEnd* end) {
  int status = 0;
  pid_t pid;
  while ((pid = ::wait(&status)) < 0) {
    if (errno != EINTR) return false;
  }
  EndFromStatus(pid, status, end);
  return true;
}

bool LChildWait(int id, LChildEnd* end) {
  int status = 0;
  pid_t pid;
  while ((pid = ::waitpid(static_cast<pid_t>(id), &status, 0)) < 0) {
    if (errno != EINTR) return false;
  }
  EndFromStatus(pid, status, end);
  return true;
}

bool LProgramIsRunnable(const char* path) { return path && *path && ::access(path, X_OK) == 0; }
