#pragma once
// SVChunkWalk: walks the chunks of one container of a project file, as
// LSDFReaderChunkIterator does, and tells afterwards whether the walk reached
// the container's end or stopped at damage (a chunk reaching beyond it, a file
// cut short, a missing trailer after the root container).
#include "base/sdf_format.h"
#include "base/sdf_reader.h"
#include "base/sdf_reader_chunk.h"
#include "base/sdf_reader_chunk_iterator.h"

class SVChunkWalk {
public:
  // The root container.
  explicit SVChunkWalk(LSDFReader& reader);
  SVChunkWalk(LSDFReader& reader, const LSDFChunkInfo& container);

  // Moves to the next child; false at the end of the container or at damage.
  [[nodiscard]] bool Next();

  [[nodiscard]] const LSDFChunkInfo& Info() const { return iterator_.Info(); }
  [[nodiscard]] unsigned short Id() const { return iterator_.Id(); }
  [[nodiscard]] unsigned short Type() const { return iterator_.Type(); }
  [[nodiscard]] LSDFReaderChunk Chunk() { return iterator_.Chunk(); }

  // After Next answered false: true when every byte of the container was walked.
  [[nodiscard]] bool IsComplete() const;

private:
  LSDFReader& reader_;
  LSDFReaderChunkIterator iterator_;
  unsigned long long end_ = 0;   // where the container ends by its header
  unsigned long long walked_ = 0;  // where the last child ended
  bool fits_ = false;            // the container and, for the root, the trailer lie in the stream
};
