#include "cli/command_args.h"

#include <cstdio>
#include <cstdlib>

bool ParseRawSettings(const std::string& text, LRawSettings* out) {
  long values[3];
  const char* p = text.c_str();
  for (int i = 0; i < 3; ++i) {
    char* end = nullptr;
    values[i] = std::strtol(p, &end, 10);
    if (end == p || (i < 2 && *end != ',') || (i == 2 && *end != '\0')) return false;
    p = end + 1;
  }
  if (values[0] < 1 || values[0] > 1000000 || values[1] < 1 || values[1] > 255 || values[2] < 0) return false;
  out->sampleRate = static_cast<std::int32_t>(values[0]);
  out->channels = static_cast<std::uint8_t>(values[1]);
  out->formatCode = static_cast<std::int32_t>(values[2]);
  return true;
}

void PrintError(const std::string& message) { std::fprintf(stderr, "sonvale: %s\n", message.c_str()); }
