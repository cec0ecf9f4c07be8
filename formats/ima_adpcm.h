#pragma once
// IMA ADPCM in WAVE files (format tag 17), mono: LIMASoundSource reads it and
// LIMAWaveSink writes it. A block starts with a 4-byte header (the first sample
// and the step index) followed by two samples per byte, low nibble first, so a
// block of n bytes holds 2n - 7 samples.
#include <cstdint>
#include <memory>

#include "base/byte_stream.h"
#include "engine/sound_sink.h"
#include "engine/sound_source.h"
#include "formats/block_wave_sink.h"
#include "formats/block_wave_source.h"

// Block sizes that the reader accepts; larger or smaller block aligns are clamped.
constexpr int kLIMAMinBlockBytes = 4;
constexpr int kLIMAMaxBlockBytes = 32768;
// The block size the writer uses.
constexpr int kLIMAWriterBlockBytes = 1024;

// Frames in IMA data of dataSize bytes coded in blocks of blockAlign bytes;
// streamBytes (the bytes from the data start to the end of the file) stands in for
// a data size of all ones.
[[nodiscard]] long long LIMAFrameCount(int blockAlign, std::uint32_t dataSize, long long streamBytes);

class LIMASoundSource final : public LBlockWaveSourceBase {
 public:
  // The stream stands at the first block; factFrames is the fact chunk's count, -1 without one.
  [[nodiscard]] static LSoundSource Open(std::unique_ptr<LByteStream> stream, std::uint32_t sampleRate, int blockAlign,
                                         std::uint32_t dataSize, long long factFrames = -1);

  LIMASoundSource(std::unique_ptr<LByteStream> stream, std::uint32_t sampleRate, int blockAlign, long long frames);

 protected:
  int DecodeBlock(const unsigned char* block, int bytes, std::int16_t* samples) override;
};

class LIMAWaveSink final : public LBlockWaveSinkBase {
 public:
  LIMAWaveSink(const char* path, std::uint32_t sampleRate);
  LIMAWaveSink(std::unique_ptr<LByteStream> stream, std::uint32_t sampleRate);
  ~LIMAWaveSink() override { Finish(); }

 protected:
  int EncodeBlock(const std::int16_t* samples, int count, unsigned char* out) override;

 private:
  int index_ = 0;
};
