#pragma once
// LBlockWaveSourceBase: the reader of mono WAVE data coded in blocks of fixed
// size (IMA ADPCM, GSM 6.10): a block decodes on its own into a fixed number of
// 16-bit samples. The block in hand is kept decoded; a short last block decodes
// as far as it goes, and frames that no block yields read as silence.
#include <cstdint>
#include <memory>

#include "base/array.h"
#include "base/byte_stream.h"
#include "engine/sound_source.h"

// The frames of block-coded data: the blocks' frames, cut to the fact chunk's
// count (-1 without one) where that is smaller, since the last block is coded in
// full. A count of 0 or one beside a provisional size is a writer's placeholder
// and is not taken.
[[nodiscard]] long long LBlockWaveFrames(long long blockFrames, long long factFrames, bool provisional);

class LBlockWaveSourceBase : public LSoundSourceBase {
 public:
  void Read(float* out, long long frames) override;
  long long GetPositionSample() const override { return position_; }
  long long GetEndSample() const override { return frames_; }
  void Seek(long long frame) override { position_ = frame; }

 protected:
  // The stream stands at the first block; bufferBytes (at least blockBytes) is the block buffer's size.
  LBlockWaveSourceBase(std::unique_ptr<LByteStream> stream, std::uint32_t sampleRate, int blockBytes,
                       int samplesPerBlock, long long frames, int bufferBytes);

  // Decodes one block of bytes bytes (a last block may be short); answers the samples written.
  virtual int DecodeBlock(const unsigned char* block, int bytes, std::int16_t* samples) = 0;
  // Called before a block that does not follow the one decoded last.
  virtual void DecoderReset() {}

 private:
  void Decode(long long block);

  std::unique_ptr<LByteStream> stream_;
  long long dataStart_ = 0;
  int blockBytes_;
  int samplesPerBlock_;
  long long frames_;
  long long position_ = 0;
  LArray<unsigned char> block_;
  LArray<std::int16_t> samples_;
  long long decodedBlock_ = -1;
  int decodedCount_ = 0;
};
