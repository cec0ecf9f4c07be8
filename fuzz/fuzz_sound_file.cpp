// Opening any bytes as a sound file: the content sniffing, our WAVE and AIFF
// readers and FFmpeg's demuxers and decoders behind them, with the name hinting
// at a format or not. Two opens of the same bytes, read whole and in blocks,
// must agree.
#include <cstddef>
#include <cstdint>

#include "formats/sound_file.h"
#include "fuzz_check.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const char* const kNames[] = {"fuzz", "fuzz.wav", "fuzz.aiff", "fuzz.mp3", "fuzz.ogg", "fuzz.mkv"};
  const char* name = kNames[size % (sizeof kNames / sizeof kNames[0])];
  LSoundFileInfo info;
  LSoundSource whole = LSoundFile::OpenSource(data, size, name, &info);
  if (whole.IsError()) {
    const unsigned char code = whole.GetErrorCode();
    FuzzCheck(code == kLSourceDamaged || code == kLSourceUnsupported || code == kLSourceCodecMissing,
              "bytes in memory fail only as damaged, unsupported or needing a codec");
    FuzzCheck(code != kLSourceCodecMissing || !info.codecName.empty(), "a missing codec is named");
    return 0;
  }
  FuzzCheck(whole.GetChannels() >= 1 && whole.GetSampleRate() >= 1, "an opened file has a format");
  FuzzCheck(whole.GetEndSample() >= 0, "the length is never negative");
  LSoundSource blocks = LSoundFile::OpenSource(data, size, name);
  FuzzCheck(!blocks.IsError() && blocks.GetEndSample() == whole.GetEndSample(), "two opens agree");
  // Decoders restarted by a seek need not settle to the same bits.
  FuzzReadTwoWays(whole, blocks, 1 + static_cast<long long>(size % 997), FuzzLE32(data, size, size / 2), false);
  return 0;
}
