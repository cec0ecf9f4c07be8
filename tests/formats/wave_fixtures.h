#pragma once
// Helpers of the format tests: WAVE bytes built in code, reading a source whole
// or in odd blocks, file bytes, outside tools, and a sparse stream that pretends
// to hold files of many gigabytes.
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "base/byte_stream.h"
#include "engine/sample_format.h"
#include "engine/sound_source.h"
#include "support/file_bytes.h"

using Bytes = std::vector<unsigned char>;

void PutLE16(Bytes& b, std::uint16_t v);
void PutLE32(Bytes& b, std::uint32_t v);
std::uint16_t GetLE16(const Bytes& b, size_t at);
std::uint32_t GetLE32(const Bytes& b, size_t at);

// A chunk: id, size (the body's size unless given) and the body with its pad byte.
Bytes Chunk(const char* id, const Bytes& body, long long sizeField = -1, bool pad = true);
// A fmt body of 16 bytes, or 18 and more with extra bytes after an extra-size field.
Bytes FmtBody(std::uint16_t tag, std::uint16_t channels, std::uint32_t rate, std::uint16_t bits,
              std::uint16_t blockAlign = 0, const Bytes* extra = nullptr);
// "RIFF", size, "WAVE" and the chunks.
Bytes RiffWave(const std::vector<Bytes>& chunks);
// A whole WAVE file of the samples' bytes.
Bytes WaveFile(std::uint16_t tag, std::uint16_t channels, std::uint32_t rate, std::uint16_t bits, const Bytes& data);
// 16-bit little-endian samples of a staircase: value = frame index * channels + channel.
Bytes Staircase16(int frames, int channels);

std::unique_ptr<LByteStream> Memory(const Bytes& bytes);
LSoundSource OpenWave(const Bytes& bytes);

// Reads frames frames from the position on, in one call or in blocks of the given size.
std::vector<float> ReadFrames(LSoundSource& source, long long frames, long long block = 0);

// The samples as they come back after being stored in the sample format Tag.
template <class Tag>
std::vector<float> Quantised(const std::vector<float>& v) {
  std::vector<unsigned char> stored(v.size() * Tag::kBytes);
  std::vector<float> back(v.size());
  ConvertSamplesOut<Tag>(stored.data(), v.data(), static_cast<long long>(v.size()));
  ConvertSamplesIn<Tag>(back.data(), stored.data(), static_cast<long long>(v.size()));
  return back;
}

// True when the program is on the PATH.
bool HaveTool(const char* name);
// Runs a shell command; answers its standard output, and whether it exited with 0.
bool RunTool(const std::string& command, std::string* output = nullptr);

// A stream that keeps only the bytes written to it, in pages; everything else
// reads as zeros. Copies share the bytes, so a test can hand one to a writer
// and read through another.
class SparseStream final : public LByteStream {
 public:
  SparseStream();
  SparseStream(const SparseStream& other) = default;

  long long Read(void* buffer, long long n) override;
  long long Write(const void* buffer, long long n) override;
  bool Seek(long long offset) override;
  long long Tell() override { return pos_; }
  bool Truncate(long long size) override;
  long long Size() override { return data_->size; }

 private:
  static constexpr long long kPage = 1 << 16;
  struct Data {
    std::map<long long, Bytes> pages;
    long long size = 0;
  };
  std::shared_ptr<Data> data_;
  long long pos_ = 0;
};
