// The persisted cut list on any bytes. A list restored whole saves back to the
// very bytes it came from; whatever was restored, whole or in part, can be
// edited and read through its source without running out of bounds.
#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

#include "base/memory_stream.h"
#include "engine/cut_list_audio.h"
#include "fuzz_check.h"

namespace {

constexpr long long kHeaderBytes = 10;
constexpr long long kRecordBytes = 22;
constexpr long long kReadFrames = 64;

// Reads a few frames at a position. Without a cache folder every item reads as
// silence, which a gain that is not a number may turn into NaN, but into nothing else.
void ReadAt(LSoundSource& source, long long position) {
  // A damaged list may have 0 channels: its frames hold no values.
  const long long channels = source.GetChannels();
  std::vector<float> block(static_cast<std::size_t>(kReadFrames * std::max(1LL, channels)), 0.0f);
  source.Seek(position);
  source.Read(block.data(), kReadFrames);
  FuzzCheck(source.GetPositionSample() == position + kReadFrames, "a read advances by the frames asked for");
  for (float v : block) FuzzCheck(!(std::fabs(v) > 0.0f), "items without files and silence read as zeros");
}

// A position near the list, from a fuzzed word: before it, inside it or past it.
long long Near(long long length, std::uint32_t word) {
  const long long span = length + 20;
  return static_cast<long long>(word % static_cast<std::uint32_t>(std::min<long long>(span * 2, 0x7FFFFFFF))) - 10 +
         (length > 0x7FFFFFFF ? length / 2 : 0);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  LMemoryStream stream(data, size);
  LCutListAudio list;
  const bool whole = list.Restore(stream);
  FuzzCheck(list.GetLength() >= 0, "a restored list is never negative in length");
  std::int32_t count = 0;
  if (size >= static_cast<std::size_t>(kHeaderBytes)) std::memcpy(&count, data + 6, 4);
  if (whole && count >= 1) {
    FuzzCheck(list.SegmentCount() == count, "every record becomes a segment");
    LMemoryStream saved;
    FuzzCheck(list.Save(saved), "a list saves to memory");
    const std::size_t used = static_cast<std::size_t>(kHeaderBytes + kRecordBytes * count);
    // A negative length restores as an empty segment, so it saves as 0.
    std::vector<std::uint8_t> expected(data, data + used);
    for (std::int32_t i = 0; i < count; ++i) {
      std::uint8_t* length = expected.data() + kHeaderBytes + kRecordBytes * i + 2;
      if (length[7] & 0x80) std::memset(length, 0, 8);
    }
    FuzzCheck(saved.Bytes().size() == used && std::memcmp(saved.Bytes().data(), expected.data(), used) == 0,
              "a restored list saves to the bytes it came from, negative lengths as 0");
  }

  LSoundSource source = list.OpenSource();
  FuzzCheck(source.GetEndSample() == list.GetLength(), "the source is as long as the list");
  ReadAt(source, Near(list.GetLength(), FuzzLE32(data, size, size - std::min<std::size_t>(size, 4))));
  ReadAt(source, list.GetLength() - 3);

  // Edits at positions the data chooses, each keeping the length arithmetic.
  const long long length = list.GetLength();
  const long long a = Near(length, FuzzLE32(data, size, 0));
  const long long b = Near(length, FuzzLE32(data, size, 3));
  LCutListAudio copy;
  list.EfCopy(std::min(a, b), std::max(a, b), copy);
  FuzzCheck(copy.GetLength() == std::max(a, b) - std::min(a, b), "a copy is exactly as long as its range");
  list.EfDelete(std::min(a, b), std::max(a, b));
  FuzzCheck(list.GetLength() <= length, "a delete never lengthens the list");
  list.EfInsert(a, copy);
  list.EfInsertSilence(b, 1 + (size % 1000));
  list.EfRepeatLoop(std::min(a, b), std::max(a, b), static_cast<unsigned long>(size % 3));
  list.EfTrim(std::min(a, b), length);
  FuzzCheck(list.GetLength() >= 0, "edits never make a negative length");
  LSoundSource edited = list.OpenSource();
  ReadAt(edited, Near(list.GetLength(), FuzzLE32(data, size, 7)));
  return 0;
}
