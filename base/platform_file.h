#pragma once
// The platform's file calls: opening with an advisory lock taken at open time,
// timed lock waits, file flags, details and deletion. Nothing above base/ calls
// open, flock or unlink directly.
#include <cstdint>

#include "base/string_long.h"

enum class LFileLock { None, Shared, Exclusive };

enum LFileOpenFlag : unsigned {
  kLFileRead = 1u << 0,
  kLFileWrite = 1u << 1,  // read-write
  kLFileCreate = 1u << 2,
  kLFileTruncate = 1u << 3,
  kLFileNonBlock = 1u << 4,
};

// Readers of shared files wait this long for a lock before they give up.
constexpr int kLLockWaitMs = 3000;

// Opens a file close-on-exec. With a lock, the lock is held when this returns;
// the wait for it lasts at most waitMs (0: one try). Answers the descriptor, or
// -1 with errno set (EWOULDBLOCK when the lock was not had in time).
[[nodiscard]] int LFileOpen(const char* path, unsigned flags, LFileLock lock = LFileLock::None,
                            int waitMs = kLLockWaitMs, int mode = 0666);

// Takes (or changes to) a lock on an open descriptor, waiting at most waitMs.
[[nodiscard]] bool LFileLockWait(int fd, LFileLock lock, int waitMs);
void LFileUnlock(int fd);

struct LFileDetails {
  std::uint64_t size = 0;
  long modTime = 0;          // seconds since the epoch
  long modTimeNanoseconds = 0;  // within that second
  std::uint32_t attributes = 0;  // permission bits and file type
  std::uint64_t device = 0;  // with inode, which file this is, whatever path names it
  std::uint64_t inode = 0;
};
// Follows symbolic links.
[[nodiscard]] bool LFileDetailsGet(const char* path, LFileDetails* out);
[[nodiscard]] bool LFileExists(const char* path);
// True when path names a folder (links followed).
[[nodiscard]] bool LFolderExists(const char* path);
// Creates a new file from the template path, whose last suffixLength characters
// come after six 'X' that are replaced by a name no file has yet (path is
// changed to it). Answers the open descriptor, or -1.
[[nodiscard]] int LFileCreateUnique(char* path, int suffixLength);

// Clears what would keep a file from being deleted (write protection and, where
// the file system allows, the immutable and append-only flags).
bool LFileClearFlags(const char* path);
// Clears the flags and removes the file; true when it is gone afterwards.
bool LFileDelete(const char* path);

// True when the descriptor still names the file at path (a rename over the path
// since it was opened makes this false).
[[nodiscard]] bool LFileIsAt(int fd, const char* path);
// Renames from over to, flushing from to disk first, so that to is either the
// old file or the whole new one, even after a crash.
[[nodiscard]] bool LFileReplace(const char* from, const char* to);

// The absolute path of an existing file with every link and "." or ".." resolved;
// empty when the file does not exist.
[[nodiscard]] LStringLong LPathResolve(const char* path);
// The path that symbolic links at path lead to (relative links taken from the
// folder of the link), path itself when it is no link. The last one need not
// exist; a loop or more than 40 links gives path itself.
[[nodiscard]] LStringLong LPathFollowLinks(const char* path);

// Sleeps, resuming after signals, for the whole time.
void LSleepMs(int ms);
