#pragma once
// LRiffTagWriter: writes a tag set into the tag chunks of a finished RIFF/WAVE
// file. The container-level part lives here: the INFO list, CSET, JUNK, the
// reuse of old tag regions, appending at the end and the RIFF size. A derived
// writer maps keys to chunk ids and supplies every other chunk kind.
//
// The file's old tag chunks are replaced. Those at the end of the file are cut
// off and written anew; an old region in the middle that may be reused
// (OtherChunkIsValidToConvertToJunk) takes the first new chunk that fits it,
// followed by a JUNK chunk over the rest, and every other old tag chunk becomes
// JUNK. Audio and chunks of other kinds are never moved or changed. A file whose
// chunks run past its end (a recording still being written, a truncated copy)
// is refused untouched.
//
// The writer does not own the stream or the tag set; both must outlive it. One
// Write per writer.
#include <cstdint>

#include "base/byte_stream.h"
#include "formats/file_tag_data_audio.h"
#include "formats/riff_chunk_walker.h"
#include "formats/riff_tag_chunk.h"

enum class LRiffTagWriteResult {
  Ok,
  NotRiff,      // the stream holds no RIFF/WAVE container
  Damaged,      // a chunk runs past the end of the file; nothing was written
  WriteFailed,  // a write or seek came up short; some chunks may be missing
};

// The order in which chunk kinds are tried for the room of an old tag chunk:
// the first kind not yet written whose size fits the room takes it.
inline constexpr std::uint32_t kLRiffTagChunkPriority[] = {kLRiffIdCue, kLRiffIdId3, kLRiffIdCart, kLRiffIdBext,
                                                          kLRiffIdList, kLRiffIdCset, kLRiffIdDisp};
// The order in which chunks that found no old region are appended. CSET comes
// before the INFO list so that readers going front to back know the code page
// before they meet the texts.
inline constexpr std::uint32_t kLRiffTagChunkAppendOrder[] = {kLRiffIdCue,  kLRiffIdId3,  kLRiffIdCset, kLRiffIdList,
                                                             kLRiffIdDisp, kLRiffIdBext, kLRiffIdCart};
constexpr int kLRiffTagChunkKinds = 7;

class LRiffTagWriter {
public:
  LRiffTagWriter(LByteStream& out, const LFileTagDataAudio& tags) : out_(out), tags_(tags) {}
  virtual ~LRiffTagWriter() = default;
  LRiffTagWriter(const LRiffTagWriter&) = delete;
  LRiffTagWriter& operator=(const LRiffTagWriter&) = delete;

  // Replaces the file's tag chunks by those of the tag set.
  [[nodiscard]] LRiffTagWriteResult Write();

  // The chunk id that a key's value goes to: an INFO id (which starts with
  // 'I'), the id of another chunk, or kLRiffIdNone.
  [[nodiscard]] virtual std::uint32_t MappedChunkIdGet(const char* key) const = 0;

  // Body size of the chunk of a kind as it will be written; 0 when there is nothing to write.
  [[nodiscard]] unsigned long ChunkSizeGet(std::uint32_t id) const;

  // At the stream's offset lies an old region of space bytes (headers included,
  // even). Writes the first kind by priority that fits: exactly, or with room
  // for a JUNK chunk after it when allowSmaller. False when none was written.
  [[nodiscard]] bool ChunkWriteIfSizeFits(unsigned long space, bool allowSmaller);
  // Writes the chunk of a kind at the stream's offset and marks it done; with
  // allowSmaller a JUNK chunk fills the rest of space.
  [[nodiscard]] bool ChunkWrite(std::uint32_t id, bool allowSmaller, unsigned long space);
  [[nodiscard]] bool INFOChunkWrite();
  // A JUNK chunk of space bytes in all (at least the 8 of its header) at the
  // stream's offset. Its body is cleared so that a removed tag does not linger.
  [[nodiscard]] bool JunkChunkWriteHeader(unsigned long space);
  // Appends every kind that is not done yet at the stream's offset, in
  // kLRiffTagChunkAppendOrder; adds the bytes written (headers included) to *appended.
  [[nodiscard]] bool OtherChunksWriteAtTheEndIfNeeded(long long* appended);
  // Sets the RIFF size to the size of the file when it fits 32 bits, else
  // moves it by delta (files above 4 GB, whose RIFF size covers the first data chunk).
  [[nodiscard]] bool MainHeaderLengthUpdate(long long delta);
  // True when every kind is written or had nothing to write.
  [[nodiscard]] bool AllChunkWriteStatusDone() const;

protected:
  // Gathers what is to be written. The base prepares the INFO list; a derived
  // writer calls it before preparing its own chunks.
  virtual void TagsPrepare();
  [[nodiscard]] virtual unsigned long OtherChunkSizeGet(std::uint32_t id) const;
  // Writes header, body and pad byte of a kind other than INFO and CSET at the stream's offset.
  [[nodiscard]] virtual bool OtherChunkWrite(std::uint32_t id);
  // Whether an old chunk of this id lends its region to the new chunks.
  [[nodiscard]] virtual bool OtherChunkIsValidToConvertToJunk(std::uint32_t id) const;
  // Whether an old chunk is a tag chunk that this writer replaces.
  [[nodiscard]] virtual bool ChunkIsReplaced(const LRiffChunk& chunk) const;

  [[nodiscard]] bool BytesWrite(const void* bytes, long long n);
  [[nodiscard]] bool ChunkHeaderWrite(std::uint32_t id, std::uint32_t size);
  // The pad byte after a body of odd size.
  [[nodiscard]] bool PadWrite(unsigned long size);
  [[nodiscard]] bool ChunkDone(std::uint32_t id) const;
  void ChunkDoneSet(std::uint32_t id);

  LByteStream& out_;
  const LFileTagDataAudio& tags_;

private:
  [[nodiscard]] bool CSETChunkWrite();
  [[nodiscard]] bool InfoEntryIs(const LFileTag& tag) const;
  [[nodiscard]] static int KindIndex(std::uint32_t id);

  unsigned long infoSize_ = 0;
  bool done_[kLRiffTagChunkKinds] = {};
  long long riffOffset_ = 0;
};
