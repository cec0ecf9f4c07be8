#include "formats/wav_tag_iterator.h"

#include <cstring>
#include <string>

#include "formats/id3_tag_reader.h"
#include "formats/little_endian.h"
#include "formats/riff_tag_chunk.h"
#include "formats/tag_text_encoding.h"
#include "formats/wav_tag_keys.h"

namespace {

// The fmt body's sample rate and the bytes up to its end (on disk, never change).
constexpr int kFmtSampleRateOffset = 4;
// A tail text, or an ID3 tag, larger than this is not read.
constexpr long long kTailMaxBytes = 1 << 20;
constexpr long long kId3MaxBytes = 1 << 24;
// Cue points are read this many at a time.
constexpr long long kCuePointsPerBlock = 256;
constexpr char kLevelReferenceKey[] = "LEVELREFERENCE";
constexpr char kUsageSuffix[] = "USAGE";

bool EndsWith(const char* text, const char* suffix) {
  const std::size_t n = std::strlen(text);
  const std::size_t m = std::strlen(suffix);
  return n >= m && std::strcmp(text + n - m, suffix) == 0;
}

LStringLong UmidText(const unsigned char* bytes, std::size_t width) {
  std::size_t used = width;
  while (used > 0 && bytes[used - 1] == 0) --used;
  LStringLong text;
  for (std::size_t i = 0; i < used; ++i) {
    if (i > 0) text += ',';
    text += std::to_string(bytes[i]);
  }
  return text;
}

// The value of one field of a fixed body, empty when the field is blank. A
// field that the body holds only in part is read as far as it goes.
template <std::size_t N>
LStringLong FieldText(const LArray<unsigned char>& body, const LWavField (&table)[N], std::size_t index) {
  const LWavField& field = table[index];
  if (field.offset >= body.size()) return {};
  const unsigned char* at = body.data() + field.offset;
  const std::size_t room = body.size() - field.offset;
  const std::size_t width = field.kind == LWavFieldKind::Tail ? room : std::min<std::size_t>(field.width, room);
  switch (field.kind) {
    case LWavFieldKind::Text:
    case LWavFieldKind::Tail:
      return LTextFromField(at, width);
    case LWavFieldKind::Umid:
      return UmidText(at, width);
    case LWavFieldKind::Version:
      if (width < 2 || LGetLE16(at) == 0) return {};
      return std::to_string(LGetLE16(at));
    case LWavFieldKind::Number: {
      if (width < 4) return {};
      const std::uint32_t value = LGetLE32(at);
      // A post timer's value counts when its usage is named, even when it is 0.
      const bool named = index > 0 && EndsWith(table[index - 1].key, kUsageSuffix) &&
                         !FieldText(body, table, index - 1).empty();
      if (value == 0 && !named) return {};
      if (std::strcmp(field.key, kLevelReferenceKey) == 0) return std::to_string(static_cast<std::int32_t>(value));
      return std::to_string(value);
    }
  }
  return {};
}

}  // namespace

const char* LWavTagIterator::MappedKeyGet(std::uint32_t id) const {
  for (const LWavInfoKey& entry : kLWavInfoKeys) {
    if (entry.id == id) return entry.key;
  }
  return nullptr;
}

void LWavTagIterator::OtherChunkRead(const LRiffChunk& chunk) {
  switch (chunk.id) {
    case kLRiffIdFmt: {
      const LArray<unsigned char> body = ChunkBodyRead(chunk, kFmtSampleRateOffset, 4);
      if (body.size() == 4 && sampleRate_ == 0) sampleRate_ = LGetLE32(body.data());
      break;
    }
    case kLRiffIdBext:
      BextChunkRead(chunk);
      break;
    case kLRiffIdCart:
      CartChunkRead(chunk);
      break;
    case kLRiffIdCue:
      CueChunkRead(chunk);
      break;
    case kLRiffIdDisp:
      DispChunkRead(chunk);
      break;
    case kLRiffIdId3:
    case kLRiffIdId3Upper:
      Id3ChunkRead(chunk);
      break;
    default:
      break;
  }
}

void LWavTagIterator::BextChunkRead(const LRiffChunk& chunk) {
  const LArray<unsigned char> body = ChunkBodyRead(chunk, 0, kLBextFixedBytes + kTailMaxBytes);
  for (std::size_t i = 0; i < std::size(kLWavBextFields); ++i) {
    TagAdd(kLWavBextFields[i].key, FieldText(body, kLWavBextFields, i), kRankBext);
  }
}

void LWavTagIterator::CartChunkRead(const LRiffChunk& chunk) {
  const LArray<unsigned char> body = ChunkBodyRead(chunk, 0, kLCartFixedBytes + kTailMaxBytes);
  for (std::size_t i = 0; i < std::size(kLWavCartFields); ++i) {
    TagAdd(kLWavCartFields[i].key, FieldText(body, kLWavCartFields, i), kRankCart);
  }
}

void LWavTagIterator::CueChunkRead(const LRiffChunk& chunk) {
  // Markers come from the first cue chunk alone; a second would renumber them.
  if (cueRead_) return;
  const LArray<unsigned char> head = ChunkBodyRead(chunk, 0, kLCueCountBytes);
  if (head.size() < static_cast<std::size_t>(kLCueCountBytes)) return;
  cueRead_ = true;
  // The count may claim more points than the chunk holds: only those there are read.
  const long long fit = (chunk.available - kLCueCountBytes) / kLCuePointBytes;
  const long long count = std::min<long long>(LGetLE32(head.data()), fit);
  long long found = 0;
  for (long long first = 0; first < count; first += kCuePointsPerBlock) {
    const long long n = std::min(kCuePointsPerBlock, count - first);
    const LArray<unsigned char> points =
        ChunkBodyRead(chunk, kLCueCountBytes + first * kLCuePointBytes, n * kLCuePointBytes);
    const long long got = static_cast<long long>(points.size()) / kLCuePointBytes;
    for (long long i = 0; i < got; ++i) {
      const std::uint32_t position = LGetLE32(points.data() + i * kLCuePointBytes + kLCuePointPositionOffset);
      tags_.SetNumber(LFileTagDataAudio::MarkerPosKey(static_cast<unsigned>(found++)).c_str(), position);
    }
    if (got < n) break;
  }
  if (found == 0) return;
  tags_.SetNumber(kLTagMarkerCount, found);
  tags_.SetNumber(kLTagMarkerPosType, kLMarkerPosTypeSamples);
}

void LWavTagIterator::DispChunkRead(const LRiffChunk& chunk) {
  const LArray<unsigned char> body = ChunkBodyRead(chunk, 0, kLDispTypeBytes + kTailMaxBytes);
  if (body.size() <= static_cast<std::size_t>(kLDispTypeBytes) || LGetLE32(body.data()) != kLDispTypeText) return;
  TagAdd("TITLE", LTextFromField(body.data() + kLDispTypeBytes, body.size() - kLDispTypeBytes), kRankDisp);
}

void LWavTagIterator::Id3ChunkRead(const LRiffChunk& chunk) {
  const LArray<unsigned char> body = ChunkBodyRead(chunk, 0, kId3MaxBytes);
  for (LFileTag& tag : LId3TagReader::Read(body.data(), body.size())) {
    TagAdd(tag.key.c_str(), std::move(tag.value), kRankId3);
  }
}

void LWavTagIterator::TagsFinish() {
  if (cueRead_ && tags_.Has(kLTagMarkerCount) && sampleRate_ > 0) tags_.SetNumber(kLTagMarkerSampleRate, sampleRate_);
}
