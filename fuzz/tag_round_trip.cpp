#include "tag_round_trip.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <set>
#include <vector>

#include "formats/wav_tag_keys.h"
#include "fuzz_check.h"

namespace {

// What the reader takes of a text chunk, a tail text or an INFO entry at most.
constexpr std::size_t kReadTextMax = 1 << 20;
constexpr std::size_t kUmidMostBytes = 64;
constexpr int kUmidByteMax = 255;
constexpr std::uint64_t kCuePositionMax = 0xFFFFFFFFu;
constexpr char kLevelReferenceKey[] = "LEVELREFERENCE";
constexpr char kUsageSuffix[] = "USAGE";
constexpr char kValueSuffix[] = "VALUE";

bool IsInfoKey(const std::string& key) {
  static const std::set<std::string> keys = [] {
    std::set<std::string> out;
    for (const LWavInfoKey& entry : kLWavInfoKeys) {
      // An INFO id starts with 'I'; the one other entry names the broadcast chunk.
      if (static_cast<char>(entry.id & 0xFF) == 'I') out.insert(entry.key);
    }
    return out;
  }();
  return keys.count(key) != 0;
}

// The field of a key in a table, or nullptr; looked up in a map, since sets of
// thousands of marker keys pass through here. The two tables differ in length,
// so each has a map of its own.
template <std::size_t N>
const LWavField* FieldOf(const LWavField (&table)[N], const std::string& key) {
  static const std::map<std::string, const LWavField*> fields = [&table] {
    std::map<std::string, const LWavField*> out;
    for (const LWavField& field : table) out[field.key] = &field;
    return out;
  }();
  const auto it = fields.find(key);
  return it == fields.end() ? nullptr : it->second;
}

// How a text field comes back: as it is when it is UTF-8, else read as Latin-1.
std::string Decoded(const std::string& bytes) {
  if (FuzzIsUtf8(bytes)) return bytes;
  std::string out;
  for (unsigned char c : bytes) {
    if (c < 0x80) {
      out += static_cast<char>(c);
    } else {
      out += static_cast<char>(0xC0 | (c >> 6));
      out += static_cast<char>(0x80 | (c & 0x3F));
    }
  }
  return out;
}

// The longest head of at most width bytes that does not end inside a character.
std::string CutAt(const std::string& text, std::size_t width) {
  if (text.size() <= width) return text;
  std::size_t n = width;
  while (n > 0 && (static_cast<unsigned char>(text[n]) & 0xC0) == 0x80) --n;
  return text.substr(0, n);
}

// A signed decimal from the first maxChars characters; false when they hold none.
bool NumberOf(const std::string& value, std::size_t maxChars, long long* number) {
  const std::string head = value.substr(0, maxChars);
  char* end = nullptr;
  errno = 0;
  const long long parsed = std::strtoll(head.c_str(), &end, 10);
  if (end == head.c_str() || errno == ERANGE) return false;
  *number = parsed;
  return true;
}

bool EndsWith(const std::string& text, const char* suffix) {
  const std::size_t n = std::strlen(suffix);
  return text.size() >= n && text.compare(text.size() - n, n, suffix) == 0;
}

// A plain list of byte values: decimals of 0 to 255 without leading zeros, separated by commas.
bool IsByteList(const std::string& text, std::vector<int>* values) {
  std::size_t at = 0;
  for (;;) {
    std::size_t digits = 0;
    int value = 0;
    while (at + digits < text.size() && text[at + digits] >= '0' && text[at + digits] <= '9' && digits < 4) {
      value = value * 10 + (text[at + digits] - '0');
      ++digits;
    }
    if (digits == 0 || digits > 3 || value > kUmidByteMax || (digits > 1 && text[at] == '0')) return false;
    if (values) values->push_back(value);
    at += digits;
    if (at == text.size()) return true;
    if (text[at] != ',') return false;
    ++at;
  }
}

// The UMID as it reads back: the first 64 byte values without the zeros at the end.
std::string UmidBack(const std::vector<int>& values) {
  std::size_t used = std::min(values.size(), kUmidMostBytes);
  while (used > 0 && values[used - 1] == 0) --used;
  std::string out;
  for (std::size_t i = 0; i < used; ++i) {
    if (i > 0) out += ',';
    out += std::to_string(values[i]);
  }
  return out;
}

template <std::size_t N>
bool Wanted(const FuzzTagMap& given, const LWavField (&table)[N]) {
  for (const auto& [key, value] : given) {
    const LWavField* field = FieldOf(table, key);
    if (field && field->wantsChunk) return true;
  }
  return false;
}

// The value a field of a written chunk reads back as; empty for none. *loose
// when it cannot be told exactly.
template <std::size_t N>
std::string FieldBack(const LWavField& field, const std::string& value, const FuzzTagMap& given,
                      const LWavField (&table)[N], bool* loose) {
  long long number = 0;
  switch (field.kind) {
    case LWavFieldKind::Text:
      return Decoded(CutAt(value, field.width));
    case LWavFieldKind::Tail:
      return Decoded(value.substr(0, kReadTextMax));
    case LWavFieldKind::Version: {
      const auto stored = static_cast<std::uint16_t>(NumberOf(value, kLWavVersionChars, &number) ? number : 0);
      return stored == 0 ? std::string() : std::to_string(stored);
    }
    case LWavFieldKind::Number: {
      const auto stored = static_cast<std::uint32_t>(NumberOf(value, kLWavNumberChars, &number) ? number : 0);
      bool named = false;
      // A post timer's value reads back even as 0 when its usage is named.
      if (EndsWith(field.key, kValueSuffix)) {
        std::string usage = field.key;
        usage.replace(usage.size() - std::strlen(kValueSuffix), std::strlen(kValueSuffix), kUsageSuffix);
        const auto it = given.find(usage);
        const LWavField* usageField = FieldOf(table, usage);
        named = it != given.end() && usageField && !FieldBack(*usageField, it->second, given, table, loose).empty();
      }
      if (stored == 0 && !named) return {};
      if (std::strcmp(field.key, kLevelReferenceKey) == 0) return std::to_string(static_cast<std::int32_t>(stored));
      return std::to_string(stored);
    }
    case LWavFieldKind::Umid: {
      std::vector<int> values;
      if (!IsByteList(value, &values)) {
        *loose = true;
        return {};
      }
      return UmidBack(values);
    }
  }
  return {};
}

}  // namespace

