#pragma once
// LId3TagReader: the text frames of an ID3v2.2, 2.3 or 2.4 tag turned back into
// tag keys. Damaged tags are read as far as they make sense: a frame that runs
// past the tag ends the reading, compressed and encrypted frames are skipped.
#include <cstddef>

#include "base/array.h"
#include "formats/file_tag_data_audio.h"

class LId3TagReader {
public:
  // The tags of the ID3 tag that starts at bytes[0], in the order of its frames,
  // each key once (the first frame wins). Empty when the bytes hold no tag.
  [[nodiscard]] static LArray<LFileTag> Read(const unsigned char* bytes, std::size_t length);
};
