#pragma once
// sonvale play FILE [--from T] [--to T] [--device NAME]: plays with a line of
// progress and level; Ctrl-C stops.
#include <string>
#include <vector>

[[nodiscard]] int RunPlayCommand(const std::vector<std::string>& args);

// Reads a time option (H:MM:SS.mmm or seconds) into milliseconds; false with a message.
[[nodiscard]] bool ParseTimeOption(const std::string& option, const std::string& text, long long* ms,
                                   std::string* message);
