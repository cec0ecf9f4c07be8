#include "formats/riff_tag_iterator.h"

#include <algorithm>

#include "formats/little_endian.h"
#include "formats/riff_tag_chunk.h"
#include "formats/tag_text_encoding.h"

namespace {

// A text larger than this is not a tag; only its head is read.
constexpr long long kTextMaxBytes = 1 << 20;

}  // namespace

bool LRiffTagIterator::Open() {
  tags_.Clear();
  ranks_.clear();
  next_ = 0;
  LRiffChunkWalker walker(in_);
  if (!walker.Start()) return false;
  LRiffChunk chunk;
  while (walker.Next(&chunk)) {
    if (chunk.id == kLRiffIdList && chunk.listType == kLRiffIdInfo) {
      INFOListRead(chunk);
    } else {
      OtherChunkRead(chunk);
    }
  }
  TagsFinish();
  return true;
}

bool LRiffTagIterator::Next(const char** key, const char** value) {
  if (next_ >= tags_.Count()) return false;
  const LFileTag& tag = tags_.At(next_++);
  *key = tag.key.c_str();
  *value = tag.value.c_str();
  return true;
}

void LRiffTagIterator::OtherChunkRead(const LRiffChunk&) {}

void LRiffTagIterator::TagAdd(const char* key, LStringLong value, TagRank rank) {
  if (!key || value.empty()) return;
  auto it = ranks_.find(key);
  if (it != ranks_.end() && it->second <= rank) return;
  ranks_[key] = rank;
  tags_.Set(key, value.c_str());
}

LArray<unsigned char> LRiffTagIterator::ChunkBodyRead(const LRiffChunk& chunk, long long from, long long maxBytes) {
  LArray<unsigned char> bytes;
  const long long n = std::min(chunk.available - from, maxBytes);
  if (from < 0 || n <= 0 || !in_.Seek(chunk.BodyOffset() + from)) return bytes;
  bytes.resize(static_cast<std::size_t>(n));
  const long long got = in_.Read(bytes.data(), n);
  bytes.resize(static_cast<std::size_t>(std::max(got, 0LL)));
  return bytes;
}

void LRiffTagIterator::INFOListRead(const LRiffChunk& list) {
  // Entries lie between the list's type and the end of what the file holds of the list.
  const long long end = list.BodyOffset() + list.available;
  long long at = list.BodyOffset() + 4;
  while (at + kLRiffChunkHeaderBytes <= end) {
    unsigned char header[kLRiffChunkHeaderBytes];
    if (!in_.Seek(at) || !in_.ReadAll(header, sizeof header)) return;
    const std::uint32_t id = LGetLE32(header);
    const std::uint32_t size = LGetLE32(header + 4);
    const long long body = at + kLRiffChunkHeaderBytes;
    const long long room = end - body;
    const long long length = std::min({static_cast<long long>(size), room, kTextMaxBytes});
    if (const char* key = MappedKeyGet(id)) {
      LArray<unsigned char> text(static_cast<std::size_t>(length));
      if (length > 0 && (!in_.Seek(body) || !in_.ReadAll(text.data(), length))) return;
      TagAdd(key, LTextFromField(text.data(), text.size()), kRankInfo);
    }
    // An entry that claims more than the list holds is the last one.
    if (static_cast<long long>(size) >= room) return;
    at = body + size;
    if ((size & 1) && LRiffPadBytePresent(in_, at, end)) ++at;
  }
}
