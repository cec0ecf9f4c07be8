#pragma once
// The ID3v2 text frames that carry tag keys, used both ways by the ID3 writer
// and reader. Frame ids are on disk and must never change.
#include <cstring>

struct LId3FrameKey {
  const char* key;
  const char* frame;    // ID3v2.3 and 2.4
  const char* frame22;  // ID3v2.2
};

// "DATE" is written as TDRC (2.4); TYER of 2.3 tags is read into it as well.
inline constexpr LId3FrameKey kLId3FrameKeys[] = {
    {"TITLE", "TIT2", "TT2"},     {"ARTIST", "TPE1", "TP1"},      {"ALBUMARTIST", "TPE2", "TP2"},
    {"ALBUM", "TALB", "TAL"},     {"DATE", "TDRC", "TYE"},        {"COMMENT", "COMM", "COM"},
    {"TRACKNUMBER", "TRCK", "TRK"}, {"GENRE", "TCON", "TCO"},     {"COPYRIGHT", "TCOP", "TCR"},
    {"ENCODEDBY", "TENC", "TEN"}, {"ENCODER", "TSSE", "TSS"},
};

// The year frame of ID3v2.3, read into "DATE" when no TDRC is there.
inline constexpr char kLId3FrameYear[] = "TYER";
// The comment frame, which has a language and a description before its text.
inline constexpr char kLId3FrameComment[] = "COMM";
inline constexpr char kLId3FrameComment22[] = "COM";

// The frame of a key, or nullptr when ID3 does not carry the key.
[[nodiscard]] inline const char* LId3FrameOfKey(const char* key) {
  if (!key) return nullptr;
  for (const LId3FrameKey& entry : kLId3FrameKeys) {
    if (std::strcmp(entry.key, key) == 0) return entry.frame;
  }
  return nullptr;
}
