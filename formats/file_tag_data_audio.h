#pragma once
// LFileTagDataAudio: the tags of a sound file, an ordered set of text keys and
// values ("TITLE", "ARTIST", "COMMENT", ...) together with the marker keys that
// carry marker positions ("marker_count", "marker_%u_pos", "marker_postype",
// "marker_samplerate"). A format writes the keys it can carry and ignores the
// others, so one set travels unchanged between formats.
//
// Keys compare exactly (the marker keys are lower case on purpose). Setting a
// key that is there replaces its value in place; a new key goes to the end, so
// the order in which tags were read is the order in which they are written.
// Values are UTF-8. One thread at a time.
#include <cstddef>
#include <cstdint>
#include <unordered_map>

#include "base/array.h"
#include "base/string_long.h"

// Marker keys. Marker i (from 0) has its position in "marker_<i>_pos".
inline constexpr char kLTagMarkerCount[] = "marker_count";
inline constexpr char kLTagMarkerPosType[] = "marker_postype";
inline constexpr char kLTagMarkerSampleRate[] = "marker_samplerate";

// Values of "marker_postype": positions in milliseconds (converted with
// "marker_samplerate") or in sample frames.
constexpr int kLMarkerPosTypeMs = 0;
constexpr int kLMarkerPosTypeSamples = 1;

struct LFileTag {
  LStringLong key;
  LStringLong value;
};

class LFileTagDataAudio {
public:
  using const_iterator = LArray<LFileTag>::const_iterator;

  // The value of a key, or nullptr when the set does not hold it. The pointer
  // stays valid until the set is changed.
  [[nodiscard]] const char* Get(const char* key) const;
  [[nodiscard]] bool Has(const char* key) const { return Find(key) >= 0; }
  void Set(const char* key, const char* value);
  void SetNumber(const char* key, long long value);
  // True when the key was there.
  bool Remove(const char* key);
  void Clear();

  [[nodiscard]] std::size_t Count() const { return tags_.size(); }
  [[nodiscard]] bool Empty() const { return tags_.empty(); }
  [[nodiscard]] const LFileTag& At(std::size_t index) const { return tags_[index]; }
  [[nodiscard]] const_iterator begin() const { return tags_.begin(); }
  [[nodiscard]] const_iterator end() const { return tags_.end(); }

  // Same keys with the same values in the same order.
  [[nodiscard]] bool operator==(const LFileTagDataAudio& other) const;

  // Markers. A set keeps all its markers in one unit: adding a marker in the
  // other unit first turns the ones there into sample positions.
  [[nodiscard]] unsigned MarkerCount() const;
  // A marker at ms milliseconds of a sound at sampleRate frames per second.
  void MarkerAddMs(std::uint64_t ms, std::uint32_t sampleRate);
  void MarkerAddSample(std::uint64_t sample);
  // The markers as sample positions, in the order of their numbers; markers
  // whose position key is missing or not a number are left out.
  [[nodiscard]] LArray<std::uint64_t> MarkerSamplesGet() const;
  // Removes every marker key.
  void MarkersClear();

  // The name of marker i's position key.
  [[nodiscard]] static LStringLong MarkerPosKey(unsigned index);

private:
  [[nodiscard]] long long Find(const char* key) const;
  [[nodiscard]] bool MarkersAreMs() const;
  void MarkersConvertToSamples();

  LArray<LFileTag> tags_;
  std::unordered_map<LStringLong, std::size_t> index_;
};

// Milliseconds to sample frames in integer arithmetic, split at whole seconds
// so that long positions do not overflow.
[[nodiscard]] std::uint64_t LMarkerMsToSamples(std::uint64_t ms, std::uint32_t sampleRate);

// A tag value read as a whole decimal number (leading and trailing blanks
// allowed); false when it is none.
[[nodiscard]] bool LTagValueNumberGet(const char* value, long long* number);
