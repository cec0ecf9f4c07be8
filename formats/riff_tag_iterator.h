#pragma once
// LRiffTagIterator: reads the tags of a RIFF/WAVE file back into tag keys. The
// container-level part lives here: the chunk walk and the INFO list; a derived
// iterator maps INFO ids to keys and reads every other chunk kind.
//
// A key that several chunks carry keeps the value of the richest source: the
// INFO list first, then the ID3 tag, the display title, the broadcast chunk and
// the cart chunk, whose fields are narrow. Chunks that lie about their sizes
// never make the reader read outside the file or its parent chunk: what can be
// read is read, and the walk ends where the file does.
//
// The iterator does not own the stream, which must outlive it. It only reads.
#include <cstdint>
#include <unordered_map>

#include "base/array.h"
#include "base/byte_stream.h"
#include "formats/file_tag_data_audio.h"
#include "formats/riff_chunk_walker.h"

class LRiffTagIterator {
public:
  explicit LRiffTagIterator(LByteStream& in) : in_(in) {}
  virtual ~LRiffTagIterator() = default;
  LRiffTagIterator(const LRiffTagIterator&) = delete;
  LRiffTagIterator& operator=(const LRiffTagIterator&) = delete;

  // Walks the file and gathers its tags; false when the stream holds no
  // RIFF/WAVE container. Iteration starts at the first tag.
  [[nodiscard]] bool Open();
  // The next tag; false after the last. The pointers stay valid while the iterator lives.
  [[nodiscard]] bool Next(const char** key, const char** value);
  [[nodiscard]] const LFileTagDataAudio& Tags() const { return tags_; }

  // The key of an INFO id, or nullptr when it has none.
  [[nodiscard]] virtual const char* MappedKeyGet(std::uint32_t id) const = 0;

protected:
  // Sources of a tag, best first.
  enum TagRank : int { kRankInfo, kRankId3, kRankDisp, kRankBext, kRankCart, kRankMarker };

  // Reads one top-level chunk other than the INFO list.
  virtual void OtherChunkRead(const LRiffChunk& chunk);
  // Called once after the walk.
  virtual void TagsFinish() {}

  // Keeps a non-empty value unless a better source gave the key already.
  void TagAdd(const char* key, LStringLong value, TagRank rank);
  // Up to maxBytes body bytes from offset from on, never past what the file holds.
  [[nodiscard]] LArray<unsigned char> ChunkBodyRead(const LRiffChunk& chunk, long long from, long long maxBytes);

  LByteStream& in_;
  LFileTagDataAudio tags_;

private:
  void INFOListRead(const LRiffChunk& chunk);

  std::unordered_map<LStringLong, int> ranks_;
  std::size_t next_ = 0;
};
