#include "formats/ima_adpcm.h"

#include <algorithm>

#include "formats/adpcm_step.h"
#include "formats/little_endian.h"

namespace {

// The IMA step sizes, from 7 to 32767.
constexpr std::int16_t kSteps[] = {
    7,    8,     9,     10,    11,    12,    13,    14,    16,    17,    19,    21,    23,    25,   28,
    31,   34,    37,    41,    45,    50,    55,    60,    66,    73,    80,    88,    97,    107,  118,
    130,  143,   157,   173,   190,   209,   230,   253,   279,   307,   337,   371,   408,   449,  494,
    544,  598,   658,   724,   796,   876,   963,   1060,  1166,  1282,  1411,  1552,  1707,  1878, 2066,
    2272, 2499,  2749,  3024,  3327,  3660,  4026,  4428,  4871,  5358,  5894,  6484,  7132,  7845, 8630,
    9493, 10442, 11487, 12635, 13899, 15289, 16818, 18500, 20350, 22385, 24623, 27086, 29794, 32767};
constexpr int kStepCount = static_cast<int>(sizeof kSteps / sizeof kSteps[0]);
static_assert(kStepCount == 89);

constexpr int kBlockHeaderBytes = 4;
constexpr int kGroupSamples = 8;
constexpr int kLow = -32768;
constexpr int kHigh = 32767;

int SamplesPerBlock(int blockBytes) { return 2 * blockBytes - 7; }

LWaveHeaderLayout WriterLayout(std::uint32_t sampleRate) {
  LWaveHeaderLayout layout;
  layout.tag = kLWaveTagIMAADPCM;
  layout.channels = 1;
  layout.sampleRate = sampleRate;
  layout.blockAlign = kLIMAWriterBlockBytes;
  layout.samplesPerBlock = static_cast<std::uint16_t>(SamplesPerBlock(kLIMAWriterBlockBytes));
  layout.bytesPerSecond = static_cast<std::uint32_t>(static_cast<std::uint64_t>(sampleRate) * kLIMAWriterBlockBytes /
                                                     layout.samplesPerBlock);
  layout.bitsPerSample = 4;
  layout.fmtBytes = 20;
  layout.fact = true;
  return layout;
}

}  // namespace

long long LIMAFrameCount(int blockAlign, std::uint32_t dataSize, long long streamBytes) {
  const long long block = std::clamp(blockAlign, kLIMAMinBlockBytes, kLIMAMaxBlockBytes);
  const long long size = dataSize == 0xFFFFFFFFu ? std::max(0LL, streamBytes) : dataSize;
  long long frames = size / block * SamplesPerBlock(static_cast<int>(block));
  const long long rest = size % block;
  if (rest >= kBlockHeaderBytes) frames += 2 * rest - 7;
  return frames;
}

LSoundSource LIMASoundSource::Open(std::unique_ptr<LByteStream> stream, std::uint32_t sampleRate, int blockAlign,
                                   std::uint32_t dataSize, long long factFrames) {
  long long streamBytes = 0;
  if (stream) streamBytes = stream->Size() - stream->Tell();
  const long long frames =
      LBlockWaveFrames(LIMAFrameCount(blockAlign, dataSize, streamBytes), factFrames, dataSize == 0xFFFFFFFFu);
  return LMakeSource<LIMASoundSource>(std::move(stream), sampleRate, blockAlign, frames);
}

LIMASoundSource::LIMASoundSource(std::unique_ptr<LByteStream> stream, std::uint32_t sampleRate, int blockAlign,
                                 long long frames)
    : LBlockWaveSourceBase(
          std::move(stream), sampleRate, std::clamp(blockAlign, kLIMAMinBlockBytes, kLIMAMaxBlockBytes),
          SamplesPerBlock(std::clamp(blockAlign, kLIMAMinBlockBytes, kLIMAMaxBlockBytes)), frames, kLIMAMaxBlockBytes) {
}

int LIMASoundSource::DecodeBlock(const unsigned char* block, int bytes, std::int16_t* samples) {
  if (bytes < kBlockHeaderBytes) return 0;
  LAdpcmState state;
  state.predictor = static_cast<std::int16_t>(LGetLE16(block));
  state.index = std::min<int>(block[2], kStepCount - 1);
  int n = 0;
  samples[n++] = static_cast<std::int16_t>(state.predictor);
  for (int i = kBlockHeaderBytes; i < bytes; ++i) {
    samples[n++] =
        static_cast<std::int16_t>(LAdpcmDecodeNibble(state, block[i] & 0x0F, kSteps, kStepCount, kLow, kHigh));
    samples[n++] = static_cast<std::int16_t>(LAdpcmDecodeNibble(state, block[i] >> 4, kSteps, kStepCount, kLow, kHigh));
  }
  return n;
}

LIMAWaveSink::LIMAWaveSink(const char* path, std::uint32_t sampleRate)
    : LBlockWaveSinkBase(path, WriterLayout(sampleRate)) {}

LIMAWaveSink::LIMAWaveSink(std::unique_ptr<LByteStream> stream, std::uint32_t sampleRate)
    : LBlockWaveSinkBase(std::move(stream), WriterLayout(sampleRate)) {}

int LIMAWaveSink::EncodeBlock(const std::int16_t* samples, int count, unsigned char* out) {
  if (count <= 0) return 0;
  // The first sample goes into the header as it is; the step index carries over from the last block.
  LAdpcmState state{samples[0], index_};
  LPutLE16(out, static_cast<std::uint16_t>(samples[0]));
  out[2] = static_cast<unsigned char>(state.index);
  out[3] = 0;
  // A short last block is filled up to whole groups of 8 samples (4 bytes), repeating its last
  // sample: decoders that work in such groups then read it whole.
  const int coded = (count - 1 + kGroupSamples - 1) / kGroupSamples * kGroupSamples;
  int bytes = kBlockHeaderBytes;
  for (int i = 1; i <= coded; i += 2) {
    const int low = LAdpcmEncodeNibble(state, samples[std::min(i, count - 1)], kSteps, kStepCount, kLow, kHigh);
    const int high = LAdpcmEncodeNibble(state, samples[std::min(i + 1, count - 1)], kSteps, kStepCount, kLow, kHigh);
    out[bytes++] = static_cast<unsigned char>(low | high << 4);
  }
  index_ = state.index;
  return bytes;
}
