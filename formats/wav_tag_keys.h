#pragma once
// Where the tag keys of a WAVE file live: the INFO ids, the fields of the
// broadcast ("bext") chunk and the fields of the cart chunk. The tables are read
// both ways, by the tag writer and by the tag reader. Ids, offsets and widths
// are on disk and must never change.
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "formats/riff_tag_chunk.h"

struct LWavInfoKey {
  const char* key;
  std::uint32_t id;
};

// "ENCODEDBY" goes to ISRC and "ALBUMARTIST" to ISTR on purpose: files written
// earlier carry them there. "BWFVERSION" names a chunk, not an INFO id.
inline constexpr LWavInfoKey kLWavInfoKeys[] = {
    {"TITLE", LRiffId("INAM")},       {"ARTIST", LRiffId("IART")},   {"ALBUMARTIST", LRiffId("ISTR")},
    {"ALBUM", LRiffId("IPRD")},       {"DATE", LRiffId("ICRD")},     {"COMMENT", LRiffId("ICMT")},
    {"TRACKNUMBER", LRiffId("ITRK")}, {"GENRE", LRiffId("IGNR")},    {"COPYRIGHT", LRiffId("ICOP")},
    {"ENCODEDBY", LRiffId("ISRC")},   {"ENCODER", LRiffId("ISFT")},  {"CATEGORY", LRiffId("ISBJ")},
    {"BWFVERSION", kLRiffIdBext},
};

enum class LWavFieldKind {
  Text,     // copied without a terminator, cut at the width
  Number,   // 32-bit little-endian from a signed decimal of at most 11 characters
  Version,  // 16-bit little-endian from a decimal of at most 6 characters
  Umid,     // bytes from a comma-separated list of decimal byte values
  Tail,     // the text after the fixed part; it sets the chunk's size
};

struct LWavField {
  const char* key;
  unsigned offset;
  unsigned width;
  LWavFieldKind kind;
  // Whether the key asks for its chunk by itself (ordinary tags only fill fields).
  bool wantsChunk;
};

// Characters of a value that a number field reads.
constexpr std::size_t kLWavNumberChars = 11;
constexpr std::size_t kLWavVersionChars = 6;

// Broadcast chunk. "COMMENT" and "DATE" are ordinary tags that every file may
// carry in INFO: they fill the fields but do not by themselves make a bext chunk.
inline constexpr LWavField kLWavBextFields[] = {
    {"COMMENT", 0, 256, LWavFieldKind::Text, false},
    {"ORIGINATOR", 256, 32, LWavFieldKind::Text, true},
    {"REFERENCE", 288, 32, LWavFieldKind::Text, true},
    {"DATE", 320, 10, LWavFieldKind::Text, false},
    {"TIME", 330, 8, LWavFieldKind::Text, true},
    {"TIMEREFLOW", 338, 4, LWavFieldKind::Number, true},
    {"TIMEREFHIGH", 342, 4, LWavFieldKind::Number, true},
    {"BWFVERSION", 346, 2, LWavFieldKind::Version, true},
    {"UMID", 348, 64, LWavFieldKind::Umid, true},
    {"CODINGHISTORY", kLBextFixedBytes, 0, LWavFieldKind::Tail, true},
};

// Cart chunk. Title, artist, category, encoder, date, time and URL are ordinary
// tags: deliberately, they fill their fields but never cause a cart chunk.
inline constexpr LWavField kLWavCartFields[] = {
    {"CARTVERSION", 0, 4, LWavFieldKind::Text, true},
    {"TITLE", 4, 64, LWavFieldKind::Text, false},
    {"ARTIST", 68, 64, LWavFieldKind::Text, false},
    {"CUTID", 132, 64, LWavFieldKind::Text, true},
    {"CLIENTID", 196, 64, LWavFieldKind::Text, true},
    {"CATEGORY", 260, 64, LWavFieldKind::Text, false},
    {"CLASSIFICATION", 324, 64, LWavFieldKind::Text, true},
    {"OUTCUE", 388, 64, LWavFieldKind::Text, true},
    {"DATE", 452, 10, LWavFieldKind::Text, false},
    {"TIME", 462, 8, LWavFieldKind::Text, false},
    {"ENDDATE", 470, 10, LWavFieldKind::Text, true},
    {"ENDTIME", 480, 8, LWavFieldKind::Text, true},
    {"ENCODEDBY", 488, 64, LWavFieldKind::Text, false},
    {"PRODUCERAPPVERSION", 552, 64, LWavFieldKind::Text, true},
    {"USERDEF", 616, 64, LWavFieldKind::Text, true},
    {"LEVELREFERENCE", 680, 4, LWavFieldKind::Number, true},
    {"POSTTIMER1USAGE", 684, 4, LWavFieldKind::Text, true},
    {"POSTTIMER1VALUE", 688, 4, LWavFieldKind::Number, true},
    {"POSTTIMER2USAGE", 692, 4, LWavFieldKind::Text, true},
    {"POSTTIMER2VALUE", 696, 4, LWavFieldKind::Number, true},
    {"POSTTIMER3USAGE", 700, 4, LWavFieldKind::Text, true},
    {"POSTTIMER3VALUE", 704, 4, LWavFieldKind::Number, true},
    {"POSTTIMER4USAGE", 708, 4, LWavFieldKind::Text, true},
    {"POSTTIMER4VALUE", 712, 4, LWavFieldKind::Number, true},
    {"POSTTIMER5USAGE", 716, 4, LWavFieldKind::Text, true},
    {"POSTTIMER5VALUE", 720, 4, LWavFieldKind::Number, true},
    {"POSTTIMER6USAGE", 724, 4, LWavFieldKind::Text, true},
    {"POSTTIMER6VALUE", 728, 4, LWavFieldKind::Number, true},
    {"POSTTIMER7USAGE", 732, 4, LWavFieldKind::Text, true},
    {"POSTTIMER7VALUE", 736, 4, LWavFieldKind::Number, true},
    {"POSTTIMER8USAGE", 740, 4, LWavFieldKind::Text, true},
    {"POSTTIMER8VALUE", 744, 4, LWavFieldKind::Number, true},
    {"URL", 1024, 1024, LWavFieldKind::Text, false},
    {"TAGTEXT", kLCartFixedBytes, 0, LWavFieldKind::Tail, true},
};

// The field of a key in a table, or nullptr.
template <std::size_t N>
[[nodiscard]] const LWavField* LWavFieldFind(const LWavField (&table)[N], const char* key) {
  if (!key) return nullptr;
  for (const LWavField& field : table) {
    if (std::strcmp(field.key, key) == 0) return &field;
  }
  return nullptr;
}

// Text of a value that a number field reads, and the signed 64-bit value; false
// when the characters do not start with a decimal number.
[[nodiscard]] bool LWavNumberFieldParse(const char* value, std::size_t maxChars, long long* number);
