#include "support/temp_folder.h"

#include <cstdlib>
#include <dirent.h>
#include <filesystem>
#include <vector>

TempFolder::TempFolder() {
  const char* base = std::getenv("TMPDIR");
  std::string pattern = std::string(base && *base ? base : "/tmp") + "/sonvale-test-XXXXXX";
  std::vector<char> buffer(pattern.begin(), pattern.end());
  buffer.push_back('\0');
  if (mkdtemp(buffer.data())) path_ = buffer.data();
}

TempFolder::~TempFolder() {
  if (path_.empty()) return;
  std::error_code ec;
  std::filesystem::remove_all(path_, ec);
}

int OpenDescriptorCount() {
  int count = 0;
  if (DIR* dir = opendir("/proc/self/fd")) {
    while (dirent* entry = readdir(dir)) {
      if (entry->d_name[0] != '.') ++count;
    }
    closedir(dir);
    --count;  // the listing's own descriptor
  }
  return count;
}
