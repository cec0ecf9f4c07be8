#include "formats/raw_data_sink.h"

#include "base/file_stream.h"
#include "base/platform_file.h"

namespace {
constexpr int kMaxChannels = 255;
}

LRawFileDataSoundSinkBase::LRawFileDataSoundSinkBase(const char* path, std::uint32_t sampleRate, int channels,
                                                     int bytesPerSample, LRawFileHeader header)
    : LSoundSinkBase(sampleRate, static_cast<std::uint8_t>(channels)),
      header_(std::move(header)),
      bytesPerSample_(bytesPerSample) {
  int fd = LFileOpen(path, kLFileWrite | kLFileCreate | kLFileNonBlock, LFileLock::Shared, 0, 0666);
  if (fd >= 0) stream_ = std::make_unique<LFileStream>(fd);
  Start(channels);
}

LRawFileDataSoundSinkBase::LRawFileDataSoundSinkBase(std::unique_ptr<LByteStream> stream, std::uint32_t sampleRate,
                                                     int channels, int bytesPerSample, LRawFileHeader header)
    : LSoundSinkBase(sampleRate, static_cast<std::uint8_t>(channels)),
      stream_(std::move(stream)),
      header_(std::move(header)),
      bytesPerSample_(bytesPerSample) {
  Start(channels);
}

void LRawFileDataSoundSinkBase::Start(int channels) {
  if (channels < 1 || channels > kMaxChannels) {
    channels = 1;
    SetError();
  }
  SetFormat(GetSampleRate(), static_cast<std::uint8_t>(channels));
  bytesPerFrame_ = bytesPerSample_ * channels;
  if (!stream_) {
    SetError();
    return;
  }
  const long long headerBytes = WriteHeader();
  if (!stream_->Truncate(headerBytes)) SetError();
}

long long LRawFileDataSoundSinkBase::WriteHeader() {
  if (!header_) return 0;
  LArray<unsigned char> bytes = header_(GetSampleRate(), GetChannels(), GetPosition());
  if (!stream_->Seek(0) || !stream_->WriteAll(bytes.data(), static_cast<long long>(bytes.size()))) SetError();
  return static_cast<long long>(bytes.size());
}

void LRawFileDataSoundSinkBase::WriteFrames(const unsigned char* bytes, long long frames) {
  if (finished_ || !stream_ || !stream_->WriteAll(bytes, frames * bytesPerFrame_)) SetError();
  AdvancePosition(frames);
}

LRawFileDataSoundSinkBase::~LRawFileDataSoundSinkBase() { Complete(); }

void LRawFileDataSoundSinkBase::Complete() {
  if (finished_) return;
  finished_ = true;
  if (!stream_ || !header_) return;
  const long long dataEnd = WriteHeader() + GetPosition() * bytesPerFrame_;
  if ((GetPosition() * bytesPerFrame_) & 1) {
    const unsigned char pad = 0;
    if (!stream_->Seek(dataEnd) || !stream_->WriteAll(&pad, 1)) SetError();
  }
}
