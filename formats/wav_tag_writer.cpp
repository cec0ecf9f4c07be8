#include "formats/wav_tag_writer.h"

#include <atomic>
#include <cstring>
#include <random>
#include <string>

#include "base/file_stream.h"
#include "base/platform_file.h"
#include "base/user_folders.h"
#include "formats/id3_tag_writer.h"
#include "formats/little_endian.h"
#include "formats/tag_text_encoding.h"
#include "formats/wav_tag_keys.h"

namespace {

constexpr std::uint64_t kMaxCuePosition = 0xFFFFFFFFu;
constexpr std::size_t kUmidBytes = 64;
constexpr unsigned kUmidByteMax = 255;
constexpr long long kCopyBlockBytes = 8192;
constexpr int kTempNameTries = 16;
constexpr std::size_t kMaxTailBytes = 0xFFFFFFFFu - kLCartFixedBytes;

void FieldFill(LArray<unsigned char>& body, const LWavField& field, const char* value) {
  unsigned char* at = body.data() + field.offset;
  const std::size_t length = std::strlen(value);
  long long number = 0;
  switch (field.kind) {
    case LWavFieldKind::Text:
      std::memset(at, 0, field.width);
      // Cut at a character boundary, so that the field stays valid UTF-8.
      std::memcpy(at, value, LTextUtf8CutLength(value, length, field.width));
      break;
    case LWavFieldKind::Number:
      if (LWavNumberFieldParse(value, kLWavNumberChars, &number)) LPutLE32(at, static_cast<std::uint32_t>(number));
      break;
    case LWavFieldKind::Version:
      if (LWavNumberFieldParse(value, kLWavVersionChars, &number)) LPutLE16(at, static_cast<std::uint16_t>(number));
      break;
    case LWavFieldKind::Umid: {
      std::memset(at, 0, field.width);
      const char* p = value;
      for (std::size_t i = 0; i < kUmidBytes && *p; ++i) {
        char* end = nullptr;
        const unsigned long byte = std::strtoul(p, &end, 10);
        if (end == p || byte > kUmidByteMax) break;
        at[i] = static_cast<unsigned char>(byte);
        p = end;
        while (*p == ' ') ++p;
        if (*p != ',') break;
        ++p;
      }
      break;
    }
    case LWavFieldKind::Tail:
      body.resize(field.offset + std::min(length, kMaxTailBytes));
      std::memcpy(body.data() + field.offset, value, body.size() - field.offset);
      break;
  }
}

LStringLong TempNameMake(const LStringLong& folder) {
  static std::atomic<unsigned> counter{0};
  std::random_device random;
  return folder + "/sonvale-id3-" + std::to_string(random()) + "-" + std::to_string(counter++) + ".tmp";
}

}  // namespace

LWavTagWriter::LWavTagWriter(LByteStream& out, const LFileTagDataAudio& tags, LStringLong tempFolder, bool id3)
    : LRiffTagWriter(out, tags), tempFolder_(std::move(tempFolder)), id3Enabled_(id3) {
  if (tempFolder_.empty()) tempFolder_ = LTempFolder();
}

LWavTagWriter::~LWavTagWriter() { Id3TempDelete(); }

std::uint32_t LWavTagWriter::MappedChunkIdGet(const char* key) const {
  if (!key) return kLRiffIdNone;
  for (const LWavInfoKey& entry : kLWavInfoKeys) {
    if (std::strcmp(entry.key, key) == 0) return entry.id;
  }
  return kLRiffIdNone;
}

bool LWavTagWriter::TagFieldIsValid(const char* key) {
  if (!key) return false;
  for (const LWavInfoKey& entry : kLWavInfoKeys) {
    if (std::strcmp(entry.key, key) == 0) return true;
  }
  return LWavFieldFind(kLWavBextFields, key) || LWavFieldFind(kLWavCartFields, key);
}

void LWavTagWriter::OtherChunkTagsPrepare(const char* key, const char* value) {
  if (!key || !value || !*value) return;
  if (std::strcmp(key, "TITLE") == 0) {
    const std::size_t length = std::strlen(value);
    disp_.assign(kLDispTypeBytes, 0);
    LPutLE32(disp_.data(), kLDispTypeText);
    disp_.insert(disp_.end(), value, value + length + 1);
  }
  if (const LWavField* field = LWavFieldFind(kLWavCartFields, key)) {
    if (cart_.empty()) cart_.assign(kLCartFixedBytes, 0);
    FieldFill(cart_, *field, value);
    cartWanted_ = cartWanted_ || field->wantsChunk;
  }
  if (const LWavField* field = LWavFieldFind(kLWavBextFields, key)) {
    if (bext_.empty()) bext_.assign(kLBextFixedBytes, 0);
    FieldFill(bext_, *field, value);
    bextWanted_ = bextWanted_ || field->wantsChunk;
  }
}

void LWavTagWriter::TagsPrepare() {
  LRiffTagWriter::TagsPrepare();
  for (const LFileTag& tag : tags_) OtherChunkTagsPrepare(tag.key.c_str(), tag.value.c_str());
  for (std::uint64_t sample : tags_.MarkerSamplesGet()) {
    // A cue point holds 32 bits; a marker beyond that cannot be stored.
    if (sample <= kMaxCuePosition) cuePositions_.push_back(static_cast<std::uint32_t>(sample));
  }
  Id3Prepare();
}

