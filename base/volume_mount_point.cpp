#include "base/volume_mount_point.h"

#include <sys/stat.h>

namespace {

LStringLong Parent(const LStringLong& path) {
  std::size_t slash = path.find_last_of('/');
  if (slash == LStringLong::npos || slash == 0) return "/";
  return path.substr(0, slash);
}

}  // namespace

LStringLong LVolumeMountPoint(const char* path) {
  if (!path || path[0] != '/') return "/";
  LStringLong at = path;
  while (at.size() > 1 && at.back() == '/') at.pop_back();
  struct stat st {};
  while (::stat(at.c_str(), &st) != 0) {
    if (at == "/") return "/";
    at = Parent(at);
  }
  // Climb while the parent lies on the same device; the last folder before the device changes is the mount point.
  while (at != "/") {
    LStringLong up = Parent(at);
    struct stat upSt {};
    if (::stat(up.c_str(), &upSt) != 0 || upSt.st_dev != st.st_dev) break;
    at = up;
  }
  return at;
}
