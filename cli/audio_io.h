#pragma once
// Opening the command's input files and output targets by name.
#include <optional>
#include <string>

#include "engine/sound_sink.h"
#include "engine/sound_source.h"
#include "formats/raw_file.h"

struct InputDescription {
  std::string format;  // German description, e.g. "WAVE, PCM 16 Bit"
};

// Opens a file for reading; raw settings read it as headerless data. On failure
// the source is in error and message holds the German reason.
[[nodiscard]] LSoundSource OpenInput(const std::string& path, const std::optional<LRawSettings>& raw,
                                     InputDescription* description, std::string* message);

struct OutputChoice {
  std::string layout;  // pcm8, pcm16, pcm24, pcm32, float, alaw, ulaw, ima, gsm, raw
  bool dither = false;
  LRawSettings raw;  // for "raw": the format code (rate and channels follow the source)
};

// True for a layout name this command writes.
[[nodiscard]] bool IsKnownLayout(const std::string& layout);
// The layout that keeps an input's sample format where a writer exists for it.
[[nodiscard]] std::string DefaultLayoutFor(const InputDescription& input);

// Opens the writer for a layout on path with the source's rate and channels.
[[nodiscard]] LSoundSink OpenOutput(const std::string& path, const OutputChoice& choice, std::uint32_t sampleRate,
                                    std::uint8_t channels, std::string* message);