void LWavTagWriter::Id3Prepare() {
  if (!id3Enabled_ || !LId3TagWriter::HasFrames(tags_)) return;
  for (int i = 0; i < kTempNameTries && id3Path_.empty(); ++i) {
    LStringLong path = TempNameMake(tempFolder_);
    if (!LFileExists(path.c_str())) id3Path_ = std::move(path);
  }
  if (id3Path_.empty()) return;
  const int fd = LFileOpen(id3Path_.c_str(), kLFileWrite | kLFileCreate | kLFileTruncate, LFileLock::None, 0, 0600);
  if (fd < 0) {
    id3Path_.clear();
    return;
  }
  long long written;
  {
    LFileStream file(fd);
    written = LId3TagWriter::Write(tags_, file);
  }
  if (written <= 0) {
    Id3TempDelete();
    return;
  }
  id3Size_ = static_cast<unsigned long>(written);
}

void LWavTagWriter::Id3TempDelete() {
  if (id3Path_.empty()) return;
  LFileDelete(id3Path_.c_str());
  id3Path_.clear();
}

unsigned long LWavTagWriter::OtherChunkSizeGet(std::uint32_t id) const {
  switch (id) {
    case kLRiffIdCue:
      return cuePositions_.empty() ? 0 : kLCueCountBytes + kLCuePointBytes * cuePositions_.size();
    case kLRiffIdId3:
      return id3Size_;
    case kLRiffIdDisp:
      // A DISP body of the type alone (no title) is not written.
      return disp_.size() > static_cast<std::size_t>(kLDispTypeBytes) ? disp_.size() : 0;
    case kLRiffIdBext:
      return bextWanted_ ? bext_.size() : 0;
    case kLRiffIdCart:
      return cartWanted_ ? cart_.size() : 0;
    default:
      return 0;
  }
}

bool LWavTagWriter::OtherChunkWrite(std::uint32_t id) {
  switch (id) {
    case kLRiffIdCue:
      return CUEChunkWrite();
    case kLRiffIdId3:
      return ID3ChunkWrite();
    case kLRiffIdDisp:
      return DISPChunkWrite();
    case kLRiffIdBext:
      return BWFChunkWrite();
    case kLRiffIdCart:
      return CARTChunkWrite();
    default:
      return false;
  }
}

bool LWavTagWriter::OtherChunkIsValidToConvertToJunk(std::uint32_t id) const {
  if (id == kLRiffIdId3 || id == kLRiffIdId3Upper || id == kLRiffIdCart || id == kLRiffIdBext) return true;
  return id == kLRiffIdCue && !ChunkDone(kLRiffIdCue);
}

bool LWavTagWriter::ChunkIsReplaced(const LRiffChunk& chunk) const {
  switch (chunk.id) {
    case kLRiffIdCue:
    case kLRiffIdId3:
    case kLRiffIdId3Upper:
    case kLRiffIdDisp:
    case kLRiffIdBext:
    case kLRiffIdCart:
      return true;
    default:
      return LRiffTagWriter::ChunkIsReplaced(chunk);
  }
}

bool LWavTagWriter::BodyChunkWrite(std::uint32_t id, const LArray<unsigned char>& body) {
  const unsigned long size = body.size();
  return ChunkHeaderWrite(id, static_cast<std::uint32_t>(size)) &&
         BytesWrite(body.data(), static_cast<long long>(size)) && PadWrite(size);
}

bool LWavTagWriter::CUEChunkWrite() {
  const unsigned long size = OtherChunkSizeGet(kLRiffIdCue);
  LArray<unsigned char> body(size, 0);
  LPutLE32(body.data(), static_cast<std::uint32_t>(cuePositions_.size()));
  for (std::size_t i = 0; i < cuePositions_.size(); ++i) {
    unsigned char* point = body.data() + kLCueCountBytes + kLCuePointBytes * i;
    // Identifiers count from 1; chunk start and block start stay 0.
    LPutLE32(point, static_cast<std::uint32_t>(i + 1));
    LPutLE32(point + kLCuePointPositionOffset, cuePositions_[i]);
    LPutLE32(point + kLCuePointChunkIdOffset, kLRiffIdData);
    LPutLE32(point + kLCuePointSampleOffsetOffset, cuePositions_[i]);
  }
  return BodyChunkWrite(kLRiffIdCue, body);
}

bool LWavTagWriter::ID3ChunkWrite() {
  const int fd = id3Path_.empty() ? -1 : LFileOpen(id3Path_.c_str(), kLFileRead, LFileLock::None, 0);
  if (fd < 0) {
    // No tag file: the chunk is skipped, not failed.
    id3Size_ = 0;
    Id3TempDelete();
    ChunkDoneSet(kLRiffIdId3);
    return false;
  }
  LFileStream file(fd);
  if (!ChunkHeaderWrite(kLRiffIdId3, static_cast<std::uint32_t>(id3Size_))) return false;
  unsigned char block[kCopyBlockBytes];
  long long left = static_cast<long long>(id3Size_);
  while (left > 0) {
    const long long n = std::min(left, kCopyBlockBytes);
    if (!file.ReadAll(block, n) || !BytesWrite(block, n)) return false;
    left -= n;
  }
  if (!PadWrite(id3Size_)) return false;
  Id3TempDelete();
  return true;
}

bool LWavTagWriter::DISPChunkWrite() { return BodyChunkWrite(kLRiffIdDisp, disp_); }

bool LWavTagWriter::BWFChunkWrite() { return BodyChunkWrite(kLRiffIdBext, bext_); }

bool LWavTagWriter::CARTChunkWrite() { return BodyChunkWrite(kLRiffIdCart, cart_); }
