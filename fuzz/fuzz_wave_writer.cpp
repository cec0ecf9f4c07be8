// The WAVE and raw writers driven with fuzzed formats, write sizes, backward
// seeks and sample values (NaN, infinities, huge and tiny numbers). What they
// write must read back as a file of exactly the frames written; float samples
// come back bit for bit and 16-bit ones within a step of the clamped input.
#include <fuzzer/FuzzedDataProvider.h>

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <memory>
#include <vector>

#include "base/memory_stream.h"
#include "formats/gsm_wave.h"
#include "formats/ima_adpcm.h"
#include "formats/pcm_file_sink.h"
#include "formats/raw_data_sink.h"
#include "formats/raw_file.h"
#include "formats/wave_file.h"
#include "fuzz_check.h"

namespace {

enum Writer : int {
  kPCM8,
  kPCM16,
  kPCM16Shaped,
  kPCM24,
  kPCM32,
  kFloat46,
  kFloatFact,
  kIMA,
  kGSM,
  kRawALaw,
  kRawMuLaw,
  kRawS8,
  kRawBE16,
  kRawFloatBE,
  kWriters
};

constexpr int kFewChannels = 8;
constexpr int kMostChannels = 300;  // past the 255 a writer takes
constexpr long long kMostWriteFrames = 3000;
// Samples written at most: enough for several conversion buffers of a mono file.
constexpr long long kMostSamples = 1 << 14;
constexpr std::uint32_t kRate = 22050;

LSoundSink Open(int writer, std::unique_ptr<LByteStream> stream, int channels) {
  switch (writer) {
    case kPCM8: return LMakeSink<LSNKPCMFile<LSFU8>>(std::move(stream), kRate, channels, LWaveHeaderKind::kPlain);
    case kPCM16: return LMakeSink<LSNKPCMFile<LSF16>>(std::move(stream), kRate, channels, LWaveHeaderKind::kPlain);
    case kPCM16Shaped:
      return LMakeSink<LSNKPCMFile<LSF16>>(std::move(stream), kRate, channels, LWaveHeaderKind::kPlain, true);
    case kPCM24: return LMakeSink<LSNKPCMFile<LSFLE24>>(std::move(stream), kRate, channels, LWaveHeaderKind::kPlain);
    case kPCM32: return LMakeSink<LSNKPCMFile<LSF32>>(std::move(stream), kRate, channels, LWaveHeaderKind::kPlain);
    case kFloat46: return LMakeSink<LSNKPCMFile<LSFF32>>(std::move(stream), kRate, channels, LWaveHeaderKind::kExtraSize);
    case kFloatFact: return LMakeSink<LSNKPCMFile<LSFF32>>(std::move(stream), kRate, channels, LWaveHeaderKind::kFloatFact);
    case kIMA: return LMakeSink<LIMAWaveSink>(std::move(stream), kRate);
    case kGSM: return LGSMWaveOpenSink(std::move(stream), 8000u);
    case kRawALaw: return LMakeSink<LRawFileDataSoundSink<LSFALAW>>(std::move(stream), kRate, channels);
    case kRawMuLaw: return LMakeSink<LRawFileDataSoundSink<LSFULAW>>(std::move(stream), kRate, channels);
    case kRawS8: return LMakeSink<LRawFileDataSoundSink<LSFS8>>(std::move(stream), kRate, channels);
    case kRawBE16: return LMakeSink<LRawFileDataSoundSink<LSFBE16>>(std::move(stream), kRate, channels);
    default: return LMakeSink<LRawFileDataSoundSink<LSFFRE32>>(std::move(stream), kRate, channels);
  }
}

int RawCode(int writer) {
  switch (writer) {
    case kRawALaw: return kLRawALaw;
    case kRawMuLaw: return kLRawMuLaw;
    case kRawS8: return kLRawS8;
    case kRawBE16: return kLRawBE16;
    default: return kLRawFloatBE;
  }
}

bool IsRaw(int writer) { return writer >= kRawALaw; }
bool IsBlockCoded(int writer) { return writer == kIMA || writer == kGSM; }
bool SeeksBack(int writer) { return writer <= kFloatFact; }

// What a 16-bit writer without shaping stores for x, read back.
float Quantised16(float x) {
  unsigned char stored[2];
  LSF16::Out(stored, x);
  return LSF16::In(stored);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FuzzedDataProvider in(data, size);
  const int writer = in.ConsumeIntegralInRange<int>(0, kWriters - 1);
  // Mostly a few channels, which keeps runs fast; now and then any count, 0 and past 255 included.
  int channels = 1;
  if (!IsBlockCoded(writer)) {
    channels = in.ConsumeBool() ? in.ConsumeIntegralInRange<int>(1, kFewChannels)
                                : in.ConsumeIntegralInRange<int>(0, kMostChannels);
  }
  // Old content the writer must cut away.
  LMemoryStream file(std::vector<unsigned char>(in.ConsumeIntegralInRange<int>(0, 200), 0xEE));
  LSoundSink sink = Open(writer, std::make_unique<FuzzBorrowedStream>(file), channels);
  if (sink.HasError() && writer == kGSM) return 0;  // a build without libgsm
  const bool valid = channels >= 1 && channels <= 255;
  FuzzCheck(sink.HasError() != valid, "a writer refuses exactly the channel counts it cannot write");
  const int ch = sink.GetChannels();

  // What the file must hold: the samples written, less what backward seeks discarded.
  std::vector<float> written;
  std::vector<float> block;
  while (in.remaining_bytes() > 0 && static_cast<long long>(written.size()) < kMostSamples) {
    if (SeeksBack(writer) && in.ConsumeIntegralInRange<int>(0, 7) == 0) {
      const long long position = sink.GetPosition();
      const long long frame = in.ConsumeIntegralInRange<long long>(-5, position + 5);
      sink.Seek(frame);
      if (frame <= position) written.resize(static_cast<std::size_t>(std::max(0LL, frame) * ch));
      FuzzCheck(sink.GetPosition() == static_cast<long long>(written.size()) / ch, "a seek moves back only");
      continue;
    }
    const long long frames = in.ConsumeIntegralInRange<long long>(0, kMostWriteFrames);
    block.assign(static_cast<std::size_t>(frames * ch), 0.0f);
    const std::vector<std::uint8_t> bits = in.ConsumeBytes<std::uint8_t>(block.size() * sizeof(float));
    if (!bits.empty()) std::memcpy(block.data(), bits.data(), bits.size());
    sink.Write(block.data(), frames);
    written.insert(written.end(), block.begin(), block.end());
  }
  const long long frames = static_cast<long long>(written.size()) / ch;
  FuzzCheck(sink.GetPosition() == frames, "the position counts the frames written");
  sink.Complete();
  FuzzCheck(sink.HasError() != valid, "a writer on memory never fails");
  sink.Close();
  if (!valid) return 0;

  LSoundSource back;
  if (IsRaw(writer)) {
    LRawSettings settings;
    settings.sampleRate = static_cast<std::int32_t>(kRate);
    settings.channels = static_cast<std::uint8_t>(ch);
    settings.formatCode = RawCode(writer);
    back = LRawFile::OpenSource(std::make_unique<LMemoryStream>(file.Bytes()), settings);
  } else {
    back = LWaveFile::OpenSource(std::make_unique<LMemoryStream>(file.Bytes()));
  }
  FuzzCheck(!back.IsError(), "what a writer wrote opens");
  FuzzCheck(back.GetChannels() == ch, "the channels come back");
  FuzzCheck(!back.IsStreaming(), "a completed file has a known length");
  if (IsBlockCoded(writer)) {
    FuzzCheck(back.GetEndSample() >= frames, "a block-coded file holds every frame written");
    return 0;
  }
  FuzzCheck(back.GetEndSample() == frames, "the file holds exactly the frames written");
  const long long compare = std::min<long long>(frames, kFuzzMostSamples / ch);
  std::vector<float> read(static_cast<std::size_t>(compare * ch));
  back.Read(read.data(), compare);
  for (std::size_t i = 0; i < read.size(); ++i) {
    const float x = written[i];
    if (writer == kFloat46) {
      // The 46-byte header says tag 1 whatever the samples are, deliberately: the
      // float bits read back as 32-bit integers.
      unsigned char stored[4];
      std::memcpy(stored, &x, 4);
      FuzzCheck(read[i] == LSF32::In(stored), "the 46-byte kind reads back as 32-bit integers");
    } else if (writer == kFloatFact || writer == kRawFloatBE) {
      if (std::memcmp(&read[i], &x, sizeof x) != 0) {
        std::uint32_t wrote = 0;
        std::uint32_t got = 0;
        std::memcpy(&wrote, &x, 4);
        std::memcpy(&got, &read[i], 4);
        std::fprintf(stderr, "writer %d, %d channels, sample %zu of %lld frames: wrote %08x, read %08x\n", writer, ch,
                     i, frames, wrote, got);
        FuzzCheck(false, "float samples come back bit for bit");
      }
    } else if (writer == kPCM16) {
      FuzzCheck(read[i] == Quantised16(x), "16-bit samples come back as the clamped, rounded input");
    } else {
      FuzzCheck(std::isfinite(read[i]), "stored samples read back as numbers");
    }
  }
  return 0;
}
