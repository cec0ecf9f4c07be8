#include "cli/command_args.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <sstream>

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

bool CommandOptions::Has(const std::string& name) const {
  for (const auto& option : options)
    if (option.first == name) return true;
  return false;
}

std::string CommandOptions::Value(const std::string& name, const std::string& fallback) const {
  std::string value = fallback;
  for (const auto& option : options)
    if (option.first == name) value = option.second;
  return value;
}

bool ParseOptions(const std::vector<std::string>& args, const char* command, const char* options, CommandOptions* out) {
  std::vector<std::string> known;
  std::istringstream list(options);
  for (std::string name; list >> name;) known.push_back(name);
  auto knows = [&](const std::string& name) { return std::find(known.begin(), known.end(), name) != known.end(); };
  for (std::size_t i = 0; i < args.size(); ++i) {
    const std::string& a = args[i];
    if (a.size() < 2 || a[0] != '-') {
      out->words.push_back(a);
    } else if (knows(a + "=")) {
      if (i + 1 >= args.size()) {
        PrintError(a + " erwartet einen Wert.");
        return false;
      }
      out->options.emplace_back(a, args[++i]);
    } else if (knows(a)) {
      out->options.emplace_back(a, std::string());
    } else {
      PrintError("Unbekannte Option \"" + a + "\" für " + command + ".");
      return false;
    }
  }
  return true;
}
