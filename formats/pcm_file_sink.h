#pragma once
// LSNKPCMFile: the writer of PCM WAVE files, the files of cache items, recordings
// and most exports.
//
// From opening until the writer is destroyed the file holds a provisional header
// whose sizes mark the length as unknown, so a reader opened meanwhile follows
// the file as it grows. Destruction writes the true sizes, the headers of further
// data chunks and the pad byte. Above 4 GB the samples are split over consecutive
// data chunks (LPCMChunkGeometry). Seek moves the write position backwards only
// and discards everything after it. Failures raise the sink's error flag.
#include <cstdint>
#include <memory>

#include "base/array.h"
#include "base/byte_stream.h"
#include "engine/sample_format.h"
#include "engine/sound_sink.h"
#include "formats/read_in_steps.h"
#include "formats/sound_dither.h"
#include "formats/wave_header.h"

enum class LWaveHeaderKind : std::uint8_t {
  kPlain,      // 44 bytes: fmt of 16 bytes, tag 1
  kExtraSize,  // 46 bytes: fmt of 18 bytes, tag 1 whatever the samples are (deliberate: files rely on it)
  kFloatFact,  // 58 bytes: fmt of 18 bytes with tag 3 and a fact chunk, as other programs expect of float
};

// Sizes of the data chunks of a file above 4 GB: the first chunk holds at most
// firstMax bytes, every further one at most kLPCMFurtherChunkMax bytes behind its
// own 8-byte header directly after the previous chunk's bytes. On disk: never change.
constexpr std::uint32_t kLPCMFirstChunkMax = 0xFFFFFFD8u;
constexpr std::uint32_t kLPCMFurtherChunkMax = 0xFFFFFFF0u;

struct LPCMChunkGeometry {
  long long headerBytes;
  long long firstMax = kLPCMFirstChunkMax;

  // True when data byte b opens a further chunk, whose header goes before it.
  [[nodiscard]] bool StartsChunk(long long b) const {
    return b >= firstMax && (b - firstMax) % kLPCMFurtherChunkMax == 0;
  }
  // Bytes that fit from data byte b to the end of its chunk.
  [[nodiscard]] long long Room(long long b) const {
    return b < firstMax ? firstMax - b : kLPCMFurtherChunkMax - (b - firstMax) % kLPCMFurtherChunkMax;
  }
  // File offset at which data byte b is written: the headers of the chunks that
  // start before b are counted, the header of a chunk that b opens is not.
  [[nodiscard]] long long FileOffset(long long b) const {
    long long headers = b > firstMax ? 1 + (b - firstMax - 1) / kLPCMFurtherChunkMax : 0;
    return headerBytes + b + headers * 8;
  }
};

class LSNKPCMFileBase : public LSoundSinkBase {
 public:
  ~LSNKPCMFileBase() override;
  void Seek(long long frame) override;
  // Writes the true sizes, the further data headers and the pad byte.
  void Complete() override;

  const LPCMChunkGeometry& Geometry() const { return geometry_; }

 protected:
  // Opens (creating, never truncating before the header is written) with a shared lock.
  LSNKPCMFileBase(const char* path, std::uint32_t sampleRate, int channels, int bytesPerSample, LWaveHeaderKind kind);
  LSNKPCMFileBase(std::unique_ptr<LByteStream> stream, std::uint32_t sampleRate, int channels, int bytesPerSample,
                  LWaveHeaderKind kind);

  // Writes frames converted frames at the position and advances it.
  void WriteFrames(const unsigned char* bytes, long long frames);
  int BytesPerFrame() const { return bytesPerFrame_; }
  LByteStream* Stream() { return stream_.get(); }

 private:
  void Start(LWaveHeaderKind kind, int channels);
  void WriteHeader(bool provisional);
  bool Put(const void* bytes, long long n);

  std::unique_ptr<LByteStream> stream_;
  LWaveHeaderLayout layout_;
  LPCMChunkGeometry geometry_;
  int bytesPerSample_;
  int bytesPerFrame_;
  bool finished_ = false;
};

template <class Tag>
class LSNKPCMFile : public LSNKPCMFileBase {
 public:
  LSNKPCMFile(const char* path, std::uint32_t sampleRate, int channels, LWaveHeaderKind kind, bool dither = false)
      : LSNKPCMFileBase(path, sampleRate, channels, Tag::kBytes, kind), dither_(dither) {}
  LSNKPCMFile(std::unique_ptr<LByteStream> stream, std::uint32_t sampleRate, int channels, LWaveHeaderKind kind,
              bool dither = false)
      : LSNKPCMFileBase(std::move(stream), sampleRate, channels, Tag::kBytes, kind), dither_(dither) {}

  void Write(const float* in, long long frames) override {
    const int channels = GetChannels();
    while (frames > 0) {
      const long long n = frames < kLFileBufferFrames ? frames : kLFileBufferFrames;
      dither_.ConvertSamplesOut<Tag>(buffer_.data(), in, n, channels);
      WriteFrames(buffer_.data(), n);
      in += n * channels;
      frames -= n;
    }
  }

 private:
  LArray<unsigned char> buffer_ = LArray<unsigned char>(static_cast<size_t>(kLFileBufferFrames * BytesPerFrame()));
  LSoundDither dither_;
};
