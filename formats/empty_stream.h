#pragma once
// Files that hold a stream's headers and no sound: an Ogg Vorbis or Opus stream
// without one audio page, an MP3 whose frames the LAME tag says are all encoder
// delay and padding. This is what our writers make of nothing, and FFmpeg
// refuses them; they open here as sources of no frames at the stream's rate and
// channel count. Only the first kLEmptyStreamMaxBytes are looked at: a larger
// file is not empty.
#include "base/byte_stream.h"
#include "engine/sound_source.h"
#include "formats/sound_file_info.h"

inline constexpr long long kLEmptyStreamMaxBytes = 1 << 16;

// The empty source, or an error source when the stream is not such a file.
[[nodiscard]] LSoundSource LOpenEmptyStream(LByteStream& stream, LSoundFileInfo* info);
