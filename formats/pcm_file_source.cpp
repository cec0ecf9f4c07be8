#include "formats/pcm_file_source.h"

#include <algorithm>

#include "formats/little_endian.h"
#include "formats/pcm_file_sink.h"
#include "formats/riff_chunk_walker.h"
#include "formats/riff_tag_chunk.h"
#include "formats/wave_format.h"

namespace {
// What a source without a usable rate falls back to.
constexpr std::uint32_t kFallbackRate = 44100;

// The size of the data chunk whose header stands at at, or false when none does.
bool DataHeaderAt(LByteStream& stream, long long at, std::uint32_t* size) {
  LRiffChunk chunk;
  if (!LRiffChunkHeaderRead(stream, at, &chunk) || chunk.id != kLRiffIdData) return false;
  *size = chunk.size;
  return true;
}

// Where a writer that has not closed puts the header after the chunk that begins extent i.
long long ChunkCapacity(size_t i) { return i == 0 ? kLPCMFirstChunkMax : kLPCMFurtherChunkMax; }

}  // namespace

LSRCPCMFileBase::LSRCPCMFileBase(std::unique_ptr<LByteStream> stream, std::uint32_t sampleRate, int channels,
                                 float maxAmplitude, int bytesPerSample, std::uint32_t dataSize)
    : LSoundSourceBase(sampleRate, static_cast<std::uint8_t>(channels)), stream_(std::move(stream)) {
  SetMaxAmplitude(maxAmplitude);
  if (sampleRate < 1) {
    sampleRate = kFallbackRate;
    SetErrorCode(kLSourceDamaged);
  }
  if (channels < 1 || channels > kLWaveMaxChannels) {
    channels = 1;
    SetErrorCode(kLSourceDamaged);
  }
  SetFormat(sampleRate, static_cast<std::uint8_t>(channels));
  bytesPerFrame_ = channels * bytesPerSample;
  if (bytesPerFrame_ <= 0) {
    bytesPerFrame_ = 2;
    SetErrorCode(kLSourceDamaged);
  }
  if (!stream_ || (dataStart_ = stream_->Tell()) < 0) {
    SetErrorCode(kLSourceCannotOpen);
    stream_.reset();
    dataStart_ = 0;
    frameCount_ = 0;
    return;
  }
  firstDataSize_ = dataSize;
  frameCount_ = ScanExtents(dataSize);
}

long long LSRCPCMFileBase::ScanExtents(std::uint32_t firstDataSize) const {
  extents_.clear();
  std::uint32_t size = 0;
  long long first = firstDataSize;
  // A writer still at work (or killed) has put its next header where its chunk
  // geometry says, not where the provisional size points.
  if (firstDataSize >= kLWaveProvisionalDataSize && DataHeaderAt(*stream_, dataStart_ + kLPCMFirstChunkMax, &size)) {
    first = kLPCMFirstChunkMax;
  }
  extents_.push_back({dataStart_, dataStart_ + first});
  long long total = first;
  bool unknown = false;
  long long at = dataStart_ + static_cast<long long>(LRiffPadded(static_cast<std::uint64_t>(first)));
  while (DataHeaderAt(*stream_, at, &size)) {
    at += kLRiffChunkHeaderBytes;
    if (size == 0) {
      // A chunk that its writer has not sized yet: full unless it is the one being written.
      std::uint32_t next = 0;
      if (!DataHeaderAt(*stream_, at + kLPCMFurtherChunkMax, &next)) {
        unknown = true;
        extents_.push_back({at, at});
        break;
      }
      size = kLPCMFurtherChunkMax;
    }
    extents_.push_back({at, at + size});
    total += size;
    // An odd chunk is followed by its pad byte, as in the walk that found the first.
    at += static_cast<long long>(LRiffPadded(size));
  }
  streamAt_ = -1;
  if (unknown || (firstDataSize >= kLWaveProvisionalDataSize && extents_.size() == 1)) return -1;
  return total / bytesPerFrame_;
}

long long LSRCPCMFileBase::GetEndSample() const {
  if (frameCount_ >= 0) return frameCount_;
  if (!stream_) return 0;
  // The writer puts the true size in front of the data when it closes.
  std::uint32_t dataSize = firstDataSize_;
  unsigned char size[4];
  if (dataStart_ >= 4 && stream_->Seek(dataStart_ - 4) && stream_->ReadAll(size, sizeof size)) dataSize = LGetLE32(size);
  const long long count = ScanExtents(dataSize);
  if (count >= 0) return frameCount_ = count;
  // The chunks found so far, the last as far as the file reaches; their headers are not samples.
  long long bytes = 0;
  for (size_t i = 0; i + 1 < extents_.size(); ++i) bytes += extents_[i].end - extents_[i].begin;
  bytes += std::max(0LL, stream_->Size() - extents_.back().begin);
  return bytes / bytesPerFrame_;
}

long long LSRCPCMFileBase::ReadFrames(unsigned char* dst, long long at, long long frames) {
  if (!stream_) return 0;
  if (frameCount_ >= 0) {
    if (at >= frameCount_) return 0;
    frames = std::min(frames, frameCount_ - at);
  }
  const long long want = frames * bytesPerFrame_;
  long long got = 0;
  while (got < want) {
    // The extent holding data byte at * bytesPerFrame_ + got; while the length is
    // unknown the last extent reaches as far as the file does.
    const bool known = frameCount_ >= 0;
    long long skip = at * bytesPerFrame_ + got;
    size_t i = 0;
    for (; i < extents_.size(); ++i) {
      long long length = extents_[i].end - extents_[i].begin;
      if (skip < length || (!known && i + 1 == extents_.size())) break;
      skip -= length;
    }
    if (i == extents_.size()) break;
    const long long fileAt = extents_[i].begin + skip;
    long long n = want - got;
    if (known || i + 1 < extents_.size()) {
      n = std::min(n, extents_[i].end - fileAt);
    } else {
      // A growing file gets its next chunk header here once the writer gets so far.
      const long long mark = extents_[i].begin + ChunkCapacity(i);
      if (fileAt < mark) {
        n = std::min(n, mark - fileAt);
      } else if (fileAt == mark) {
        const size_t before = extents_.size();
        (void)GetEndSample();
        if (extents_.size() != before || frameCount_ >= 0) continue;
      }
    }
    if (n <= 0) break;
    if (streamAt_ != fileAt && !stream_->Seek(fileAt)) {
      streamAt_ = -1;
      break;
    }
    long long r = stream_->Read(dst + got, n);
    if (r <= 0) {
      streamAt_ = -1;
      break;
    }
    got += r;
    streamAt_ = fileAt + r;
    if (r < n) break;
  }
  return got / bytesPerFrame_;
}

void LSRCPCMFileBase::ReadConverted(float* out, long long frames, unsigned char* buffer, ConvertIn convert) {
  const int channels = GetChannels();
  LReadInSteps(out, frames, channels, position_, [&](float* to, long long at, long long n) {
    long long got = ReadFrames(buffer, at, n);
    convert(to, buffer, got * channels);
    return got;
  });
}
