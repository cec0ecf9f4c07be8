#pragma once
// Reading the editor's command language: lines hold commands separated by ";",
// words are separated by blanks, and "..." or '...' keep blanks inside a word.
#include <string>
#include <vector>

#include "app/command_dispatcher.h"

using CommandWords = std::vector<std::string>;

// Splits a line into commands and each command into words; "#" outside quotes
// starts a comment. False with a message when a quote is not closed.
[[nodiscard]] bool SplitCommandLine(const std::string& line, std::vector<CommandWords>* commands, std::string* error);

// Reads a time: frames with a suffix f ("4410f"), else a time text that
// LSoundTime::IsValid accepts ("1:02.5", "90"), turned into frames at rate.
[[nodiscard]] bool ParseTimeToFrames(const std::string& text, unsigned rate, long long* frames);

// Finds the command the words name in the command table (the longest match,
// so "select all" is not "select") and reads its arguments: times in frames at
// rate, numbers, words, and the options the command takes. False with a German
// message naming how the command is called.
[[nodiscard]] bool ParseCommandWords(const CommandWords& words, unsigned rate, int* id, SVCommandArgs* args,
                                     std::string* error);

// Reads a decimal number (a comma works as the decimal point, as Germans write it).
[[nodiscard]] bool ParseNumber(const std::string& text, double* value);

