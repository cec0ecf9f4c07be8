#pragma once
// LSDFWriter: writes an SDF file to a byte stream as it goes. Each chunk's header
// is written with length 0 and the length is patched in when the chunk ends, so
// nothing is held in memory but the stack of open chunks.
//
// The writer latches its first failure (short write, failed seek, stream that
// cannot tell its position): from then on every call does nothing and answers
// false, and the file is left without a trailer. Callers may therefore write a
// run of chunks and look at IsOK() (or any single result) once.
//
// Preserved chunks: a container read from a newer build may hold chunks that this
// build does not know. Handing them to StartContainer puts them back: those that
// stood first stay first, one that stood between known chunks is written before
// the first chunk whose `order` is larger than its index as read, and the rest
// go at the container's end. Ordinary writes pass kSDFNoOrder. The preserved list
// must outlive the container (the root's list: until Close).
#include "base/array.h"
#include "base/byte_stream.h"
#include "base/list.h"
#include "base/sdf_format.h"
#include "base/sdf_unknown_chunk.h"

class LSDFWriter {
public:
  LSDFWriter() = default;
  LSDFWriter(const LSDFWriter&) = delete;
  LSDFWriter& operator=(const LSDFWriter&) = delete;

  // Writes the file header at the stream's current position (a rewrite truncates
  // the stream first) and starts the root container. The stream must outlive the writer's use.
  [[nodiscard]] bool Open(LByteStream& stream, unsigned int fileType, unsigned short dataVersion);
  [[nodiscard]] bool Open(LByteStream& stream, unsigned int fileType, unsigned short dataVersion,
                          const LList<LSDFUnknownChunk>& rootUnknown);
  // Ends every open chunk and the root container, writes the trailer and leaves
  // the writer closed. Answers true when the writer had already failed or was
  // never opened: deliberate, callers that care check their writes.
  bool Close();

  bool StartChunk(unsigned short id, unsigned short type, int order = kSDFNoOrder);
  // Ends the innermost open chunk; the id is not compared with it.
  bool EndChunk(unsigned short id);
  bool StartContainer(unsigned short id, int order = kSDFNoOrder);
  bool StartContainer(unsigned short id, const LList<LSDFUnknownChunk>& preserved, int order = kSDFNoOrder);
  // Writes the preserved chunks still pending, then ends the container.
  bool EndContainer(unsigned short id);

  // One complete value chunk each.
  bool WriteBool(unsigned short id, bool value, int order = kSDFNoOrder);
  bool WriteInt(unsigned short id, int value, int order = kSDFNoOrder);
  bool WriteInt64(unsigned short id, long long value, int order = kSDFNoOrder);
  bool WriteFloat(unsigned short id, float value, int order = kSDFNoOrder);
  // The string and its terminating zero; null writes an empty string.
  bool WriteString(unsigned short id, const char* value, int order = kSDFNoOrder);
  // Always written without a position: the order is ignored, deliberately.
  bool WriteBlob(unsigned short id, const unsigned char* data, unsigned long long size, int order = kSDFNoOrder);
  // Raw bytes into the chunk that is open (blobs written in pieces, records).
  bool WriteData(const void* data, unsigned long long size);
  // Writes the chunk at its index as read; one with empty data is dropped, by design.
  bool WriteUnknownChunk(const LSDFUnknownChunk& chunk);

  // True from a successful Open until the first failure or Close.
  bool IsOK() const { return ok_; }
  unsigned short DataVersion() const { return dataVersion_; }

private:
  struct OpenChunk {
    unsigned short id;
    unsigned short type;
    long long dataOffset;
    const LList<LSDFUnknownChunk>* preserved;  // null for a value chunk
    LList<LSDFUnknownChunk>::const_iterator pending;
  };

  bool Fail();
  bool Put(const void* data, unsigned long long size);
  bool HasPending(std::size_t level) const;
  bool WritePendingBefore(std::size_t level, int order);
  bool WriteAllPending(std::size_t level);

  LByteStream* stream_ = nullptr;
  bool ok_ = false;
  unsigned short dataVersion_ = 0;
  LArray<OpenChunk> open_;  // innermost last
};
