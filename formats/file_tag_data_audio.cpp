#include "formats/file_tag_data_audio.h"

#include <cerrno>
#include <cstdlib>
#include <string>

namespace {

constexpr unsigned kMillisecondsPerSecond = 1000;

bool IsBlank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }

}  // namespace

std::uint64_t LMarkerMsToSamples(std::uint64_t ms, std::uint32_t sampleRate) {
  return (ms / kMillisecondsPerSecond) * sampleRate + ((ms % kMillisecondsPerSecond) * sampleRate) / kMillisecondsPerSecond;
}

bool LTagValueNumberGet(const char* value, long long* number) {
  if (!value) return false;
  while (IsBlank(*value)) ++value;
  if (!*value) return false;
  char* end = nullptr;
  errno = 0;
  const long long parsed = std::strtoll(value, &end, 10);
  if (end == value || errno == ERANGE) return false;
  while (IsBlank(*end)) ++end;
  if (*end) return false;
  *number = parsed;
  return true;
}

long long LFileTagDataAudio::Find(const char* key) const {
  if (!key) return -1;
  auto it = index_.find(key);
  return it == index_.end() ? -1 : static_cast<long long>(it->second);
}

const char* LFileTagDataAudio::Get(const char* key) const {
  const long long at = Find(key);
  return at < 0 ? nullptr : tags_[static_cast<std::size_t>(at)].value.c_str();
}

void LFileTagDataAudio::Set(const char* key, const char* value) {
  if (!key) return;
  if (!value) value = "";
  const long long at = Find(key);
  if (at >= 0) {
    tags_[static_cast<std::size_t>(at)].value = value;
    return;
  }
  index_.emplace(key, tags_.size());
  tags_.push_back(LFileTag{key, value});
}

void LFileTagDataAudio::SetNumber(const char* key, long long value) { Set(key, std::to_string(value).c_str()); }

bool LFileTagDataAudio::Remove(const char* key) {
  const long long at = Find(key);
  if (at < 0) return false;
  index_.erase(tags_[static_cast<std::size_t>(at)].key);
  tags_.erase(tags_.begin() + at);
  for (std::size_t i = static_cast<std::size_t>(at); i < tags_.size(); ++i) index_[tags_[i].key] = i;
  return true;
}

void LFileTagDataAudio::Clear() {
  tags_.clear();
  index_.clear();
}

bool LFileTagDataAudio::operator==(const LFileTagDataAudio& other) const {
  if (tags_.size() != other.tags_.size()) return false;
  for (std::size_t i = 0; i < tags_.size(); ++i) {
    if (tags_[i].key != other.tags_[i].key || tags_[i].value != other.tags_[i].value) return false;
  }
  return true;
}

LStringLong LFileTagDataAudio::MarkerPosKey(unsigned index) {
  return "marker_" + std::to_string(index) + "_pos";
}

unsigned LFileTagDataAudio::MarkerCount() const {
  long long count = 0;
  if (!LTagValueNumberGet(Get(kLTagMarkerCount), &count) || count <= 0) return 0;
  // A count beyond the keys there are cannot name positions; it must not drive long loops.
  if (static_cast<unsigned long long>(count) > tags_.size()) count = static_cast<long long>(tags_.size());
  return static_cast<unsigned>(count);
}

bool LFileTagDataAudio::MarkersAreMs() const {
  long long type = -1;
  long long rate = 0;
  return LTagValueNumberGet(Get(kLTagMarkerPosType), &type) && type == kLMarkerPosTypeMs &&
         LTagValueNumberGet(Get(kLTagMarkerSampleRate), &rate) && rate >= 1;
}

LArray<std::uint64_t> LFileTagDataAudio::MarkerSamplesGet() const {
  LArray<std::uint64_t> samples;
  const unsigned count = MarkerCount();
  const bool ms = MarkersAreMs();
  long long rate = 0;
  if (ms && !LTagValueNumberGet(Get(kLTagMarkerSampleRate), &rate)) rate = 0;
  for (unsigned i = 0; i < count; ++i) {
    long long pos = 0;
    if (!LTagValueNumberGet(Get(MarkerPosKey(i).c_str()), &pos) || pos < 0) continue;
    const auto at = static_cast<std::uint64_t>(pos);
    samples.push_back(ms ? LMarkerMsToSamples(at, static_cast<std::uint32_t>(rate)) : at);
  }
  return samples;
}

void LFileTagDataAudio::MarkersConvertToSamples() {
  const LArray<std::uint64_t> samples = MarkerSamplesGet();
  const unsigned count = MarkerCount();
  for (unsigned i = 0; i < count; ++i) Remove(MarkerPosKey(i).c_str());
  for (unsigned i = 0; i < samples.size(); ++i) SetNumber(MarkerPosKey(i).c_str(), static_cast<long long>(samples[i]));
  SetNumber(kLTagMarkerCount, static_cast<long long>(samples.size()));
  SetNumber(kLTagMarkerPosType, kLMarkerPosTypeSamples);
}

void LFileTagDataAudio::MarkerAddMs(std::uint64_t ms, std::uint32_t sampleRate) {
  const unsigned count = MarkerCount();
  long long rate = 0;
  const bool sameUnit = count == 0 || (MarkersAreMs() && LTagValueNumberGet(Get(kLTagMarkerSampleRate), &rate) &&
                                       rate == static_cast<long long>(sampleRate));
  if (sameUnit && sampleRate >= 1) {
    SetNumber(kLTagMarkerPosType, kLMarkerPosTypeMs);
    SetNumber(kLTagMarkerSampleRate, sampleRate);
    SetNumber(MarkerPosKey(count).c_str(), static_cast<long long>(ms));
    SetNumber(kLTagMarkerCount, count + 1);
    return;
  }
  MarkerAddSample(LMarkerMsToSamples(ms, sampleRate));
}

void LFileTagDataAudio::MarkerAddSample(std::uint64_t sample) {
  if (MarkerCount() > 0 && MarkersAreMs()) MarkersConvertToSamples();
  const unsigned count = MarkerCount();
  SetNumber(kLTagMarkerPosType, kLMarkerPosTypeSamples);
  SetNumber(MarkerPosKey(count).c_str(), static_cast<long long>(sample));
  SetNumber(kLTagMarkerCount, count + 1);
}

void LFileTagDataAudio::MarkersClear() {
  const unsigned count = MarkerCount();
  for (unsigned i = 0; i < count; ++i) Remove(MarkerPosKey(i).c_str());
  Remove(kLTagMarkerCount);
  Remove(kLTagMarkerPosType);
  Remove(kLTagMarkerSampleRate);
}
