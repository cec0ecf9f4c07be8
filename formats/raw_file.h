#pragma once
// LRawFile: headerless sample files, read and written with settings that the
// user gives (rate, channels and the layout code).
#include <cstdint>
#include <memory>

#include "base/byte_stream.h"
#include "engine/sound_sink.h"
#include "engine/sound_source.h"

// Layout codes of headerless files; they are kept in the user's settings: never change.
enum LRawFormatCode : std::int32_t {
  kLRawVOX = 0,  // Dialogic VOX ADPCM, mono
  kLRawMuLaw = 1,
  kLRawALaw = 2,
  kLRaw16 = 3,       // 16-bit signed, little-endian
  kLRawU8 = 4,       // 8-bit unsigned
  kLRawS8 = 5,       // 8-bit signed
  kLRawBE16 = 6,     // 16-bit signed, big-endian
  kLRawFloat = 7,    // 32-bit float, little-endian
  kLRawFloatBE = 8,  // 32-bit float, big-endian
};

struct LRawSettings {
  std::int32_t sampleRate = 8000;
  std::uint8_t channels = 1;
  std::int32_t formatCode = kLRawMuLaw;
};

class LRawFile {
 public:
  // The whole file is sample data; a file that does not exist reads as no frames
  // (error code 4). An unknown format code gives an error source with code 1.
  [[nodiscard]] static LSoundSource OpenSource(const char* path, const LRawSettings& settings);
  [[nodiscard]] static LSoundSource OpenSource(std::unique_ptr<LByteStream> stream, const LRawSettings& settings);
  // The headerless writer for the layout; the error sink for VOX and unknown codes.
  [[nodiscard]] static LSoundSink OpenSink(const char* path, const LRawSettings& settings);
};
