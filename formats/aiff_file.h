#pragma once
// LAiffFile: AIFF and AIFF-C files, read and written on our own code.
//
// The reader takes uncompressed AIFF (big-endian PCM of 1 to 32 bits) and the
// simple AIFF-C kinds: NONE/twos, sowt (little-endian PCM), in24/in32, fl32/FL32
// and fl64/FL64 (big-endian float), ulaw/ULAW and alaw/ALAW, raw (unsigned
// 8-bit). Other compressions answer code 7 with the codec named in the info, so
// the caller can try another decoder. Chunks may come in any order; a file whose
// sound data chunk runs past its end (a writer that never finished) reads as far
// as its data go. Names, authors, copyright, annotations and markers become tags.
//
// The writer makes AIFF with big-endian PCM of 8, 16, 24 or 32 bits, the rate as
// an 80-bit extended float, the tags that AIFF carries (NAME, AUTH, "(c) ",
// ANNO) and the sizes made final when the sink is destroyed.
#include <cstddef>
#include <cstdint>
#include <memory>

#include "base/byte_stream.h"
#include "engine/sound_sink.h"
#include "engine/sound_source.h"
#include "formats/file_tag_data_audio.h"
#include "formats/sound_file_info.h"

struct LAiffFileFormat {
  std::uint32_t sampleRate = 44100;
  std::uint8_t channels = 2;
  std::uint16_t bitsPerSample = 16;  // 8, 16, 24 or 32; others are taken up to the next of these
};

class LAiffFile {
public:
  [[nodiscard]] static LSoundSource OpenSource(const char* path, LSoundFileInfo* info = nullptr);
  [[nodiscard]] static LSoundSource OpenSource(std::unique_ptr<LByteStream> stream, LSoundFileInfo* info = nullptr);

  [[nodiscard]] static LSoundSink OpenSink(const char* path, const LAiffFileFormat& format,
                                           const LFileTagDataAudio* tags = nullptr);
  [[nodiscard]] static LSoundSink OpenSink(std::unique_ptr<LByteStream> stream, const LAiffFileFormat& format,
                                           const LFileTagDataAudio* tags = nullptr);

  // True when the bytes open an AIFF or AIFF-C file ("FORM", size, "AIFF" or "AIFC").
  [[nodiscard]] static bool IsAiff(const unsigned char* head, std::size_t n);
};
