// The AIFF reader on any bytes: chunks in any order, every compression type,
// sizes that run past the end. Two opens of the same bytes, read whole and in
// blocks, must agree, also after a seek.
#include <cstddef>
#include <cstdint>
#include <memory>

#include "base/memory_stream.h"
#include "formats/aiff_file.h"
#include "fuzz_check.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  LSoundSource whole = LAiffFile::OpenSource(std::make_unique<LMemoryStream>(data, size));
  if (whole.IsError()) {
    const unsigned char code = whole.GetErrorCode();
    FuzzCheck(code == kLSourceDamaged || code == kLSourceUnsupported || code == kLSourceCodecMissing,
              "a file in memory fails only as damaged, unsupported or needing a codec");
    return 0;
  }
  FuzzCheck(whole.GetChannels() >= 1 && whole.GetSampleRate() >= 1, "an opened file has a format");
  FuzzCheck(whole.GetEndSample() >= 0, "the length is never negative");
  LSoundSource blocks = LAiffFile::OpenSource(std::make_unique<LMemoryStream>(data, size));
  FuzzReadTwoWays(whole, blocks, 1 + static_cast<long long>(size % 997), FuzzLE32(data, size, size / 2), true);
  return 0;
}
