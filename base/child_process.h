#pragma once
// Child processes: a copy of this process that runs a function, or a program,
// and waiting for them to end. Children are named by their process id.
#include <functional>

struct LChildEnd {
  int id = -1;
  // The child's exit code; -1 when it ended by a signal.
  int code = -1;
};

// Runs body in a copy of this process, which ends with body's result without
// running this process's exit handlers. Answers the child's id, or -1 when no
// copy could be made. Output buffers are flushed first, so nothing is printed twice.
[[nodiscard]] int LChildStartCopy(const std::function<int()>& body);
// Starts the program at path with argv and environment (both ending in null).
// Answers the child's id, or -1 when it could not be started.
[[nodiscard]] int LChildStartProgram(const char* path, char* const argv[], char* const environment[]);
// Waits for any child to end; false when there is no child to wait for.
[[nodiscard]] bool LChildWaitAny(LChildEnd* end);
// Waits for the child to end, through interrupting signals; false when it cannot be waited for.
[[nodiscard]] bool LChildWait(int id, LChildEnd* end);
// True when path names a file this process may run.
[[nodiscard]] bool LProgramIsRunnable(const char* path);
