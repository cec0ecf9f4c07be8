#pragma once
// LSDFReaderChunkIterator: walks the chunks of the root container or of one
// container chunk. The loaders' pattern:
//
//   LSDFReaderChunkIterator it(reader);
//   while (it.StartNextChunk()) {
//     switch (it.Id()) {
//       case kMyValue: (void)it.Chunk().ReadInt(value); break;
//       case kMyContainer: { LSDFReaderChunkIterator inner(reader, it.Info()); ... } break;
//       default: break;  // unknown chunks are passed over by length
//     }
//   }
//
// StartNextChunk goes to the end of the current chunk by its length, however much
// of it was read, and reads the next header. Iteration ends at the container's end,
// on a header that does not fit, or on a chunk that reaches beyond its container
// or the stream. Over a chunk that is not a container the iterator yields nothing.
// A container cut short by the end of the stream clears the reader's IsOK() when
// its walk reaches the cut, so a file cut short never reads as complete.
#include "base/sdf_format.h"
#include "base/sdf_reader.h"
#include "base/sdf_reader_chunk.h"

class LSDFReaderChunkIterator {
public:
  explicit LSDFReaderChunkIterator(LSDFReader& reader);
  LSDFReaderChunkIterator(LSDFReader& reader, const LSDFChunkInfo& container);

  // Moves to the next child; false at the end of the container.
  [[nodiscard]] bool StartNextChunk();

  bool IsValid() const { return valid_; }
  const LSDFChunkInfo& Info() const { return info_; }
  unsigned short Id() const { return info_.id; }
  unsigned short Type() const { return info_.type; }
  unsigned long long Length() const { return info_.length; }
  LSDFReaderChunk Chunk() { return LSDFReaderChunk(reader_, info_); }

private:
  void Begin(const LSDFChunkInfo& container);

  LSDFReader& reader_;
  LSDFChunkInfo info_;
  unsigned long long start_ = 0;
  unsigned long long end_ = 0;
  bool valid_ = false;
  bool started_ = false;  // info_ holds a child
  bool cut_ = false;      // the container reaches past the end of the stream
};
