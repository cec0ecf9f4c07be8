#include "base/disk_space.h"

#include <mutex>
#include <sys/statvfs.h>

namespace {
std::mutex gMeasureMutex;
std::function<long long(const char*)> gMeasure;
}  // namespace

long long LDiskFreeBytes(const char* path) {
  {
    std::lock_guard<std::mutex> lock(gMeasureMutex);
    if (gMeasure) return gMeasure(path);
  }
  struct statvfs vfs {};
  if (!path || ::statvfs(path, &vfs) != 0) return -1;
  return static_cast<long long>(vfs.f_bavail) * static_cast<long long>(vfs.f_frsize);
}

void LDiskFreeBytesOverride(std::function<long long(const char*)> measure) {
  std::lock_guard<std::mutex> lock(gMeasureMutex);
  gMeasure = std::move(measure);
}
