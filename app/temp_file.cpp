#include "app/temp_file.h"

#include <cstring>

#include "base/file_stream.h"
#include "base/platform_file.h"
#include "base/user_folders.h"

LStringLong SVTempFileCreate(const char* pattern, const char* suffix) {
  const LStringLong suffixText = suffix ? suffix : "";
  LStringLong path = LTempFolder() + "/" + (pattern ? pattern : "") + suffixText;
  if (path.size() >= static_cast<std::size_t>(kLPathMax)) return LStringLong();
  char buffer[kLPathMax];
  std::memcpy(buffer, path.c_str(), path.size() + 1);
  LFileStream file(LFileCreateUnique(buffer, static_cast<int>(suffixText.size())));
  return file.IsOpen() ? LStringLong(buffer) : LStringLong();
}
