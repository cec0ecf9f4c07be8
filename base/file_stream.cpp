#include "base/file_stream.h"

#include <cerrno>
#include <sys/stat.h>
#include <unistd.h>

LFileStream::~LFileStream() {
  if (fd_ >= 0) ::close(fd_);
}

long long LFileStream::Read(void* buffer, long long n) {
  if (fd_ < 0 || n < 0) return -1;
  auto* p = static_cast<char*>(buffer);
  long long done = 0;
  while (done < n) {
    ssize_t got = ::read(fd_, p + done, static_cast<size_t>(n - done));
    if (got < 0) {
      if (errno == EINTR) continue;
      return done > 0 ? done : -1;
    }
    if (got == 0) break;
    done += got;
  }
  return done;
}

long long LFileStream::Write(const void* buffer, long long n) {
  if (fd_ < 0 || n < 0) return -1;
  auto* p = static_cast<const char*>(buffer);
  long long done = 0;
  while (done < n) {
    ssize_t put = ::write(fd_, p + done, static_cast<size_t>(n - done));
    if (put < 0) {
      if (errno == EINTR) continue;
      return done > 0 ? done : -1;
    }
    if (put == 0) break;
    done += put;
  }
  return done;
}

bool LFileStream::Seek(long long offset) {
  return fd_ >= 0 && offset >= 0 && ::lseek(fd_, static_cast<off_t>(offset), SEEK_SET) == offset;
}

long long LFileStream::Tell() {
  if (fd_ < 0) return -1;
  return ::lseek(fd_, 0, SEEK_CUR);
}

bool LFileStream::Truncate(long long size) {
  return fd_ >= 0 && size >= 0 && ::ftruncate(fd_, static_cast<off_t>(size)) == 0;
}

long long LFileStream::Size() {
  struct stat st {};
  if (fd_ < 0 || ::fstat(fd_, &st) != 0) return -1;
  return st.st_size;
}
