#pragma once
// Fault injection for writers that only take a path: the work runs in a child
// process (fork) whose files cannot grow beyond a limit. A write that would pass
// it writes up to the limit and then fails with EFBIG, as on a full disk; the
// signal that would otherwise end the child (SIGXFSZ) is ignored. The limit
// counts bytes of every file the child writes, and reading is not limited.
#include <functional>

// The child's exit status when it did not end by returning from work.
inline constexpr int kFileSizeLimitChildDied = -1;

// Runs work in the child and answers the value it returned (0 to 255), or
// kFileSizeLimitChildDied. The child leaves with _exit: no destructors of the
// parent's objects run twice.
[[nodiscard]] int RunWithFileSizeLimit(long long limitBytes, const std::function<int()>& work);

// Makes the calling process a writer of at most limitBytes per file from now
// on (for a child about to exec a program, which keeps both settings).
[[nodiscard]] bool LimitFileSizeOfThisProcess(long long limitBytes);
