#include "formats/gsm_wave.h"

#include <algorithm>
#include <cstring>

#include "formats/wave_format.h"

#ifdef SONVALE_HAVE_GSM
#if __has_include(<gsm.h>)
#include <gsm.h>
#else
#include <gsm/gsm.h>
#endif
#endif

long long LGSMFrameCount(std::uint32_t dataSize, long long streamBytes) {
  const long long size = dataSize >= kLWaveProvisionalDataSize ? std::max(0LL, streamBytes) : dataSize;
  return size / kLGSMBlockBytes * kLGSMSamplesPerBlock;
}

#ifdef SONVALE_HAVE_GSM

namespace {

// A GSM frame: 160 samples; in a block the first is packed into 33 bytes, the second into 32.
constexpr int kFrameSamples = 160;
constexpr int kFirstFrameBytes = 33;
constexpr int kSecondFrameBytes = 32;

gsm CreateWav49() {
  gsm handle = gsm_create();
  int on = 1;
  if (handle) gsm_option(handle, GSM_OPT_WAV49, &on);
  return handle;
}

LWaveHeaderLayout WriterLayout(std::uint32_t sampleRate) {
  LWaveHeaderLayout layout;
  layout.tag = kLWaveTagGSM610;
  layout.channels = 1;
  layout.sampleRate = sampleRate;
  layout.bytesPerSecond =
      static_cast<std::uint32_t>(static_cast<std::uint64_t>(sampleRate) * kLGSMBlockBytes / kLGSMSamplesPerBlock);
  layout.blockAlign = kLGSMBlockBytes;
  layout.bitsPerSample = 0;
  layout.fmtBytes = 20;
  layout.samplesPerBlock = kLGSMSamplesPerBlock;
  layout.fact = true;
  return layout;
}

}  // namespace

LSoundSource LGSMWaveOpenSource(std::unique_ptr<LByteStream> stream, std::uint32_t sampleRate, std::uint32_t dataSize,
                                long long factFrames) {
  long long streamBytes = 0;
  if (stream) streamBytes = stream->Size() - stream->Tell();
  const long long frames = LBlockWaveFrames(LGSMFrameCount(dataSize, streamBytes), factFrames,
                                            dataSize >= kLWaveProvisionalDataSize);
  return LMakeSource<LGSMWaveSource>(std::move(stream), sampleRate, frames);
}

LSoundSink LGSMWaveOpenSink(const char* path, std::uint32_t sampleRate) {
  return LMakeSink<LGSMWaveSink>(path, sampleRate);
}

LSoundSink LGSMWaveOpenSink(std::unique_ptr<LByteStream> stream, std::uint32_t sampleRate) {
  return LMakeSink<LGSMWaveSink>(std::move(stream), sampleRate);
}

LGSMWaveSource::LGSMWaveSource(std::unique_ptr<LByteStream> stream, std::uint32_t sampleRate, long long frames)
    : LBlockWaveSourceBase(std::move(stream), sampleRate, kLGSMBlockBytes, kLGSMSamplesPerBlock, frames,
                           kLGSMBlockBytes),
      gsm_(CreateWav49()) {
  if (!gsm_) SetErrorCode(kLSourceCodecMissing);
}

LGSMWaveSource::~LGSMWaveSource() {
  if (gsm_) gsm_destroy(gsm_);
}

void LGSMWaveSource::DecoderReset() {
  if (gsm_) gsm_destroy(gsm_);
  gsm_ = CreateWav49();
}

int LGSMWaveSource::DecodeBlock(const unsigned char* block, int bytes, std::int16_t* samples) {
  if (!gsm_ || bytes < kLGSMBlockBytes) return 0;
  // libgsm takes non-const buffers but does not write to the input.
  auto* in = const_cast<gsm_byte*>(block);
  if (gsm_decode(gsm_, in, samples) < 0 || gsm_decode(gsm_, in + kFirstFrameBytes, samples + kFrameSamples) < 0) {
    std::memset(samples, 0, sizeof(std::int16_t) * kLGSMSamplesPerBlock);
  }
  return kLGSMSamplesPerBlock;
}

LGSMWaveSink::LGSMWaveSink(const char* path, std::uint32_t sampleRate)
    : LBlockWaveSinkBase(path, WriterLayout(sampleRate)), gsm_(CreateWav49()) {
  if (!gsm_) SetError();
}

LGSMWaveSink::LGSMWaveSink(std::unique_ptr<LByteStream> stream, std::uint32_t sampleRate)
    : LBlockWaveSinkBase(std::move(stream), WriterLayout(sampleRate)), gsm_(CreateWav49()) {
  if (!gsm_) SetError();
}

LGSMWaveSink::~LGSMWaveSink() {
  Finish();
  if (gsm_) gsm_destroy(gsm_);
}

int LGSMWaveSink::EncodeBlock(const std::int16_t* samples, int count, unsigned char* out) {
  if (!gsm_) return 0;
  // A short last block is filled up with silence.
  gsm_signal block[kLGSMSamplesPerBlock] = {};
  std::copy(samples, samples + std::min(count, kLGSMSamplesPerBlock), block);
  gsm_encode(gsm_, block, out);
  gsm_encode(gsm_, block + kFrameSamples, out + kSecondFrameBytes);
  return kLGSMBlockBytes;
}

#else

LSoundSource LGSMWaveOpenSource(std::unique_ptr<LByteStream>, std::uint32_t, std::uint32_t, long long) {
  return LSoundSource::Error(kLSourceCodecMissing);
}
LSoundSink LGSMWaveOpenSink(const char*, std::uint32_t) { return LSoundSink::Error(); }
LSoundSink LGSMWaveOpenSink(std::unique_ptr<LByteStream>, std::uint32_t) { return LSoundSink::Error(); }

#endif
