#include "base/file_record_lock.h"

#include <cerrno>
#include <fcntl.h>

bool LFileRecordLock(int fd, long long offset, long long length, LFileLock lock) {
  if (fd < 0 || offset < 0 || length <= 0) return false;
  struct flock range {};
  range.l_type = lock == LFileLock::Exclusive ? F_WRLCK : lock == LFileLock::Shared ? F_RDLCK : F_UNLCK;
  range.l_whence = SEEK_SET;
  range.l_start = static_cast<off_t>(offset);
  range.l_len = static_cast<off_t>(length);
  int result;
  do {
    result = ::fcntl(fd, F_SETLK, &range);
  } while (result != 0 && errno == EINTR);
  return result == 0;
}
