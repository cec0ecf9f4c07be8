// The persisted form of a cut list, as projects and undo files hold it.
#include <algorithm>
#include <cstdint>
#include <cstring>

#include "engine/cut_list_audio.h"

namespace {

// Sizes of the header and of one segment record. On disk; never change them.
constexpr long long kHeaderBytes = 10;  // rate u32, channels u8, flags u8, count i32
constexpr long long kRecordBytes = 22;  // item u16, length i64, gain f32, offset i64
// Records moved per stream call; never more than the count promises, so a
// damaged count cannot make us read far past the list.
constexpr long long kRecordsPerRead = 256;

// No list or item reaches this many frames (over 200 years at 44.1 kHz); a
// record beyond it is damage, and positions in bytes stay far from overflow.
constexpr long long kMaxFrames = 1LL << 48;

static_assert(sizeof(float) == 4, "gains are stored as IEEE single");

template <class T>
void PutLE(unsigned char* at, T value) {
  std::uint64_t bits = 0;
  std::memcpy(&bits, &value, sizeof value);
  for (std::size_t i = 0; i < sizeof value; ++i) at[i] = static_cast<unsigned char>(bits >> (8 * i));
}

template <class T>
T GetLE(const unsigned char* at) {
  std::uint64_t bits = 0;
  for (std::size_t i = 0; i < sizeof(T); ++i) bits |= static_cast<std::uint64_t>(at[i]) << (8 * i);
  T value;
  std::memcpy(&value, &bits, sizeof value);
  return value;
}

}  // namespace

bool LCutListAudio::Restore(LByteStream& stream, bool) {
  unsigned char header[kHeaderBytes];
  if (!stream.ReadAll(header, kHeaderBytes)) return false;
  sampleRate_ = GetLE<std::uint32_t>(header);
  channels_ = header[4];
  flags_ = header[5];
  const std::int32_t count = GetLE<std::int32_t>(header + 6);
  if (count < 1) return true;

  unsigned char records[kRecordsPerRead * kRecordBytes];
  long long total = GetLength();
  for (long long left = count; left > 0;) {
    const long long want = std::min(left, kRecordsPerRead);
    const long long got = stream.Read(records, want * kRecordBytes);
    const long long whole = got > 0 ? got / kRecordBytes : 0;
    for (long long i = 0; i < whole; ++i) {
      const unsigned char* record = records + i * kRecordBytes;
      const unsigned short item = GetLE<std::uint16_t>(record);
      // Both fields are signed on disk. A negative offset starts the segment before
      // its item's first frame, which plays as silence; a negative length holds no
      // frames and is kept as an empty segment, so the item stays referenced.
      const long long length = std::max<long long>(GetLE<std::int64_t>(record + 2), 0);
      const float gain = GetLE<float>(record + 10);
      const long long offset = GetLE<std::int64_t>(record + 14);
      // Beyond these no edit reaches; byte positions would overflow: damaged data.
      if (offset < -kMaxFrames || offset > kMaxFrames || length > kMaxFrames - total) return false;
      total += length;
      segments_.emplace_back(LSoundCacheItemHandle(item), length, gain, offset);
    }
    if (whole < want) return false;
    left -= want;
  }
  return true;
}

bool LCutListAudio::Save(LByteStream& stream) const {
  unsigned char header[kHeaderBytes];
  PutLE<std::uint32_t>(header, sampleRate_);
  header[4] = channels_;
  header[5] = flags_;
  const std::size_t count = segments_.size();
  if (count > static_cast<std::size_t>(INT32_MAX)) return false;
  PutLE<std::int32_t>(header + 6, static_cast<std::int32_t>(count));
  if (!stream.WriteAll(header, kHeaderBytes)) return false;

  unsigned char records[kRecordsPerRead * kRecordBytes];
  long long used = 0;
  for (const LCutListSegment& segment : segments_) {
    unsigned char* record = records + used * kRecordBytes;
    PutLE<std::uint16_t>(record, segment.item.Number());
    PutLE<std::int64_t>(record + 2, segment.length);
    PutLE<float>(record + 10, segment.gain);
    PutLE<std::int64_t>(record + 14, segment.offset);
    if (++used == kRecordsPerRead) {
      if (!stream.WriteAll(records, used * kRecordBytes)) return false;
      used = 0;
    }
  }
  return used == 0 || stream.WriteAll(records, used * kRecordBytes);
}
