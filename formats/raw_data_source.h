#pragma once
// LRawFileDataSoundSource: samples of one stored layout, back to back in one
// stretch of a file (a headerless file, or the data chunk of a G.711 WAVE file).
// Frames past the stretch, and data the file does not hold, read as silence.
#include <cstdint>
#include <memory>

#include "base/array.h"
#include "base/byte_stream.h"
#include "engine/sample_format.h"
#include "engine/sound_source.h"
#include "formats/read_in_steps.h"

class LRawFileDataSoundSourceBase : public LSoundSourceBase {
 public:
  long long GetPositionSample() const override { return position_; }
  long long GetEndSample() const override { return dataSize_ / bytesPerFrame_; }
  void Seek(long long frame) override { position_ = frame; }

 protected:
  // The stream stands at the first sample byte.
  LRawFileDataSoundSourceBase(std::unique_ptr<LByteStream> stream, std::uint32_t sampleRate, int channels,
                              float maxAmplitude, int bytesPerSample, long long dataSize);

  using ConvertIn = void (*)(float*, const void*, long long);
  void ReadConverted(float* out, long long frames, unsigned char* buffer, ConvertIn convert);
  int BytesPerFrame() const { return bytesPerFrame_; }

 private:
  std::unique_ptr<LByteStream> stream_;
  long long dataStart_ = 0;
  long long dataSize_ = 0;
  long long position_ = 0;
  long long streamAt_ = -1;
  int bytesPerFrame_ = 1;
};

template <class Tag>
class LRawFileDataSoundSource final : public LRawFileDataSoundSourceBase {
 public:
  LRawFileDataSoundSource(std::unique_ptr<LByteStream> stream, std::uint32_t sampleRate, int channels,
                          float maxAmplitude, long long dataSize)
      : LRawFileDataSoundSourceBase(std::move(stream), sampleRate, channels, maxAmplitude, Tag::kBytes, dataSize),
        buffer_(static_cast<size_t>(kLFileBufferFrames * BytesPerFrame())) {}

  void Read(float* out, long long frames) override {
    ReadConverted(out, frames, buffer_.data(), &ConvertSamplesIn<Tag>);
  }

 private:
  LArray<unsigned char> buffer_;
};
