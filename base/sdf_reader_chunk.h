#pragma once
// LSDFReaderChunk: the view of one chunk through which its data is read. Reads go
// on from where the last one stopped and never pass the chunk's end, so a chunk
// shorter than the value asked for gives a short read, never the next header.
// A chunk need not be read to its end: the iterator moves to the next header.
#include "base/array.h"
#include "base/list.h"
#include "base/sdf_format.h"
#include "base/sdf_reader.h"
#include "base/sdf_unknown_chunk.h"
#include "base/string_long.h"

// Capacity of the buffer that ReadString(char*) fills.
inline constexpr unsigned long long kSDFStringBufferSize = 1560;

class LSDFReaderChunk {
public:
  LSDFReaderChunk(LSDFReader& reader, const LSDFChunkInfo& info) : reader_(reader), info_(info) {}

  const LSDFChunkInfo& Info() const { return info_; }
  // Bytes of data not yet read.
  unsigned long long Remaining() const;

  // Up to `size` bytes; answers how many were read.
  [[nodiscard]] unsigned long long ReadData(void* buffer, unsigned long long size);
  // The rest of the data (all of it when nothing was read yet).
  [[nodiscard]] bool ReadData(LArray<unsigned char>& data);

  // A value read with the width the consumer expects (1, 4 or 8 bytes), whatever
  // the chunk's type. When the chunk is shorter, the bytes that arrived replace
  // the value's first bytes, the others keep theirs, and the answer is false.
  [[nodiscard]] bool ReadBool(bool& value);  // non-zero is true
  [[nodiscard]] bool ReadInt(int& value);
  [[nodiscard]] bool ReadInt64(long long& value);
  [[nodiscard]] bool ReadFloat(float& value);

  // Copies the first min(length, 1560) bytes of the data into `buffer`, which
  // must hold kSDFStringBufferSize bytes, and passes over the rest. A string of
  // more than 1559 characters is cut and its copy carries no terminator.
  [[nodiscard]] bool ReadString(char* buffer);
  // The string up to its terminating zero, however long.
  [[nodiscard]] bool ReadString(LStringLong& value);

  // Appends the whole chunk (id, type, data, index) to `list` to be written back later.
  [[nodiscard]] bool ReadUnknownChunk(LList<LSDFUnknownChunk>& list);

private:
  bool ReadValue(void* value, unsigned long long size);

  LSDFReader& reader_;
  LSDFChunkInfo info_;
};
