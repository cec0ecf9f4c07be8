#include "app/project_chunk_walk.h"

SVChunkWalk::SVChunkWalk(LSDFReader& reader) : reader_(reader), iterator_(reader) {
  const LSDFChunkInfo& root = reader.RootInfo();
  end_ = walked_ = root.dataOffset;
  end_ += root.length;
  // The reader cuts the root to what the stream holds; a whole file has its trailer after it.
  fits_ = reader.IsOK() && end_ + kSDFTrailerSize <= reader.StreamSize();
}

SVChunkWalk::SVChunkWalk(LSDFReader& reader, const LSDFChunkInfo& container)
    : reader_(reader), iterator_(reader, container) {
  end_ = walked_ = container.dataOffset;
  fits_ = iterator_.IsValid() && container.length <= reader.StreamSize() - container.dataOffset;
  if (fits_) end_ += container.length;
}

bool SVChunkWalk::Next() {
  if (!iterator_.StartNextChunk()) return false;
  walked_ = iterator_.Info().dataOffset + iterator_.Info().length;
  return true;
}

bool SVChunkWalk::IsComplete() const { return fits_ && reader_.IsOK() && walked_ == end_; }
