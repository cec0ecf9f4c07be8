#include "base/sdf_reader_chunk_iterator.h"

#include <algorithm>

LSDFReaderChunkIterator::LSDFReaderChunkIterator(LSDFReader& reader) : reader_(reader) {
  Begin(reader.RootInfo());
  cut_ = reader.RootIsCut();
}

LSDFReaderChunkIterator::LSDFReaderChunkIterator(LSDFReader& reader, const LSDFChunkInfo& container)
    : reader_(reader) {
  Begin(container);
}

void LSDFReaderChunkIterator::Begin(const LSDFChunkInfo& container) {
  if (!reader_.IsOK() || container.type != kSDFChunkTypeContainer) return;
  unsigned long long size = reader_.StreamSize();
  if (container.dataOffset > size) return;
  start_ = container.dataOffset;
  cut_ = container.length > size - start_;
  end_ = start_ + std::min(container.length, size - start_);
  valid_ = reader_.SeekTo(start_);
}

bool LSDFReaderChunkIterator::StartNextChunk() {
  if (!valid_ || !reader_.IsOK()) return false;
  // Every step moves at least one header forward, so the walk always ends.
  unsigned long long at = started_ ? info_.dataOffset + info_.length : start_;
  if (end_ - at < kSDFChunkHeaderSize || !reader_.SeekTo(at) || !reader_.StartNextChunk(info_) ||
      info_.length > end_ - info_.dataOffset) {
    // Stopping short of the container's end because the stream ended is a short read.
    if (cut_) reader_.ShortReadSet();
    valid_ = false;
    return false;
  }
  info_.index = started_ ? info_.index + 1 : 0;
  started_ = true;
  return true;
}
