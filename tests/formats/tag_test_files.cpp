#include "tag_test_files.h"

#include <dirent.h>

#include <cstring>


namespace tagtest {

void PutText(Bytes& b, const std::string& text) { b.insert(b.end(), text.begin(), text.end()); }

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

Bytes Fmt16(std::uint16_t channels, std::uint32_t rate) { return Chunk("fmt ", FmtBody(1, channels, rate, 16)); }
Bytes Staircase(int frames, int channels) { return Chunk("data", Staircase16(frames, channels)); }

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




}  // namespace tagtest
