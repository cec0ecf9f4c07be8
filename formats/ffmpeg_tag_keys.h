#pragma once
// Tag keys between our tag sets ("TITLE", "ALBUMARTIST", "TRACKNUMBER", ...) and
// the generic keys that FFmpeg reads into and writes from ("title",
// "album_artist", "track", ...). Keys without a counterpart keep their name, in
// upper case towards us and in lower case towards FFmpeg; the marker keys never
// go to FFmpeg.
#include <string>

[[nodiscard]] std::string LTagKeyFromFFmpeg(const char* key);
// Empty for keys that a file written through FFmpeg does not carry.
[[nodiscard]] std::string LTagKeyToFFmpeg(const char* key);