bool FuzzIsUtf8(const std::string& text) {
  const auto* p = reinterpret_cast<const unsigned char*>(text.data());
  const std::size_t n = text.size();
  for (std::size_t i = 0; i < n;) {
    const unsigned char c = p[i];
    std::size_t length = 0;
    unsigned char low = 0x80;
    unsigned char high = 0xBF;
    if (c < 0x80) {
      ++i;
      continue;
    }
    if (c >= 0xC2 && c <= 0xDF) {
      length = 2;
    } else if (c >= 0xE0 && c <= 0xEF) {
      length = 3;
      if (c == 0xE0) low = 0xA0;
      if (c == 0xED) high = 0x9F;
    } else if (c >= 0xF0 && c <= 0xF4) {
      length = 4;
      if (c == 0xF0) low = 0x90;
      if (c == 0xF4) high = 0x8F;
    } else {
      return false;
    }
    if (i + length > n || p[i + 1] < low || p[i + 1] > high) return false;
    for (std::size_t k = 2; k < length; ++k) {
      if (p[i + k] < 0x80 || p[i + k] > 0xBF) return false;
    }
    i += length;
  }
  return true;
}

FuzzTagMap FuzzTagsAfterWrite(const LFileTagDataAudio& tags, std::uint32_t fileRate, bool* looseUmid) {
  *looseUmid = false;
  FuzzTagMap given;
  for (const LFileTag& tag : tags) {
    if (!tag.value.empty()) given[tag.key] = tag.value;
  }
  const bool bext = Wanted(given, kLWavBextFields);
  const bool cart = Wanted(given, kLWavCartFields);

  FuzzTagMap out;
  for (const auto& [key, value] : given) {
    std::string back;
    if (IsInfoKey(key)) {
      // The INFO list carries the whole text and wins over every narrower field.
      back = Decoded(value.substr(0, kReadTextMax));
    } else if (const LWavField* field = FieldOf(kLWavBextFields, key); field && bext) {
      back = FieldBack(*field, value, given, kLWavBextFields, looseUmid);
    } else if (const LWavField* field = FieldOf(kLWavCartFields, key); field && cart) {
      back = FieldBack(*field, value, given, kLWavCartFields, looseUmid);
    }
    if (!back.empty()) out[key] = back;
  }
  // A post timer whose usage is named reads back with its value, given or not.
  for (const LWavField& field : kLWavCartFields) {
    if (!cart || !EndsWith(field.key, kValueSuffix) || out.count(field.key) != 0) continue;
    const std::string back = FieldBack(field, std::string(), given, kLWavCartFields, looseUmid);
    if (!back.empty()) out[field.key] = back;
  }

  // Markers: sample positions in cue points (milliseconds converted only with a rate of their own),
  // positions past 32 bits left out.
  std::size_t count = 0;
  for (std::uint64_t position : tags.MarkerSamplesGet()) {
    if (position > kCuePositionMax) continue;
    out[LFileTagDataAudio::MarkerPosKey(static_cast<unsigned>(count++))] = std::to_string(position);
  }
  if (count > 0) {
    out[kLTagMarkerCount] = std::to_string(count);
    out[kLTagMarkerPosType] = std::to_string(kLMarkerPosTypeSamples);
    if (fileRate > 0) out[kLTagMarkerSampleRate] = std::to_string(fileRate);
  }
  return out;
}

FuzzTagMap FuzzTagsRead(const LFileTagDataAudio& tags) {
  FuzzTagMap map;
  for (const LFileTag& tag : tags) {
    FuzzCheck(!tag.value.empty(), "a tag read has a value");
    FuzzCheck(FuzzIsUtf8(tag.value), "a tag read is UTF-8");
    FuzzCheck(map.emplace(tag.key, tag.value).second, "a key is read once");
    FuzzCheck(tags.Get(tag.key.c_str()) != nullptr, "a key read is found again");
  }
  return map;
}

void FuzzTagsCheckSame(const FuzzTagMap& read, const FuzzTagMap& expected, bool looseUmid, const char* what) {
  FuzzTagMap a = read;
  FuzzTagMap b = expected;
  if (looseUmid) {
    const auto it = a.find(kFuzzUmidKey);
    FuzzCheck(it == a.end() || IsByteList(it->second, nullptr), "a UMID reads back as a list of byte values");
    a.erase(kFuzzUmidKey);
    b.erase(kFuzzUmidKey);
  }
  if (a == b) return;
  auto shown = [](const std::string& text) { return text.size() > 80 ? text.substr(0, 80) + "..." : text; };
  std::fprintf(stderr, "read:\n");
  for (const auto& [key, value] : a) std::fprintf(stderr, "  %s = %s\n", shown(key).c_str(), shown(value).c_str());
  std::fprintf(stderr, "expected:\n");
  for (const auto& [key, value] : b) std::fprintf(stderr, "  %s = %s\n", shown(key).c_str(), shown(value).c_str());
  FuzzCheck(false, what);
}
