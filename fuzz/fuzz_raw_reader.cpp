// The headerless reader on any bytes: a 6-byte prefix chooses the layout code,
// the channel count and the rate; the rest is the file, read from where the
// prefix ends (so the data does not start at offset 0).
#include <cstddef>
#include <cstdint>
#include <memory>

#include "base/memory_stream.h"
#include "formats/raw_file.h"
#include "fuzz_check.h"

namespace {
constexpr std::size_t kPrefixBytes = 6;
// One code past the last, so unknown codes are tried too.
constexpr int kCodes = kLRawFloatBE + 2;
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < kPrefixBytes) return 0;
  LRawSettings settings;
  settings.formatCode = data[0] % kCodes;
  settings.channels = data[1];
  settings.sampleRate = static_cast<std::int32_t>(FuzzLE32(data, size, 2));
  auto open = [&] {
    auto stream = std::make_unique<LMemoryStream>(data, size);
    FuzzCheck(stream->Seek(kPrefixBytes), "a memory stream seeks");
    return LRawFile::OpenSource(std::move(stream), settings);
  };
  LSoundSource whole = open();
  if (settings.formatCode >= kCodes - 1) {
    FuzzCheck(whole.GetErrorCode() == kLSourceClosed, "an unknown layout code gives code 1");
    return 0;
  }
  FuzzCheck(whole.GetEndSample() >= 0, "the length is never negative");
  FuzzCheck(whole.GetEndSample() <= static_cast<long long>(size - kPrefixBytes) * 2, "no more frames than the data holds");
  LSoundSource blocks = open();
  FuzzReadTwoWays(whole, blocks, 1 + static_cast<long long>(size % 613), FuzzLE32(data, size, size / 2), true);
  return 0;
}
