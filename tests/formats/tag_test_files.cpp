#include "tag_test_files.h"

#include <cstdio>
#include <cstring>
#include <dirent.h>
#include <fstream>
#include <iterator>

namespace tagtest {

void PutLE16(Bytes& b, std::uint16_t v) {
  b.push_back(static_cast<unsigned char>(v));
  b.push_back(static_cast<unsigned char>(v >> 8));
}
void PutLE32(Bytes& b, std::uint32_t v) {
  for (int i = 0; i < 4; ++i) b.push_back(static_cast<unsigned char>(v >> (8 * i)));
}
std::uint16_t LE16(const Bytes& b, std::size_t at) { return static_cast<std::uint16_t>(b.at(at) | b.at(at + 1) << 8); }
std::uint32_t LE32(const Bytes& b, std::size_t at) {
  return static_cast<std::uint32_t>(b.at(at)) | static_cast<std::uint32_t>(b.at(at + 1)) << 8 |
         static_cast<std::uint32_t>(b.at(at + 2)) << 16 | static_cast<std::uint32_t>(b.at(at + 3)) << 24;
}
void PutText(Bytes& b, const std::string& text) { b.insert(b.end(), text.begin(), text.end()); }

Bytes Chunk(const char* id, const Bytes& body, long long sizeField, bool pad) {
  Bytes b;
  PutText(b, std::string(id, 4));
  PutLE32(b, static_cast<std::uint32_t>(sizeField < 0 ? static_cast<long long>(body.size()) : sizeField));
  b.insert(b.end(), body.begin(), body.end());
  if (pad && (body.size() & 1)) b.push_back(0);
  return b;
}

Bytes InfoList(const std::vector<std::pair<std::string, std::string>>& entries) {
  Bytes body;
  PutText(body, "INFO");
  for (const auto& [id, text] : entries) {
    Bytes value(text.begin(), text.end());
    value.push_back(0);
    const Bytes entry = Chunk(id.c_str(), value);
    body.insert(body.end(), entry.begin(), entry.end());
  }
  return Chunk("LIST", body);
}

Bytes Fmt16(std::uint16_t channels, std::uint32_t rate) {
  Bytes body;
  PutLE16(body, 1);
  PutLE16(body, channels);
  PutLE32(body, rate);
  PutLE32(body, rate * channels * 2);
  PutLE16(body, static_cast<std::uint16_t>(channels * 2));
  PutLE16(body, 16);
  return Chunk("fmt ", body);
}

Bytes Staircase(int frames, int channels) {
  Bytes body;
  for (int i = 0; i < frames * channels; ++i) PutLE16(body, static_cast<std::uint16_t>(i));
  return Chunk("data", body);
}

Bytes RiffWave(const std::vector<Bytes>& chunks) {
  Bytes file;
  PutText(file, "RIFF");
  PutLE32(file, 0);
  PutText(file, "WAVE");
  for (const Bytes& c : chunks) file.insert(file.end(), c.begin(), c.end());
  const auto size = static_cast<std::uint32_t>(file.size() - 8);
  for (int i = 0; i < 4; ++i) file[4 + i] = static_cast<unsigned char>(size >> (8 * i));
  return file;
}

Bytes PlainWave(int frames, int channels, std::uint32_t rate, const std::vector<Bytes>& after) {
  std::vector<Bytes> chunks{Fmt16(static_cast<std::uint16_t>(channels), rate), Staircase(frames, channels)};
  chunks.insert(chunks.end(), after.begin(), after.end());
  return RiffWave(chunks);
}

std::vector<ListedChunk> ListChunks(const Bytes& file) {
  std::vector<ListedChunk> chunks;
  std::size_t at = 12;
  while (at + 8 <= file.size()) {
    ListedChunk c;
    c.id.assign(reinterpret_cast<const char*>(file.data() + at), 4);
    c.offset = at;
    c.size = LE32(file, at + 4);
    const std::size_t end = std::min(file.size(), at + 8 + c.size);
    c.body.assign(file.begin() + static_cast<long>(at + 8), file.begin() + static_cast<long>(end));
    chunks.push_back(c);
    at += 8 + c.size + (c.size & 1);
  }
  return chunks;
}

const ListedChunk* FindChunk(const std::vector<ListedChunk>& chunks, const std::string& id) {
  for (const ListedChunk& c : chunks) {
    if (c.id == id) return &c;
  }
  return nullptr;
}

std::vector<std::string> ChunkIds(const std::vector<ListedChunk>& chunks) {
  std::vector<std::string> ids;
  for (const ListedChunk& c : chunks) ids.push_back(c.id);
  return ids;
}

std::string FieldText(const Bytes& body, std::size_t offset, std::size_t width) {
  std::string text(reinterpret_cast<const char*>(body.data() + offset), width);
  return text.substr(0, text.find('\0'));
}

Bytes FileBytes(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return Bytes(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

void WriteFileBytes(const std::string& path, const Bytes& bytes) {
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  out.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
}

std::vector<std::string> FolderNames(const std::string& path) {
  std::vector<std::string> names;
  if (DIR* dir = opendir(path.c_str())) {
    while (dirent* entry = readdir(dir)) {
      if (std::strcmp(entry->d_name, ".") != 0 && std::strcmp(entry->d_name, "..") != 0) names.push_back(entry->d_name);
    }
    closedir(dir);
  }
  return names;
}

bool HaveTool(const char* name) { return RunTool(std::string("command -v ") + name + " >/dev/null 2>&1"); }

bool RunTool(const std::string& command, std::string* output) {
  FILE* pipe = popen((command + " 2>/dev/null").c_str(), "r");
  if (!pipe) return false;
  std::string text;
  char buffer[4096];
  std::size_t n;
  while ((n = fread(buffer, 1, sizeof buffer, pipe)) > 0) text.append(buffer, n);
  const int status = pclose(pipe);
  if (output) *output = text;
  return status == 0;
}

}  // namespace tagtest
