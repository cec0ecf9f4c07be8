#pragma once
// LWavTagWriter: the WAVE part of the tag writer. It maps keys to INFO ids and
// supplies the cue list of the markers, the embedded ID3 tag, the display title
// (DISP), the broadcast description (bext) and the cart chunk.
//
// The ID3 tag is made in a temporary file inside the given folder and copied
// into the "id3 " chunk; the file is deleted once it has been copied, and at
// the latest when the writer is destroyed.
#include <cstdint>

#include "base/array.h"
#include "base/string_long.h"
#include "formats/riff_tag_writer.h"

class LWavTagWriter final : public LRiffTagWriter {
public:
  // tempFolder: where the ID3 tag is made (empty: the user's temporary folder);
  // id3: whether an ID3 tag is embedded at all.
  LWavTagWriter(LByteStream& out, const LFileTagDataAudio& tags, LStringLong tempFolder = {}, bool id3 = true);
  ~LWavTagWriter() override;

  [[nodiscard]] std::uint32_t MappedChunkIdGet(const char* key) const override;
  // True for the keys that a WAVE file carries: those of INFO, bext and cart.
  [[nodiscard]] static bool TagFieldIsValid(const char* key);
  // Stores one tag into the prepared DISP, bext and cart bodies.
  void OtherChunkTagsPrepare(const char* key, const char* value);

  // The prepared bodies, for inspection.
  [[nodiscard]] const LArray<unsigned char>& BextBody() const { return bext_; }
  [[nodiscard]] const LArray<unsigned char>& CartBody() const { return cart_; }
  [[nodiscard]] bool BextWanted() const { return bextWanted_; }
  [[nodiscard]] bool CartWanted() const { return cartWanted_; }

protected:
  void TagsPrepare() override;
  [[nodiscard]] unsigned long OtherChunkSizeGet(std::uint32_t id) const override;
  [[nodiscard]] bool OtherChunkWrite(std::uint32_t id) override;
  [[nodiscard]] bool OtherChunkIsValidToConvertToJunk(std::uint32_t id) const override;
  [[nodiscard]] bool ChunkIsReplaced(const LRiffChunk& chunk) const override;

private:
  [[nodiscard]] bool CUEChunkWrite();
  [[nodiscard]] bool ID3ChunkWrite();
  [[nodiscard]] bool DISPChunkWrite();
  [[nodiscard]] bool BWFChunkWrite();
  [[nodiscard]] bool CARTChunkWrite();
  [[nodiscard]] bool BodyChunkWrite(std::uint32_t id, const LArray<unsigned char>& body);
  void Id3Prepare();
  void Id3TempDelete();

  LStringLong tempFolder_;
  bool id3Enabled_;
  LArray<unsigned char> disp_;
  LArray<unsigned char> bext_;
  LArray<unsigned char> cart_;
  bool bextWanted_ = false;
  bool cartWanted_ = false;
  LArray<std::uint32_t> cuePositions_;
  unsigned long id3Size_ = 0;
  LStringLong id3Path_;
};
