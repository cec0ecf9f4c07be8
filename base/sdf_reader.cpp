#include "base/sdf_reader.h"

#include <algorithm>
#include <climits>
#include <cstring>

LSDFReader::LSDFReader(std::size_t bufferSize) : bufferSize_(std::max<std::size_t>(bufferSize, 1)) {}

bool LSDFReader::Open(LByteStream& stream, unsigned int expectedFileType) {
  Close();
  long long at = stream.Tell();
  long long size = stream.Size();
  if (at < 0 || size < at) return false;
  stream_ = &stream;
  filePos_ = static_cast<unsigned long long>(at);
  streamSize_ = static_cast<unsigned long long>(size);
  // No larger than the file: a small file costs a small buffer.
  buffer_.resize(std::min<unsigned long long>(bufferSize_, streamSize_ - filePos_ + 1));
  ok_ = true;

  unsigned char header[kSDFFileHeaderSize];
  if (Read(header, sizeof header) != sizeof header || std::memcmp(header, kSDFMagic, 4) != 0) {
    Close();
    return false;
  }
  std::memcpy(&formatVersion_, header + 4, 2);
  std::memcpy(&fileType_, header + 6, 4);
  std::memcpy(&dataVersion_, header + 10, 2);
  if (formatVersion_ != kSDFFormatVersion || fileType_ != expectedFileType || !StartNextChunk(root_) ||
      root_.id != kSDFRootChunkId || root_.type != kSDFChunkTypeContainer) {
    Close();
    return false;
  }
  // A file cut short is read up to the cut.
  rootCut_ = root_.length > streamSize_ - root_.dataOffset;
  root_.length = std::min(root_.length, streamSize_ - root_.dataOffset);
  return true;
}

void LSDFReader::Close() {
  stream_ = nullptr;
  ok_ = false;
  rootCut_ = false;
  LArray<unsigned char>().swap(buffer_);
  bufferPos_ = bufferEnd_ = 0;
  filePos_ = 0;
}

bool LSDFReader::StartNextChunk(LSDFChunkInfo& info) {
  if (!ok_) return false;
  unsigned char header[kSDFChunkHeaderSize];
  if (Read(header, sizeof header) != sizeof header) {
    ok_ = false;
    return false;
  }
  std::memcpy(&info.id, header, 2);
  std::memcpy(&info.type, header + 2, 2);
  std::memcpy(&info.length, header + 4, 8);
  info.dataOffset = Position();
  return true;
}

bool LSDFReader::Fill() {
  long long got = stream_->Read(buffer_.data(), static_cast<long long>(buffer_.size()));
  if (got <= 0) return false;
  bufferPos_ = 0;
  bufferEnd_ = static_cast<std::size_t>(got);
  filePos_ += static_cast<unsigned long long>(got);
  return true;
}

unsigned long long LSDFReader::Read(void* buffer, unsigned long long n) {
  if (!stream_) return 0;
  auto* out = static_cast<unsigned char*>(buffer);
  unsigned long long done = 0;
  while (done < n) {
    if (bufferPos_ == bufferEnd_) {
      // A large read bypasses the buffer.
      if (n - done >= buffer_.size()) {
        unsigned long long want = std::min<unsigned long long>(n - done, LLONG_MAX);
        long long got = stream_->Read(out + done, static_cast<long long>(want));
        // The buffer no longer lies just before the stream's position; a seek back must not find it.
        bufferPos_ = bufferEnd_ = 0;
        if (got <= 0) break;
        filePos_ += static_cast<unsigned long long>(got);
        done += static_cast<unsigned long long>(got);
        continue;
      }
      if (!Fill()) break;
    }
    std::size_t take = static_cast<std::size_t>(std::min<unsigned long long>(n - done, bufferEnd_ - bufferPos_));
    std::memcpy(out + done, buffer_.data() + bufferPos_, take);
    bufferPos_ += take;
    done += take;
  }
  return done;
}

bool LSDFReader::SeekTo(unsigned long long offset) {
  if (!stream_) return false;
  unsigned long long bufferStart = filePos_ - bufferEnd_;
  if (offset >= bufferStart && offset <= filePos_) {
    bufferPos_ = static_cast<std::size_t>(offset - bufferStart);
    return true;
  }
  bufferPos_ = bufferEnd_ = 0;
  if (offset > static_cast<unsigned long long>(LLONG_MAX) || !stream_->Seek(static_cast<long long>(offset))) {
    // The stream's position is unknown now; the next seek sets it.
    return false;
  }
  filePos_ = offset;
  return true;
}
