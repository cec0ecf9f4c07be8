#pragma once
// Record locks on byte ranges of an open file, for claims that several running
// instances make on numbered things through one shared lock file.
//
// They belong to the process, not to the descriptor: a process never conflicts
// with its own locks, a child made by fork holds none of them, and closing any
// descriptor of the file drops all of the process's locks on it. A file used this
// way is therefore opened once per process and kept open.
#include "base/platform_file.h"

// Takes a shared or exclusive lock on [offset, offset + length) without waiting,
// or changes the process's own lock there to the one asked for; LFileLock::None
// unlocks. False when another process holds a conflicting lock (or fd is bad).
[[nodiscard]] bool LFileRecordLock(int fd, long long offset, long long length, LFileLock lock);
