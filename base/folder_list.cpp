#include "base/folder_list.h"

#include <cstring>
#include <dirent.h>

bool LFolderListFiles(const char* folder, const char* extension, const std::function<void(const char* name)>& visit) {
  if (!folder || !*folder || !extension) return false;
  DIR* dir = ::opendir(folder);
  if (!dir) return false;
  const std::size_t extLength = std::strlen(extension);
  while (const dirent* entry = ::readdir(dir)) {
    const char* name = entry->d_name;
    std::size_t length = std::strlen(name);
    if (length > extLength && std::strcmp(name + length - extLength, extension) == 0) visit(name);
  }
  ::closedir(dir);
  return true;
}
