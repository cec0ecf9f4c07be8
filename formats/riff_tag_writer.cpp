#include "formats/riff_tag_writer.h"

#include <algorithm>
#include <cstring>

#include "base/array.h"
#include "formats/little_endian.h"

namespace {

constexpr std::uint64_t kMaxChunkSize = 0xFFFFFFFFu;
// A text chunk larger than this is not a tag; such a value is left out.
constexpr std::size_t kInfoTextMaxBytes = 1u << 24;
constexpr long long kZeroBlockBytes = 8192;
constexpr char kInfoIdLead = 'I';

}  // namespace

int LRiffTagWriter::KindIndex(std::uint32_t id) {
  for (int i = 0; i < kLRiffTagChunkKinds; ++i) {
    if (kLRiffTagChunkPriority[i] == id) return i;
  }
  return -1;
}

bool LRiffTagWriter::ChunkDone(std::uint32_t id) const {
  const int k = KindIndex(id);
  return k < 0 || done_[k];
}

void LRiffTagWriter::ChunkDoneSet(std::uint32_t id) {
  const int k = KindIndex(id);
  if (k >= 0) done_[k] = true;
}

bool LRiffTagWriter::AllChunkWriteStatusDone() const {
  return std::all_of(std::begin(done_), std::end(done_), [](bool done) { return done; });
}

bool LRiffTagWriter::InfoEntryIs(const LFileTag& tag) const {
  if (tag.value.empty() || tag.value.size() > kInfoTextMaxBytes) return false;
  const std::uint32_t id = MappedChunkIdGet(tag.key.c_str());
  return id != kLRiffIdNone && static_cast<char>(id & 0xFF) == kInfoIdLead;
}

void LRiffTagWriter::TagsPrepare() {
  std::uint64_t size = 0;
  for (const LFileTag& tag : tags_) {
    if (InfoEntryIs(tag)) size += kLRiffChunkHeaderBytes + LRiffPadded(tag.value.size() + 1);
  }
  // The list's body holds its 4-character type before the entries.
  infoSize_ = size == 0 ? 0 : static_cast<unsigned long>(std::min<std::uint64_t>(size + 4, kMaxChunkSize));
}

unsigned long LRiffTagWriter::OtherChunkSizeGet(std::uint32_t) const { return 0; }

bool LRiffTagWriter::OtherChunkWrite(std::uint32_t) { return false; }

bool LRiffTagWriter::OtherChunkIsValidToConvertToJunk(std::uint32_t) const { return false; }

bool LRiffTagWriter::ChunkIsReplaced(const LRiffChunk& chunk) const {
  return (chunk.id == kLRiffIdList && chunk.listType == kLRiffIdInfo) || chunk.id == kLRiffIdCset;
}

unsigned long LRiffTagWriter::ChunkSizeGet(std::uint32_t id) const {
  if (id == kLRiffIdList) return infoSize_;
  if (id == kLRiffIdCset) return (infoSize_ > 0 || OtherChunkSizeGet(kLRiffIdDisp) > 0) ? kLCsetBodyBytes : 0;
  return OtherChunkSizeGet(id);
}

bool LRiffTagWriter::BytesWrite(const void* bytes, long long n) { return n == 0 || out_.WriteAll(bytes, n); }

bool LRiffTagWriter::ChunkHeaderWrite(std::uint32_t id, std::uint32_t size) {
  unsigned char header[kLRiffChunkHeaderBytes];
  LPutLE32(header, id);
  LPutLE32(header + 4, size);
  return BytesWrite(header, sizeof header);
}

bool LRiffTagWriter::PadWrite(unsigned long size) {
  const unsigned char zero = 0;
  return (size & 1) == 0 || BytesWrite(&zero, 1);
}

