#pragma once
// Helpers of the tag tests: WAVE files with tag chunks built in code, a plain
// chunk lister that does not share the code under test, and outside tools.
#include <cstdint>
#include <string>
#include <vector>

namespace tagtest {

using Bytes = std::vector<unsigned char>;

void PutLE16(Bytes& b, std::uint16_t v);
void PutLE32(Bytes& b, std::uint32_t v);
std::uint16_t LE16(const Bytes& b, std::size_t at);
std::uint32_t LE32(const Bytes& b, std::size_t at);
void PutText(Bytes& b, const std::string& text);

// A chunk: id, size (the body's size unless given) and the body with its pad byte.
Bytes Chunk(const char* id, const Bytes& body, long long sizeField = -1, bool pad = true);
// "LIST", size, "INFO" and one entry per (id, text) pair, each with its terminating zero.
Bytes InfoList(const std::vector<std::pair<std::string, std::string>>& entries);
// A 16-bit PCM fmt chunk.
Bytes Fmt16(std::uint16_t channels, std::uint32_t rate);
// A data chunk of a 16-bit staircase: sample value = frame index * channels + channel.
Bytes Staircase(int frames, int channels);
// "RIFF", size (file size - 8), "WAVE" and the chunks.
Bytes RiffWave(const std::vector<Bytes>& chunks);
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

Bytes FileBytes(const std::string& path);
void WriteFileBytes(const std::string& path, const Bytes& bytes);
// The names in a folder, without "." and "..".
std::vector<std::string> FolderNames(const std::string& path);

bool HaveTool(const char* name);
// Runs a shell command; answers whether it exited with 0, and its standard output.
bool RunTool(const std::string& command, std::string* output = nullptr);

}  // namespace tagtest
