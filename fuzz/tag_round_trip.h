#pragma once
// What the two tag targets share: the tags that a WAVE file reads back as after
// the tag writer wrote a tag set into it, worked out key by key from where each
// key goes (INFO list, broadcast and cart fields, cue points) and how wide its
// field is; and the checks that every value read is well-formed UTF-8.
#include <cstdint>
#include <map>
#include <string>

#include "formats/file_tag_data_audio.h"

using FuzzTagMap = std::map<std::string, std::string>;

// Keys whose read-back value is not worked out exactly (a UMID that is not a
// plain list of byte values): present or not, a value read must be a list.
inline constexpr char kFuzzUmidKey[] = "UMID";

// The tags read back after LWavTagsWrite(file, tags) into a file whose fmt chunk
// gives fileRate (0: none). *looseUmid is set when the UMID's value read back may
// be anything of the right form (or nothing).
[[nodiscard]] FuzzTagMap FuzzTagsAfterWrite(const LFileTagDataAudio& tags, std::uint32_t fileRate, bool* looseUmid);

// The read tags as a map; aborts when a key comes twice or a value is empty or not UTF-8.
[[nodiscard]] FuzzTagMap FuzzTagsRead(const LFileTagDataAudio& tags);

// Aborts, printing both sets, when read does not hold exactly the tags expected.
void FuzzTagsCheckSame(const FuzzTagMap& read, const FuzzTagMap& expected, bool looseUmid, const char* what);

// True for well-formed UTF-8 (no overlong forms, surrogates or values past U+10FFFF).
[[nodiscard]] bool FuzzIsUtf8(const std::string& text);
