#pragma once
// LRawFileDataSoundSink: writes samples of one stored layout back to back, after
// an optional header that a callback builds (empty for headerless files; the
// G.711 WAVE writer builds its WAVE header). The header is written at opening
// and again with the final counts when the sink is destroyed; a file with a
// header gets a pad byte after odd-sized data.
#include <cstdint>
#include <functional>
#include <memory>

#include "base/array.h"
#include "base/byte_stream.h"
#include "engine/sample_format.h"
#include "engine/sound_sink.h"
#include "formats/read_in_steps.h"

// The bytes that go before the data, for the frames written so far.
using LRawFileHeader = std::function<LArray<unsigned char>(std::uint32_t sampleRate, int channels, long long frames)>;

class LRawFileDataSoundSinkBase : public LSoundSinkBase {
 public:
  ~LRawFileDataSoundSinkBase() override;
  // Writes the header with the final counts and the pad byte.
  void Complete() override;

 protected:
  // Opens (creating) with a shared lock; the file is cut after the header.
  LRawFileDataSoundSinkBase(const char* path, std::uint32_t sampleRate, int channels, int bytesPerSample,
                            LRawFileHeader header);
  LRawFileDataSoundSinkBase(std::unique_ptr<LByteStream> stream, std::uint32_t sampleRate, int channels,
                            int bytesPerSample, LRawFileHeader header);

  // Writes frames converted frames and advances the position.
  void WriteFrames(const unsigned char* bytes, long long frames);
  int BytesPerFrame() const { return bytesPerFrame_; }

 private:
  void Start(int channels);
  // Writes the header at the start of the file; answers its size.
  long long WriteHeader();

  std::unique_ptr<LByteStream> stream_;
  LRawFileHeader header_;
  int bytesPerSample_;
  int bytesPerFrame_ = 1;
  bool finished_ = false;
};

template <class Tag>
class LRawFileDataSoundSink final : public LRawFileDataSoundSinkBase {
 public:
  LRawFileDataSoundSink(const char* path, std::uint32_t sampleRate, int channels, LRawFileHeader header = {})
      : LRawFileDataSoundSinkBase(path, sampleRate, channels, Tag::kBytes, std::move(header)) {}
  LRawFileDataSoundSink(std::unique_ptr<LByteStream> stream, std::uint32_t sampleRate, int channels,
                        LRawFileHeader header = {})
      : LRawFileDataSoundSinkBase(std::move(stream), sampleRate, channels, Tag::kBytes, std::move(header)) {}

  void Write(const float* in, long long frames) override {
    const int channels = GetChannels();
    while (frames > 0) {
      const long long n = frames < kLFileBufferFrames ? frames : kLFileBufferFrames;
      ConvertSamplesOut<Tag>(buffer_.data(), in, n * channels);
      WriteFrames(buffer_.data(), n);
      in += n * channels;
      frames -= n;
    }
  }

 private:
  LArray<unsigned char> buffer_ = LArray<unsigned char>(static_cast<size_t>(kLFileBufferFrames * BytesPerFrame()));
};
