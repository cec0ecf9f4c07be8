#include "formats/wav_tag_keys.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <string>

bool LWavNumberFieldParse(const char* value, std::size_t maxChars, long long* number) {
  if (!value) return false;
  const std::string head(value, strnlen(value, maxChars));
  char* end = nullptr;
  errno = 0;
  const long long parsed = std::strtoll(head.c_str(), &end, 10);
  if (end == head.c_str() || errno == ERANGE) return false;
  *number = parsed;
  return true;
}
