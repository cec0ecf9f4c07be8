// The WAVE reader on any bytes: every format tag, the extent list of several
// data chunks, provisional sizes and the block codecs. Two opens of the same
// bytes, read whole and in blocks, must agree.
#include <cstddef>
#include <cstdint>
#include <memory>

#include "base/memory_stream.h"
#include "formats/wave_file.h"
#include "fuzz_check.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  LWaveFileFormat format;
  LSoundSource whole = LWaveFile::OpenSource(std::make_unique<LMemoryStream>(data, size), &format);
  if (whole.IsError()) {
    const unsigned char code = whole.GetErrorCode();
    FuzzCheck(code == kLSourceDamaged || code == kLSourceUnsupported || code == kLSourceCodecMissing,
              "a file in memory fails only as damaged, unsupported or needing a codec");
    return 0;
  }
  FuzzCheck(whole.GetChannels() >= 1 && whole.GetSampleRate() >= 1, "an opened file has a format");
  FuzzCheck(whole.GetEndSample() >= 0, "the length is never negative");
  LSoundSource blocks = LWaveFile::OpenSource(std::make_unique<LMemoryStream>(data, size));
  FuzzCheck(blocks.IsStreaming() == whole.IsStreaming(), "two opens agree on streaming");
  // GSM frames depend on the frame before, so a seek restarts the decoder differently.
  const bool seeksAgree = format.tag != kLWaveTagGSM610;
  FuzzReadTwoWays(whole, blocks, 1 + static_cast<long long>(size % 997), FuzzLE32(data, size, size / 2), seeksAgree);
  return 0;
}
