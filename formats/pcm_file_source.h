#pragma once
// LSRCPCMFile: the reader of PCM and float samples in a WAVE file.
//
// The samples may be spread over several consecutive data chunks (how files
// above 4 GB are written); they read as one continuous stream. A file whose
// header still holds a writer's provisional sizes has no known length: the
// source then answers IsStreaming with true and its end follows the file as it
// grows, until the writer's final header appears. Missing or truncated data read
// as silence; nothing past the data chunks is ever read as samples.
#include <cstdint>
#include <memory>

#include "base/array.h"
#include "base/byte_stream.h"
#include "engine/sample_format.h"
#include "engine/sound_source.h"
#include "formats/read_in_steps.h"

class LSRCPCMFileBase : public LSoundSourceBase {
 public:
  long long GetPositionSample() const override { return position_; }
  // While the length is unknown this looks at the file each time it is asked.
  long long GetEndSample() const override;
  void Seek(long long frame) override { position_ = frame; }
  bool IsStreaming() const override { return frameCount_ < 0; }

  // The data extents found at opening (file offsets, end exclusive); tests look at them.
  struct Extent {
    long long begin;
    long long end;
  };
  const LArray<Extent>& Extents() const { return extents_; }

 protected:
  // The stream stands at the first sample byte; dataSize is the first data chunk's size.
  LSRCPCMFileBase(std::unique_ptr<LByteStream> stream, std::uint32_t sampleRate, int channels, float maxAmplitude,
                  int bytesPerSample, std::uint32_t dataSize);

  using ConvertIn = void (*)(float*, const void*, long long);
  void ReadConverted(float* out, long long frames, unsigned char* buffer, ConvertIn convert);
  int BytesPerFrame() const { return bytesPerFrame_; }

 private:
  // Walks the data headers that follow the first chunk; answers the frame count or -1 when unknown.
  long long ScanExtents(std::uint32_t firstDataSize) const;
  // Reads whole frames from at on into dst; answers the frames delivered.
  long long ReadFrames(unsigned char* dst, long long at, long long frames);

  std::unique_ptr<LByteStream> stream_;
  long long dataStart_ = 0;
  std::uint32_t firstDataSize_ = 0;
  mutable long long frameCount_ = -1;
  long long position_ = 0;
  mutable LArray<Extent> extents_;
  // Where the stream stands, or -1 when that is not known.
  mutable long long streamAt_ = -1;
  int bytesPerFrame_ = 2;
};

template <class Tag>
class LSRCPCMFile final : public LSRCPCMFileBase {
 public:
  LSRCPCMFile(std::unique_ptr<LByteStream> stream, std::uint32_t sampleRate, int channels, float maxAmplitude,
              std::uint32_t dataSize)
      : LSRCPCMFileBase(std::move(stream), sampleRate, channels, maxAmplitude, Tag::kBytes, dataSize),
        buffer_(static_cast<size_t>(kLFileBufferFrames * BytesPerFrame())) {}

  void Read(float* out, long long frames) override {
    ReadConverted(out, frames, buffer_.data(), &ConvertSamplesIn<Tag>);
  }

 private:
  LArray<unsigned char> buffer_;
};