bool LRiffTagWriter::INFOChunkWrite() {
  if (!ChunkHeaderWrite(kLRiffIdList, static_cast<std::uint32_t>(infoSize_))) return false;
  unsigned char type[4];
  LPutLE32(type, kLRiffIdInfo);
  if (!BytesWrite(type, sizeof type)) return false;
  for (const LFileTag& tag : tags_) {
    if (!InfoEntryIs(tag)) continue;
    // The text goes with its terminating zero.
    const auto size = static_cast<unsigned long>(tag.value.size() + 1);
    if (!ChunkHeaderWrite(MappedChunkIdGet(tag.key.c_str()), static_cast<std::uint32_t>(size)) ||
        !BytesWrite(tag.value.c_str(), static_cast<long long>(size)) || !PadWrite(size)) {
      return false;
    }
  }
  return true;
}

bool LRiffTagWriter::CSETChunkWrite() {
  unsigned char body[kLCsetBodyBytes] = {};
  // Code page; country, language and dialect stay 0 (not given).
  LPutLE16(body, kLCsetCodePageUtf8);
  return ChunkHeaderWrite(kLRiffIdCset, kLCsetBodyBytes) && BytesWrite(body, sizeof body);
}

bool LRiffTagWriter::JunkChunkWriteHeader(unsigned long space) {
  if (space < static_cast<unsigned long>(kLRiffChunkHeaderBytes) || space - kLRiffChunkHeaderBytes > kMaxChunkSize) {
    return false;
  }
  const unsigned long body = space - kLRiffChunkHeaderBytes;
  if (!ChunkHeaderWrite(kLRiffIdJunk, static_cast<std::uint32_t>(body))) return false;
  static const unsigned char zeros[kZeroBlockBytes] = {};
  for (unsigned long left = body; left > 0;) {
    const long long n = std::min<long long>(static_cast<long long>(left), kZeroBlockBytes);
    if (!BytesWrite(zeros, n)) return false;
    left -= static_cast<unsigned long>(n);
  }
  return true;
}

bool LRiffTagWriter::ChunkWrite(std::uint32_t id, bool allowSmaller, unsigned long space) {
  const unsigned long size = ChunkSizeGet(id);
  bool written;
  if (id == kLRiffIdList) {
    written = INFOChunkWrite();
  } else if (id == kLRiffIdCset) {
    written = CSETChunkWrite();
  } else {
    written = OtherChunkWrite(id);
  }
  if (!written) return false;
  ChunkDoneSet(id);
  const unsigned long need = static_cast<unsigned long>(LRiffPadded(size)) + kLRiffChunkHeaderBytes;
  if (allowSmaller && space > need) return JunkChunkWriteHeader(space - need);
  return true;
}

bool LRiffTagWriter::ChunkWriteIfSizeFits(unsigned long space, bool allowSmaller) {
  const long long start = out_.Tell();
  if (start < 0) return false;
  for (std::uint32_t id : kLRiffTagChunkPriority) {
    if (ChunkDone(id)) continue;
    // The INFO list waits for the ID3 tag, which carries the same texts.
    if (id == kLRiffIdList && !ChunkDone(kLRiffIdId3)) continue;
    const unsigned long size = ChunkSizeGet(id);
    if (size == 0) continue;
    const std::uint64_t need = LRiffPadded(size) + kLRiffChunkHeaderBytes;
    // The rest of a region must hold at least a JUNK header to stay a valid chunk sequence.
    const bool fits = need == space || (allowSmaller && need + kLRiffChunkHeaderBytes <= space);
    if (!fits) continue;
    if (!out_.Seek(start)) return false;
    if (ChunkWrite(id, allowSmaller, space)) return true;
  }
  return false;
}

bool LRiffTagWriter::OtherChunksWriteAtTheEndIfNeeded(long long* appended) {
  bool ok = true;
  for (std::uint32_t id : kLRiffTagChunkAppendOrder) {
    if (ChunkDone(id)) continue;
    const unsigned long size = ChunkSizeGet(id);
    const long long start = out_.Tell();
    if (start < 0) return false;
    if (ChunkWrite(id, false, 0)) {
      *appended += static_cast<long long>(LRiffPadded(size)) + kLRiffChunkHeaderBytes;
    } else {
      // Keep what was there before this chunk, so later chunks follow a valid sequence.
      ok = out_.Seek(start) && out_.Truncate(start) && ok;
    }
  }
  return ok && AllChunkWriteStatusDone();
}

