#pragma once
// The table of the formats we write, one row per LSoundFileKind: its names
// (which double as the extensions of its files), how our own reader knows and
// opens it, its writer, the codec it needs and what it stores. Everything that
// depends on the kind reads its row; adding a kind means adding a row, and the
// compiler names a kind that has none.
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>

#include "base/byte_stream.h"
#include "engine/sound_sink.h"
#include "engine/sound_source.h"
#include "formats/sound_file.h"
#include "formats/sound_file_info.h"

// A new stream over the bytes to read from the start, or null when they cannot be opened.
using LSoundFileOpener = std::function<std::unique_ptr<LByteStream>()>;

struct LSoundFileKindRow {
  LSoundFileKind kind;
  // Its own name first; a name past the last is null.
  const char* names[3];
  // The layouts it stores, one bit per LSoundFileLayout; 0 for lossy codecs.
  std::uint16_t layouts;
  // Whether the bytes hold this kind (head: the first bytes, stream: the same
  // bytes from an unknown position). Null where only FFmpeg reads it.
  bool (*sniff)(const unsigned char* head, std::size_t size, LByteStream& stream);
  // Our reader; null where only FFmpeg reads it.
  LSoundSource (*open)(const LSoundFileOpener& opener, LSoundFileInfo* info);
  // The writer for sound of the rate and channel count given.
  LSoundSink (*sink)(const char* path, const LSoundFileFormat& format, std::uint32_t rate, int channels);
  // The name of the encoder that the build lacks, or null.
  const char* (*missingCodec)();
  // Whether a tag of the key has a place in the file (markers aside).
  bool (*holdsTag)(const std::string& key);
};

[[nodiscard]] const LSoundFileKindRow& LSoundFileKindRowOf(LSoundFileKind kind);
// The rows in the order in which our readers look at a file's content.
[[nodiscard]] std::span<const LSoundFileKindRow* const> LSoundFileKindRows();
