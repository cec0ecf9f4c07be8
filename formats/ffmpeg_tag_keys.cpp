#include "formats/ffmpeg_tag_keys.h"

#include <cctype>
#include <cstring>
#include <strings.h>

namespace {

struct KeyPair {
  const char* ours;
  const char* ffmpeg;
};

constexpr KeyPair kKeys[] = {
    {"TITLE", "title"},       {"ARTIST", "artist"},       {"ALBUMARTIST", "album_artist"}, {"ALBUM", "album"},
    {"DATE", "date"},         {"COMMENT", "comment"},     {"TRACKNUMBER", "track"},        {"DISCNUMBER", "disc"},
    {"GENRE", "genre"},       {"COPYRIGHT", "copyright"}, {"ENCODEDBY", "encoded_by"},     {"ENCODER", "encoder"},
    {"COMPOSER", "composer"}, {"PERFORMER", "performer"}, {"PUBLISHER", "publisher"},      {"LANGUAGE", "language"},
};

}  // namespace

std::string LTagKeyFromFFmpeg(const char* key) {
  for (const auto& k : kKeys) {
    if (strcasecmp(key, k.ffmpeg) == 0) return k.ours;
  }
  std::string out = key;
  for (char& c : out) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  return out;
}

std::string LTagKeyToFFmpeg(const char* key) {
  if (std::strncmp(key, "marker_", 7) == 0) return {};
  for (const auto& k : kKeys) {
    if (strcasecmp(key, k.ours) == 0) return k.ffmpeg;
  }
  std::string out = key;
  for (char& c : out) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return out;
}
