#include "formats/block_wave_sink.h"

#include <algorithm>

#include "base/file_stream.h"
#include "base/platform_file.h"
#include "engine/sample_format.h"

namespace {
constexpr std::uint32_t kMaxSize32 = 0xFFFFFFFFu;
}

LBlockWaveSinkBase::LBlockWaveSinkBase(const char* path, const LWaveHeaderLayout& layout)
    : LSoundSinkBase(layout.sampleRate, 1), layout_(layout) {
  int fd = LFileOpen(path, kLFileWrite | kLFileCreate | kLFileNonBlock, LFileLock::Shared, 0, 0666);
  if (fd >= 0) stream_ = std::make_unique<LFileStream>(fd);
  Start();
}

LBlockWaveSinkBase::LBlockWaveSinkBase(std::unique_ptr<LByteStream> stream, const LWaveHeaderLayout& layout)
    : LSoundSinkBase(layout.sampleRate, 1), stream_(std::move(stream)), layout_(layout) {
  Start();
}

void LBlockWaveSinkBase::Start() {
  layout_.channels = 1;
  pending_.resize(std::max<size_t>(1, layout_.samplesPerBlock));
  block_.resize(std::max<size_t>(1, layout_.blockAlign));
  headerBytes_ = LWaveHeaderBytes(layout_);
  if (!stream_) {
    SetError();
    return;
  }
  WriteHeader(true);
  if (!stream_->Truncate(headerBytes_)) SetError();
}

void LBlockWaveSinkBase::WriteHeader(bool provisional) {
  unsigned char header[kLWaveHeaderMaxBytes];
  // A data size of all ones tells readers to take the length from the file size.
  std::uint32_t data = kMaxSize32;
  std::uint32_t riff = kMaxSize32;
  std::uint32_t frames = 0;
  if (!provisional) {
    data = static_cast<std::uint32_t>(std::min<long long>(dataBytes_, kMaxSize32 - (headerBytes_ - 8)));
    riff = data + static_cast<std::uint32_t>(headerBytes_ - 8);
    frames = static_cast<std::uint32_t>(std::min<long long>(GetPosition(), kMaxSize32));
  }
  LWaveHeaderMake(layout_, riff, data, frames, header);
  if (!stream_->Seek(0) || !stream_->WriteAll(header, headerBytes_)) SetError();
}

void LBlockWaveSinkBase::Flush() {
  if (pendingCount_ == 0) return;
  const int bytes =
      std::clamp(EncodeBlock(pending_.data(), pendingCount_, block_.data()), 0, static_cast<int>(block_.size()));
  pendingCount_ = 0;
  if (!stream_ || !stream_->WriteAll(block_.data(), bytes)) SetError();
  dataBytes_ += bytes;
}

void LBlockWaveSinkBase::Write(const float* in, long long frames) {
  if (finished_) {
    if (frames > 0) SetError();
    return;
  }
  const int perBlock = static_cast<int>(pending_.size());
  while (frames > 0) {
    const int n = static_cast<int>(std::min<long long>(frames, perBlock - pendingCount_));
    ConvertSamplesOut<LSF16>(pending_.data() + pendingCount_, in, n);
    pendingCount_ += n;
    in += n;
    frames -= n;
    AdvancePosition(n);
    if (pendingCount_ == perBlock) Flush();
  }
}

void LBlockWaveSinkBase::Finish() {
  if (finished_) return;
  finished_ = true;
  Flush();
  if (!stream_) return;
  WriteHeader(false);
  if (dataBytes_ & 1) {
    const unsigned char pad = 0;
    if (!stream_->Seek(headerBytes_ + dataBytes_) || !stream_->WriteAll(&pad, 1)) SetError();
  }
  stream_.reset();
}
