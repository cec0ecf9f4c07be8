#pragma once
// GSM 6.10 in WAVE files (format tag 49, the "WAV49" packing of libgsm): each
// 65-byte block holds two 160-sample frames, 320 samples, mono. Without libgsm
// the openers answer "codec missing" (reader) and the error sink (writer).
#include <cstdint>
#include <memory>

#include "base/byte_stream.h"
#include "engine/sound_sink.h"
#include "engine/sound_source.h"
#include "formats/block_wave_sink.h"
#include "formats/block_wave_source.h"

struct gsm_state;

constexpr int kLGSMBlockBytes = 65;
constexpr int kLGSMSamplesPerBlock = 320;

// Frames in GSM data of dataSize bytes; streamBytes (the bytes from the data start
// to the end of the file) stands in for a provisional data size.
[[nodiscard]] long long LGSMFrameCount(std::uint32_t dataSize, long long streamBytes);

// The reader over a stream that stands at the first block, or an error source with code 7 without libgsm;
// factFrames is the fact chunk's count, -1 without one.
[[nodiscard]] LSoundSource LGSMWaveOpenSource(std::unique_ptr<LByteStream> stream, std::uint32_t sampleRate,
                                              std::uint32_t dataSize, long long factFrames = -1);
// The writer, or the error sink without libgsm.
[[nodiscard]] LSoundSink LGSMWaveOpenSink(const char* path, std::uint32_t sampleRate);
[[nodiscard]] LSoundSink LGSMWaveOpenSink(std::unique_ptr<LByteStream> stream, std::uint32_t sampleRate);

class LGSMWaveSource final : public LBlockWaveSourceBase {
 public:
  LGSMWaveSource(std::unique_ptr<LByteStream> stream, std::uint32_t sampleRate, long long frames);
  ~LGSMWaveSource() override;

 protected:
  int DecodeBlock(const unsigned char* block, int bytes, std::int16_t* samples) override;
  void DecoderReset() override;

 private:
  gsm_state* gsm_ = nullptr;
};

class LGSMWaveSink final : public LBlockWaveSinkBase {
 public:
  LGSMWaveSink(const char* path, std::uint32_t sampleRate);
  LGSMWaveSink(std::unique_ptr<LByteStream> stream, std::uint32_t sampleRate);
  ~LGSMWaveSink() override;

 protected:
  int EncodeBlock(const std::int16_t* samples, int count, unsigned char* out) override;

 private:
  gsm_state* gsm_ = nullptr;
};
