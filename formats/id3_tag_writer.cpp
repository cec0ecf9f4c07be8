#include "formats/id3_tag_writer.h"

#include <cstdint>
#include <cstring>

#include "base/array.h"
#include "formats/id3_frame_table.h"

namespace {

// ID3v2 layout (on disk, never change).
constexpr unsigned char kId3Magic[3] = {'I', 'D', '3'};
constexpr unsigned char kId3MajorVersion = 4;
constexpr int kId3HeaderBytes = 10;
constexpr int kId3FrameHeaderBytes = 10;
constexpr unsigned char kId3EncodingUtf8 = 3;
constexpr char kId3CommentLanguage[3] = {'e', 'n', 'g'};
// Sizes are 28-bit "syncsafe" numbers: seven bits in each of four bytes.
constexpr std::uint32_t kId3SyncsafeMax = (1u << 28) - 1;

void PutSyncsafe(LArray<unsigned char>& out, std::size_t at, std::uint32_t v) {
  for (int i = 0; i < 4; ++i) out[at + i] = static_cast<unsigned char>((v >> (7 * (3 - i))) & 0x7F);
}

void Append(LArray<unsigned char>& out, const void* p, std::size_t n) {
  const auto* b = static_cast<const unsigned char*>(p);
  out.insert(out.end(), b, b + n);
}

bool AppendFrame(LArray<unsigned char>& tag, const char* frame, const char* value) {
  const std::size_t length = std::strlen(value);
  const bool comment = std::strcmp(frame, kLId3FrameComment) == 0;
  // Encoding byte, then for a comment a language and an empty description with its terminator.
  const std::size_t body = 1 + (comment ? sizeof kId3CommentLanguage + 1 : 0) + length;
  if (body > kId3SyncsafeMax || tag.size() + kId3FrameHeaderBytes + body > kId3SyncsafeMax) return false;
  const std::size_t at = tag.size();
  Append(tag, frame, 4);
  tag.resize(tag.size() + 6, 0);
  PutSyncsafe(tag, at + 4, static_cast<std::uint32_t>(body));
  tag.push_back(kId3EncodingUtf8);
  if (comment) {
    Append(tag, kId3CommentLanguage, sizeof kId3CommentLanguage);
    tag.push_back(0);
  }
  Append(tag, value, length);
  return true;
}

}  // namespace

bool LId3TagWriter::HasFrames(const LFileTagDataAudio& tags) {
  for (const LFileTag& tag : tags) {
    if (!tag.value.empty() && LId3FrameOfKey(tag.key.c_str())) return true;
  }
  return false;
}

long long LId3TagWriter::Write(const LFileTagDataAudio& tags, LByteStream& out) {
  LArray<unsigned char> tag(kId3HeaderBytes, 0);
  std::memcpy(tag.data(), kId3Magic, sizeof kId3Magic);
  tag[3] = kId3MajorVersion;
  bool any = false;
  for (const LFileTag& entry : tags) {
    const char* frame = LId3FrameOfKey(entry.key.c_str());
    if (!frame || entry.value.empty()) continue;
    any = AppendFrame(tag, frame, entry.value.c_str()) || any;
  }
  if (!any) return 0;
  PutSyncsafe(tag, 6, static_cast<std::uint32_t>(tag.size() - kId3HeaderBytes));
  const auto size = static_cast<long long>(tag.size());
  return out.WriteAll(tag.data(), size) ? size : -1;
}
