#pragma once
// Writing a tag set into a finished WAVE file and reading the tags of one: the
// two calls that a document makes when it is saved and opened.
//
// LWavTagsWrite is called after the sound writer has closed the file. It
// replaces the file's tag chunks (INFO, cue, id3, DISP, bext, cart, CSET) by
// those of the set and leaves the audio alone; a file whose chunks run past its
// end is refused untouched. Markers in milliseconds are converted with their own
// "marker_samplerate"; without one their positions are sample frames already.
#include <cstdint>

#include "base/byte_stream.h"
#include "base/string_long.h"
#include "formats/file_tag_data_audio.h"

enum class LWavTagsResult {
  Ok,
  CannotOpen,   // the file cannot be opened (or not locked in time)
  NotWave,      // no RIFF/WAVE container
  Damaged,      // a chunk runs past the end of the file
  WriteFailed,  // a write came up short; some tags may be missing
};

// The German message for a result, with the file's path; empty for Ok.
[[nodiscard]] LStringLong LWavTagsResultMessage(LWavTagsResult result, const char* path);

struct LWavTagsWriteOptions {
  // Embed an ID3 tag beside the RIFF chunks.
  bool id3 = true;
  // Where the ID3 tag is made; empty: the user's temporary folder.
  LStringLong tempFolder;
};

[[nodiscard]] LWavTagsResult LWavTagsWrite(LByteStream& file, const LFileTagDataAudio& tags,
                                           const LWavTagsWriteOptions& options = {});
[[nodiscard]] LWavTagsResult LWavTagsWrite(const char* path, const LFileTagDataAudio& tags,
                                           const LWavTagsWriteOptions& options = {});

// The tags of a WAVE file; *tags is replaced. Damaged tag chunks are read as far as they go.
[[nodiscard]] LWavTagsResult LWavTagsRead(LByteStream& file, LFileTagDataAudio* tags);
[[nodiscard]] LWavTagsResult LWavTagsRead(const char* path, LFileTagDataAudio* tags);
