#include "base/user_folders.h"

#include <cerrno>
#include <cstdlib>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

LStringLong HomeFolder() {
  if (const char* home = std::getenv("HOME"); home && *home) return home;
  if (const passwd* pw = getpwuid(getuid()); pw && pw->pw_dir) return pw->pw_dir;
  return "/tmp";
}

LStringLong XdgFolder(const char* variable, const char* fallback) {
  const char* value = std::getenv(variable);
  // The rules say a relative value is to be ignored.
  LStringLong base = (value && value[0] == '/') ? LStringLong(value) : HomeFolder() + fallback;
  return base + "/sonvale";
}

}  // namespace

LStringLong LUserDataFolder() { return XdgFolder("XDG_DATA_HOME", "/.local/share"); }
LStringLong LUserConfigFolder() { return XdgFolder("XDG_CONFIG_HOME", "/.config"); }

LStringLong LTempFolder() {
  const char* value = std::getenv("TMPDIR");
  return (value && *value) ? LStringLong(value) : LStringLong("/tmp");
}

bool LFolderCreate(const LStringLong& path) {
  if (path.empty()) return false;
  for (std::size_t at = 1; at <= path.size(); ++at) {
    if (at == path.size() || path[at] == '/') {
      LStringLong part = path.substr(0, at);
      if (::mkdir(part.c_str(), 0777) != 0 && errno != EEXIST) return false;
    }
  }
  struct stat st {};
  return ::stat(path.c_str(), &st) == 0 && S_ISDIR(st.st_mode);
}
