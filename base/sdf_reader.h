#pragma once
// LSDFReader: opens an SDF file on a byte stream and reads it through its own
// buffer. Chunks are walked with LSDFReaderChunkIterator and read through
// LSDFReaderChunk; the reader itself offers the buffered byte access they share.
//
// Damaged input never crashes the reader nor makes it allocate more than the
// stream holds: every length is checked against its container's end and the
// stream's size before anything is read or allocated for it.
#include <cstddef>

#include "base/array.h"
#include "base/byte_stream.h"
#include "base/sdf_format.h"

// Default size of the read buffer.
inline constexpr std::size_t kSDFReadBufferSize = 64 * 1024;

class LSDFReader {
public:
  explicit LSDFReader(std::size_t bufferSize = kSDFReadBufferSize);
  LSDFReader(const LSDFReader&) = delete;
  LSDFReader& operator=(const LSDFReader&) = delete;

  // Reads the header at the stream's current position and requires the magic,
  // format version 1, exactly `expectedFileType` and a root container with id 0.
  // The data version is stored unchecked: it is the file type owner's business.
  // The stream must know its size and outlive the reader's use.
  [[nodiscard]] bool Open(LByteStream& stream, unsigned int expectedFileType);
  void Close();

  // Reads the 12-byte chunk header at the current position. A short read clears
  // IsOK(). The index is left for the iterator to set.
  [[nodiscard]] bool StartNextChunk(LSDFChunkInfo& info);

  bool IsOK() const { return ok_; }
  unsigned short FormatVersion() const { return formatVersion_; }
  unsigned int FileType() const { return fileType_; }
  unsigned short DataVersion() const { return dataVersion_; }
  // The root container; its length is cut to what the stream holds.
  const LSDFChunkInfo& RootInfo() const { return root_; }
  // True when the root claims more than the stream holds: the file was cut short.
  bool RootIsCut() const { return rootCut_; }
  // A walk that met the end of the stream inside a container: clears IsOK().
  void ShortReadSet() { ok_ = false; }
  // The stream's size when opened; no chunk reaches beyond it.
  unsigned long long StreamSize() const { return streamSize_; }

  // Buffered access. The position is the stream's less the bytes buffered and not
  // yet consumed. Read answers the bytes read (fewer at the end of the stream).
  unsigned long long Position() const { return filePos_ - (bufferEnd_ - bufferPos_); }
  [[nodiscard]] unsigned long long Read(void* buffer, unsigned long long n);
  // Moves within the buffer when the target is in it; otherwise one seek of the
  // stream that drops the buffer, so skipped data is never read.
  [[nodiscard]] bool SeekTo(unsigned long long offset);

private:
  bool Fill();

  LByteStream* stream_ = nullptr;
  bool ok_ = false;
  unsigned short formatVersion_ = 0;
  unsigned int fileType_ = 0;
  unsigned short dataVersion_ = 0;
  LSDFChunkInfo root_;
  bool rootCut_ = false;
  unsigned long long streamSize_ = 0;

  std::size_t bufferSize_;
  LArray<unsigned char> buffer_;
  std::size_t bufferPos_ = 0;
  std::size_t bufferEnd_ = 0;
  unsigned long long filePos_ = 0;  // the stream's own position
};
