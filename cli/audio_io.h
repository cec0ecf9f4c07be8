#pragma once
// Opening the command's input files and choosing output formats by name.
#include <optional>
#include <string>

#include "engine/sound_source.h"
#include "formats/raw_file.h"
#include "formats/sound_file.h"

// Opens a file for reading through format dispatch; raw settings read it as
// headerless data. On failure the source is in error and message holds the
// German reason.
[[nodiscard]] LSoundSource OpenInput(const std::string& path, const std::optional<LRawSettings>& raw,
                                     LSoundFileInfo* info, std::string* message);

// A German one-line description of what an opener found, e.g. "WAVE, PCM 16 Bit".
[[nodiscard]] std::string DescribeFormat(const LSoundFileInfo& info);

// The format for a target: by name when given, else by the extension, keeping
// what it can of the input's format (its layout, a lossy codec's bit rate);
// quality, when not empty, is a --quality setting. False with a message.
[[nodiscard]] bool FormatForTarget(const std::string& target, const std::string& name, const LSoundFileInfo* input,
                                   const std::string& quality, LSoundFileFormat* format, std::string* message);
