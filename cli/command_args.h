#pragma once
// Small helpers the subcommands share for reading their arguments.
#include <string>
#include <utility>
#include <vector>

#include "formats/raw_file.h"

// A subcommand's arguments: its options in the order given, and the other words.
struct CommandOptions {
  std::vector<std::pair<std::string, std::string>> options;  // name, value ("" for a flag)
  std::vector<std::string> words;

  [[nodiscard]] bool Has(const std::string& name) const;
  // The value of the last occurrence; fallback when the option is absent.
  [[nodiscard]] std::string Value(const std::string& name, const std::string& fallback = {}) const;
};

// Reads args of the subcommand named command. options lists the options it
// takes, blank-separated, those that take a value ending in '=' ("--to= --dither").
// False with a German message printed for an unknown option or a missing value.
[[nodiscard]] bool ParseOptions(const std::vector<std::string>& args, const char* command, const char* options,
                                CommandOptions* out);

// Reads "RATE,CHANNELS,CODE"; false when it is not of that form.
[[nodiscard]] bool ParseRawSettings(const std::string& text, LRawSettings* out);

// Prints a German error message to standard error, prefixed with the program name.
void PrintError(const std::string& message);

// Exit statuses of the command (those of LProcessResult).
inline constexpr int kCommandOK = 0;
inline constexpr int kCommandCancelled = 1;
inline constexpr int kCommandFailed = 2;
