#pragma once
// LId3TagWriter: an ID3v2.4 tag made from the keys of a tag set that ID3 text
// frames carry (title, artist, album, date, comment, track, genre, copyright,
// encoded-by, encoder, album artist). Texts are written as UTF-8 without
// unsynchronisation and without padding.
#include "base/byte_stream.h"
#include "formats/file_tag_data_audio.h"

class LId3TagWriter {
public:
  // True when the set holds a non-empty value for a key that ID3 carries.
  [[nodiscard]] static bool HasFrames(const LFileTagDataAudio& tags);
  // Writes the tag at the stream's offset; answers the bytes written, 0 when
  // the set has nothing for ID3, -1 when the stream took fewer bytes.
  [[nodiscard]] static long long Write(const LFileTagDataAudio& tags, LByteStream& out);
};
