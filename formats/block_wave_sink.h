#pragma once
// LBlockWaveSinkBase: the writer of mono WAVE data coded in blocks of fixed size
// (IMA ADPCM, GSM 6.10). Samples gather into one block's worth and are coded
// block by block; the header (fmt with the samples per block, fact, data) holds
// provisional sizes until Finish, which codes the last, possibly short, block and
// writes the true sizes. Every derived destructor calls Finish.
#include <cstdint>
#include <memory>

#include "base/array.h"
#include "base/byte_stream.h"
#include "engine/sound_sink.h"
#include "formats/wave_header.h"

class LBlockWaveSinkBase : public LSoundSinkBase {
 public:
  void Write(const float* in, long long frames) override;
  // Codes the last block and writes the true sizes and the pad byte (Finish).
  void Complete() override { Finish(); }

 protected:
  // Opens (creating) with a shared lock; the file is cut after the header.
  LBlockWaveSinkBase(const char* path, const LWaveHeaderLayout& layout);
  LBlockWaveSinkBase(std::unique_ptr<LByteStream> stream, const LWaveHeaderLayout& layout);

  // Codes count samples (at most the samples per block) into out; answers the bytes written.
  virtual int EncodeBlock(const std::int16_t* samples, int count, unsigned char* out) = 0;
  void Finish();

 private:
  void Start();
  void WriteHeader(bool provisional);
  void Flush();

  std::unique_ptr<LByteStream> stream_;
  LWaveHeaderLayout layout_;
  int headerBytes_ = 0;
  LArray<std::int16_t> pending_;
  int pendingCount_ = 0;
  LArray<unsigned char> block_;
  long long dataBytes_ = 0;
  bool finished_ = false;
};
