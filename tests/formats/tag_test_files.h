#pragma once
// Helpers of the tag tests: WAVE files with tag chunks built in code and a plain
// chunk lister that does not share the code under test.
#include <cstdint>
#include <string>
#include <vector>

#include "wave_fixtures.h"

namespace tagtest {

// The byte, chunk, file and tool helpers are the WAVE fixtures' own.
using ::Chunk;
using ::FileBytes;
using ::FolderNames;
using ::HaveTool;
using ::PutLE16;
using ::PutLE32;
using ::RiffWave;
using ::RunTool;
using ::WriteFileBytes;
inline std::uint16_t LE16(const Bytes& b, std::size_t at) { return GetLE16(b, at); }
inline std::uint32_t LE32(const Bytes& b, std::size_t at) { return GetLE32(b, at); }

void PutText(Bytes& b, const std::string& text);

// "LIST", size, "INFO" and one entry per (id, text) pair, each with its terminating zero.
Bytes InfoList(const std::vector<std::pair<std::string, std::string>>& entries);
// A 16-bit PCM fmt chunk.
Bytes Fmt16(std::uint16_t channels, std::uint32_t rate);
// A data chunk of a 16-bit staircase: sample value = frame index * channels + channel.
Bytes Staircase(int frames, int channels);
// fmt, staircase data, then the extra chunks.
Bytes PlainWave(int frames = 1000, int channels = 2, std::uint32_t rate = 44100,
                const std::vector<Bytes>& after = {});

struct ListedChunk {
  std::string id;
  std::size_t offset = 0;  // of the header
  std::uint32_t size = 0;
  Bytes body;
};
// The top-level chunks of a well-formed file.
std::vector<ListedChunk> ListChunks(const Bytes& file);
const ListedChunk* FindChunk(const std::vector<ListedChunk>& chunks, const std::string& id);
std::vector<std::string> ChunkIds(const std::vector<ListedChunk>& chunks);
// The text of a fixed-width field, cut at the first zero.
std::string FieldText(const Bytes& body, std::size_t offset, std::size_t width);



}  // namespace tagtest
