#pragma once
// LWavTagIterator: the WAVE part of the tag reader. It maps INFO ids to keys and
// reads the broadcast (bext), cart, display title (DISP), cue and embedded ID3
// chunks back into the keys that the tag writer takes them from. Cue points
// become marker tags in sample frames ("marker_postype" 1) with the file's
// sample rate as "marker_samplerate". Numbers read back as decimals ("%u", the
// level reference "%d"); a number field that holds 0 gives no tag.
#include <cstdint>

#include "formats/riff_tag_iterator.h"

class LWavTagIterator final : public LRiffTagIterator {
public:
  explicit LWavTagIterator(LByteStream& in) : LRiffTagIterator(in) {}

  [[nodiscard]] const char* MappedKeyGet(std::uint32_t id) const override;

  // The sample rate of the fmt chunk, 0 when the file has none.
  [[nodiscard]] std::uint32_t SampleRate() const { return sampleRate_; }

protected:
  void OtherChunkRead(const LRiffChunk& chunk) override;
  void TagsFinish() override;

private:
  void BextChunkRead(const LRiffChunk& chunk);
  void CartChunkRead(const LRiffChunk& chunk);
  void CueChunkRead(const LRiffChunk& chunk);
  void DispChunkRead(const LRiffChunk& chunk);
  void Id3ChunkRead(const LRiffChunk& chunk);

  std::uint32_t sampleRate_ = 0;
  bool cueRead_ = false;
};