bool LRiffTagWriter::MainHeaderLengthUpdate(long long delta) {
  unsigned char field[4];
  const long long at = riffOffset_ + 4;
  if (!out_.Seek(at) || !out_.ReadAll(field, sizeof field)) return false;
  const long long fileSize = out_.Size();
  const long long exact = fileSize - riffOffset_ - kLRiffChunkHeaderBytes;
  long long size;
  if (fileSize >= 0 && exact >= 0 && static_cast<std::uint64_t>(exact) <= kMaxChunkSize) {
    size = exact;
  } else {
    size = std::clamp<long long>(static_cast<long long>(LGetLE32(field)) + delta, 0, kMaxChunkSize);
  }
  LPutLE32(field, static_cast<std::uint32_t>(size));
  return out_.Seek(at) && BytesWrite(field, sizeof field);
}

LRiffTagWriteResult LRiffTagWriter::Write() {
  TagsPrepare();
  for (std::uint32_t id : kLRiffTagChunkPriority) {
    if (ChunkSizeGet(id) == 0) ChunkDoneSet(id);
  }

  LRiffChunkWalker walker(out_);
  if (!walker.Start()) return LRiffTagWriteResult::NotRiff;
  riffOffset_ = walker.RiffOffset();
  LArray<LRiffChunk> chunks;
  LRiffChunk chunk;
  while (walker.Next(&chunk)) chunks.push_back(chunk);
  if (walker.EndedInTruncatedChunk()) return LRiffTagWriteResult::Damaged;

  // Old tag chunks (and JUNK) at the end of the file are cut off; the new ones are appended.
  std::size_t kept = chunks.size();
  while (kept > 0 && (ChunkIsReplaced(chunks[kept - 1]) || chunks[kept - 1].id == kLRiffIdJunk)) --kept;
  const long long end = kept < chunks.size() ? chunks[kept].offset : walker.WalkEnd();

  bool ok = true;
  for (std::size_t i = 0; i < kept; ++i) {
    const LRiffChunk& old = chunks[i];
    if (!ChunkIsReplaced(old)) continue;
    const long long region = old.End() - old.offset;
    if (!out_.Seek(old.offset)) return LRiffTagWriteResult::WriteFailed;
    const bool reusable = OtherChunkIsValidToConvertToJunk(old.id) && (region & 1) == 0;
    if (reusable && ChunkWriteIfSizeFits(static_cast<unsigned long>(region), true)) continue;
    if (!out_.Seek(old.offset) || !JunkChunkWriteHeader(static_cast<unsigned long>(region))) ok = false;
  }

  const long long size = out_.Size();
  long long delta = 0;
  if (size > end) {
    if (!out_.Truncate(end)) return LRiffTagWriteResult::WriteFailed;
    delta -= size - end;
  }
  if (!out_.Seek(end)) return LRiffTagWriteResult::WriteFailed;
  // The pad byte after a last chunk of odd size: added when its writer left it
  // out, and made 0 when it was some other byte, which a walk would otherwise
  // take for the start of what is appended. An odd end alone says nothing: after
  // an unpadded chunk further up, every chunk lies at an odd offset.
  if (kept > 0 && (chunks[kept - 1].size & 1)) {
    const LRiffChunk& last = chunks[kept - 1];
    const unsigned char zero = 0;
    if (!out_.Seek(last.BodyOffset() + last.size) || !BytesWrite(&zero, 1)) return LRiffTagWriteResult::WriteFailed;
    if (!last.padded) ++delta;
  }
  long long appended = 0;
  ok = OtherChunksWriteAtTheEndIfNeeded(&appended) && ok;
  ok = MainHeaderLengthUpdate(delta + appended) && ok;
  return ok && AllChunkWriteStatusDone() ? LRiffTagWriteResult::Ok : LRiffTagWriteResult::WriteFailed;
}
