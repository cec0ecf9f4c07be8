#include "formats/wave_header.h"

#include <cstring>

#include "formats/little_endian.h"

namespace {

constexpr int kRiffHeaderBytes = 12;
constexpr int kFactBodyBytes = 4;

unsigned char* PutChunkHeader(unsigned char* p, std::uint32_t id, std::uint32_t size) {
  LPutLE32(p, id);
  LPutLE32(p + 4, size);
  return p + kLRiffChunkHeaderBytes;
}

}  // namespace

int LWaveHeaderBytes(const LWaveHeaderLayout& layout) {
  return kRiffHeaderBytes + kLRiffChunkHeaderBytes + layout.fmtBytes +
         (layout.fact ? kLRiffChunkHeaderBytes + kFactBodyBytes : 0) + kLRiffChunkHeaderBytes;
}

void LWaveHeaderMake(const LWaveHeaderLayout& layout, std::uint32_t riffSize, std::uint32_t dataSize,
                     std::uint32_t factFrames, unsigned char* out) {
  unsigned char* p = PutChunkHeader(out, kLRiffIdRiff, riffSize);
  LPutLE32(p, kLRiffIdWave);
  p = PutChunkHeader(p + 4, kLRiffIdFmt, static_cast<std::uint32_t>(layout.fmtBytes));
  LPutLE16(p, layout.tag);
  LPutLE16(p + 2, layout.channels);
  LPutLE32(p + 4, layout.sampleRate);
  LPutLE32(p + 8, layout.bytesPerSecond);
  LPutLE16(p + 12, layout.blockAlign);
  LPutLE16(p + 14, layout.bitsPerSample);
  if (layout.fmtBytes >= 18) LPutLE16(p + 16, static_cast<std::uint16_t>(layout.fmtBytes - 18));
  if (layout.fmtBytes >= 20) LPutLE16(p + 18, layout.samplesPerBlock);
  p += layout.fmtBytes;
  if (layout.fact) {
    p = PutChunkHeader(p, kLRiffIdFact, kFactBodyBytes);
    LPutLE32(p, factFrames);
    p += kFactBodyBytes;
  }
  PutChunkHeader(p, kLRiffIdData, dataSize);
}
