#pragma once
// Small helpers the subcommands share for reading their arguments.
#include <string>
#include <vector>

#include "formats/raw_file.h"

// Reads "RATE,CHANNELS,CODE"; false when it is not of that form.
[[nodiscard]] bool ParseRawSettings(const std::string& text, LRawSettings* out);

// Prints a German error message to standard error, prefixed with the program name.
void PrintError(const std::string& message);

// Exit statuses of the command (those of LProcessResult).
inline constexpr int kCommandOK = 0;
inline constexpr int kCommandCancelled = 1;
inline constexpr int kCommandFailed = 2;
