#include "base/platform_file.h"

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fcntl.h>
#include <linux/fs.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

int LockOperation(LFileLock lock) { return lock == LFileLock::Exclusive ? LOCK_EX : LOCK_SH; }

}  // namespace

void LSleepMs(int ms) {
  if (ms <= 0) return;
  timespec want{ms / 1000, static_cast<long>(ms % 1000) * 1000000L};
  timespec left{};
  while (nanosleep(&want, &left) != 0 && errno == EINTR) want = left;
}

bool LFileLockWait(int fd, LFileLock lock, int waitMs) {
  if (fd < 0) return false;
  if (lock == LFileLock::None) return true;
  const int op = LockOperation(lock) | LOCK_NB;
  timespec start{};
  clock_gettime(CLOCK_MONOTONIC, &start);
  for (;;) {
    if (flock(fd, op) == 0) return true;
    if (errno != EWOULDBLOCK && errno != EINTR) return false;
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    long long elapsed = (now.tv_sec - start.tv_sec) * 1000LL + (now.tv_nsec - start.tv_nsec) / 1000000LL;
    if (elapsed >= waitMs) {
      errno = EWOULDBLOCK;
      return false;
    }
    LSleepMs(10);
  }
}

void LFileUnlock(int fd) {
  if (fd >= 0) flock(fd, LOCK_UN);
}

int LFileOpen(const char* path, unsigned flags, LFileLock lock, int waitMs, int mode) {
  if (!path) {
    errno = EINVAL;
    return -1;
  }
  int oflags = O_CLOEXEC | ((flags & kLFileWrite) ? O_RDWR : O_RDONLY);
  if (flags & kLFileCreate) oflags |= O_CREAT;
  if (flags & kLFileNonBlock) oflags |= O_NONBLOCK;
  int fd;
  do {
    fd = ::open(path, oflags, mode);
  } while (fd < 0 && errno == EINTR);
  if (fd < 0) return -1;
  if (!LFileLockWait(fd, lock, (flags & kLFileNonBlock) ? 0 : waitMs)) {
    int saved = errno;
    ::close(fd);
    errno = saved;
    return -1;
  }
  // Truncate only once the lock is ours, so a reader holding it never sees the file emptied.
  if ((flags & kLFileTruncate) && ::ftruncate(fd, 0) != 0) {
    int saved = errno;
    ::close(fd);
    errno = saved;
    return -1;
  }
  return fd;
}

bool LFileDetailsGet(const char* path, LFileDetails* out) {
  struct stat st {};
  if (!path || ::stat(path, &st) != 0) return false;
  if (out) {
    out->size = static_cast<std::uint64_t>(st.st_size);
    out->modTime = static_cast<long>(st.st_mtim.tv_sec);
    out->modTimeNanoseconds = static_cast<long>(st.st_mtim.tv_nsec);
    out->attributes = static_cast<std::uint32_t>(st.st_mode);
    out->device = static_cast<std::uint64_t>(st.st_dev);
    out->inode = static_cast<std::uint64_t>(st.st_ino);
  }
  return true;
}

bool LFileExists(const char* path) {
  struct stat st {};
  return path && ::stat(path, &st) == 0;
}

bool LFolderExists(const char* path) {
  struct stat st {};
  return path && ::stat(path, &st) == 0 && S_ISDIR(st.st_mode);
}

int LFileCreateUnique(char* path, int suffixLength) { return path ? ::mkstemps(path, suffixLength) : -1; }

bool LFileIsAt(int fd, const char* path) {
  struct stat opened {}, named {};
  return fd >= 0 && path && ::fstat(fd, &opened) == 0 && ::stat(path, &named) == 0 &&
         opened.st_dev == named.st_dev && opened.st_ino == named.st_ino;
}

bool LFileReplace(const char* from, const char* to) {
  if (!from || !to) return false;
  int fd = ::open(from, O_RDONLY | O_CLOEXEC);
  if (fd < 0) return false;
  bool synced = ::fsync(fd) == 0;
  ::close(fd);
  return synced && std::rename(from, to) == 0;
}

bool LFileClearFlags(const char* path) {
  struct stat st {};
  if (!path || ::lstat(path, &st) != 0) return false;
  bool ok = true;
  if (S_ISREG(st.st_mode) && !(st.st_mode & S_IWUSR)) ok = ::chmod(path, st.st_mode | S_IWUSR) == 0;
  int fd = ::open(path, O_RDONLY | O_NONBLOCK | O_CLOEXEC);
  if (fd >= 0) {
    int attr = 0;
    if (ioctl(fd, FS_IOC_GETFLAGS, &attr) == 0 && (attr & (FS_IMMUTABLE_FL | FS_APPEND_FL))) {
      attr &= ~(FS_IMMUTABLE_FL | FS_APPEND_FL);
      ok = ioctl(fd, FS_IOC_SETFLAGS, &attr) == 0 && ok;
    }
    ::close(fd);
  }
  return ok;
}

bool LFileDelete(const char* path) {
  if (!path) return false;
  if (::unlink(path) == 0 || errno == ENOENT) return true;
  LFileClearFlags(path);
  return ::unlink(path) == 0 || errno == ENOENT;
}

LStringLong LPathResolve(const char* path) {
  if (!path || !*path) return {};
  char* resolved = ::realpath(path, nullptr);
  if (!resolved) return {};
  LStringLong result = resolved;
  std::free(resolved);
  return result;
}

LStringLong LPathFollowLinks(const char* path) {
  if (!path) return {};
  constexpr int kMaxLinks = 40;  // as the kernel's own limit
  LStringLong at = path;
  for (int hop = 0; hop < kMaxLinks; ++hop) {
    struct stat st {};
    if (::lstat(at.c_str(), &st) != 0 || !S_ISLNK(st.st_mode)) return at;
    char target[PATH_MAX];
    const ssize_t length = ::readlink(at.c_str(), target, sizeof target - 1);
    if (length <= 0) return at;
    target[length] = '\0';
    if (target[0] == '/') {
      at = target;
    } else {
      const auto slash = at.rfind('/');
      at = slash == LStringLong::npos ? LStringLong(target) : at.substr(0, slash + 1) + target;
    }
  }
  return path;
}
