#pragma once
// LSRCVOX: the reader of Dialogic VOX files (headerless 4-bit ADPCM of 12-bit
// samples, mono, two samples per byte, high nibble first). The coding carries its
// state from the first byte on, so a seek backwards decodes again from the start;
// the decoded buffer in hand serves reads that stay within it.
#include <cstdint>
#include <memory>

#include "base/array.h"
#include "base/byte_stream.h"
#include "engine/sound_source.h"
#include "formats/adpcm_step.h"

class LSRCVOX final : public LSoundSourceBase {
 public:
  // The stream stands at the first byte of dataSize bytes of VOX data.
  LSRCVOX(std::unique_ptr<LByteStream> stream, std::uint32_t sampleRate, long long dataSize);

  void Read(float* out, long long frames) override;
  long long GetPositionSample() const override { return position_; }
  long long GetEndSample() const override { return dataSize_ * 2; }
  void Seek(long long frame) override { position_ = frame; }

 private:
  void Restart();
  // Decodes the bytes that follow the buffer in hand; false at the end of the data.
  bool DecodeNext();

  std::unique_ptr<LByteStream> stream_;
  long long dataStart_ = 0;
  long long dataSize_ = 0;
  long long position_ = 0;
  LAdpcmState state_;
  LArray<unsigned char> bytes_;
  LArray<std::int16_t> samples_;
  // Frames [bufferStart_, bufferStart_ + bufferCount_) are decoded in samples_.
  long long bufferStart_ = 0;
  long long bufferCount_ = 0;
};
