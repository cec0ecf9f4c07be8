#include "app/wave_levels.h"

#include <algorithm>
#include <sys/stat.h>

#include "engine/cut_list_audio.h"
#include "engine/cut_list_segment.h"
#include "engine/sound_cache_overview.h"

namespace {

// Level-0 records read from a file at a time while the coarse levels are built.
constexpr long long kBuildChunk = 65536;

void MergeInto(LCutListGrfRecord* into, const LCutListGrfRecord* from, int channels) {
  for (int c = 0; c < channels; ++c) {
    into[c].positive = std::max(into[c].positive, from[c].positive);
    into[c].negative = std::max(into[c].negative, from[c].negative);
  }
}

}  // namespace

SVWaveLevels& SVWaveLevels::Instance() {
  static SVWaveLevels levels;
  return levels;
}

SVWaveLevels::SVWaveLevels() {
  // A finished item under a number we know is a different item: forget the old one.
  LSoundCacheAnalyzer analyzer;
  analyzer.change = [this](unsigned short item, unsigned int change) {
    if (change != kLSoundCacheChangeItemAdded) return;
    std::lock_guard<std::mutex> lock(mutex_);
    Forget(item);
  };
  analyzer_ = LSoundCache::Instance().AnalyzerAdd(std::move(analyzer));
}

SVWaveLevels::~SVWaveLevels() { LSoundCache::Instance().AnalyzerRemove(analyzer_); }

void SVWaveLevels::PassBegin() {
  std::lock_guard<std::mutex> lock(mutex_);
  ++pass_;
}

void SVWaveLevels::Clear() {
  std::lock_guard<std::mutex> lock(mutex_);
  items_.clear();
  pages_.clear();
}

void SVWaveLevels::Forget(unsigned short number) {
  items_.erase(number);
  std::erase_if(pages_, [number](const Page& page) { return page.item == number; });
}

std::size_t SVWaveLevels::MemoryBytes() {
  std::lock_guard<std::mutex> lock(mutex_);
  std::size_t bytes = 0;
  for (const auto& [number, item] : items_)
    for (const auto& level : item.levels) bytes += level.size() * sizeof(LCutListGrfRecord);
  return bytes;
}

void SVWaveLevels::MemoryLimitSet(std::size_t bytes) {
  std::lock_guard<std::mutex> lock(mutex_);
  limit_ = bytes;
}

SVWaveLevels::Item* SVWaveLevels::Lookup(const LSoundCacheItemHandle& handle, int channels) {
  const unsigned short number = handle.Number();
  auto it = items_.find(number);
  if (it != items_.end() && it->second.pass == pass_ && it->second.channels == channels) {
    it->second.lastUse = ++clock_;
    return &it->second;
  }
  // Once per pass: is it still the same file, as long as we knew it?
  const LStringLong path = LSoundCache::Instance().FilePath(number, ".grf");
  struct stat st {};
  if (path.empty() || ::stat(path.c_str(), &st) != 0) {
    if (it != items_.end()) Forget(number);
    return nullptr;
  }
  const long long setBytes = static_cast<long long>(channels) * kLSoundCacheOverviewRecordBytes;
  if (it != items_.end()) {
    const Item& known = it->second;
    if (known.channels != channels || known.grfPath != path.c_str() ||
        known.device != static_cast<unsigned long long>(st.st_dev) ||
        known.inode != static_cast<unsigned long long>(st.st_ino) || st.st_size < known.known * setBytes) {
      Forget(number);
      it = items_.end();
    }
  }
  if (it == items_.end()) {
    Item item;
    item.channels = channels;
    item.grfPath = path.c_str();
    item.device = static_cast<unsigned long long>(st.st_dev);
    item.inode = static_cast<unsigned long long>(st.st_ino);
    it = items_.emplace(number, std::move(item)).first;
  }
  it->second.pass = pass_;
  it->second.lastUse = ++clock_;
  return &it->second;
}

bool SVWaveLevels::ReadFile(const LSoundCacheItemHandle& handle, const Item& item, long long first, long long count,
                            std::vector<LCutListGrfRecord>& out) {
  const auto channels = static_cast<std::size_t>(item.channels);
  out.assign(static_cast<std::size_t>(count) * channels, LCutListGrfRecord{});
  const long long available = std::min(count, item.known - first);
  if (available <= 0) return true;
  // A list of one segment that starts on the item's block grid gives the item's records as they are.
  LCutListAudio one;
  one.SetFormat(kLCutListDefaultSampleRate, static_cast<std::uint8_t>(item.channels));
  one.SegmentAppend(LCutListSegment(handle, available * kLSoundCacheOverviewBlockFrames, 1.0f,
                                    first * kLSoundCacheOverviewBlockFrames));
  LArray<LCutListGrfFrame> frames;
  const long long filled = one.GrfBufferGet(frames, 0, available * kLSoundCacheOverviewBlockFrames);
  for (long long i = 0; i < filled; ++i) {
    const LCutListGrfRecord* records = frames[static_cast<std::size_t>(i)].Records();
    std::copy(records, records + channels, out.begin() + static_cast<std::ptrdiff_t>(i * item.channels));
  }
  return filled == available;
}

const SVWaveLevels::Page* SVWaveLevels::PageGet(const LSoundCacheItemHandle& handle, const Item& item, long long index,
                                                long long needed) {
  const unsigned short number = handle.Number();
  auto it = std::find_if(pages_.begin(), pages_.end(),
                         [&](const Page& page) { return page.item == number && page.index == index; });
  if (it != pages_.end() && it->valid >= needed) {
    it->lastUse = ++clock_;
    return &*it;
  }
  if (it == pages_.end()) {
    if (pages_.size() >= kPagesKept)
      it = std::min_element(pages_.begin(), pages_.end(),
                            [](const Page& a, const Page& b) { return a.lastUse < b.lastUse; });
    else
      it = pages_.emplace(pages_.end());
  }
  it->item = number;
  it->index = index;
  it->valid = std::clamp(item.known - index * kPageRecords, 0LL, kPageRecords);
  it->lastUse = ++clock_;
  if (!ReadFile(handle, item, index * kPageRecords, it->valid, it->records)) {
    pages_.erase(it);
    return nullptr;
  }
  return &*it;
}

bool SVWaveLevels::ReadLevel0(const LSoundCacheItemHandle& handle, const Item& item, long long first,
                              long long count, std::vector<LCutListGrfRecord>& out) {
  const int channels = item.channels;
  out.assign(static_cast<std::size_t>(count * channels), LCutListGrfRecord{});
  const long long end = std::min(first + count, item.known);
  for (long long r = first; r < end;) {
    const long long index = r / kPageRecords;
    const long long pageEnd = std::min(end, (index + 1) * kPageRecords);
    const Page* page = PageGet(handle, item, index, pageEnd - index * kPageRecords);
    if (page == nullptr) return false;
    std::copy(page->records.begin() + (r - index * kPageRecords) * channels,
              page->records.begin() + (pageEnd - index * kPageRecords) * channels,
              out.begin() + (r - first) * channels);
    r = pageEnd;
  }
  return true;
}

bool SVWaveLevels::Extend(const LSoundCacheItemHandle& handle, Item& item, long long knownRecords) {
  item.known = std::max(item.known, knownRecords);
  const int channels = item.channels;
  std::vector<LCutListGrfRecord>& level1 = item.levels[0];
  const long long want1 = item.known / kSVWaveLevelFactor;
  std::vector<LCutListGrfRecord> chunk;
  bool ok = true;
  while (item.Sets(1) < want1) {
    const long long first = item.Sets(1);
    const long long sets = std::min(want1 - first, kBuildChunk / kSVWaveLevelFactor);
    if (!ReadFile(handle, item, first * kSVWaveLevelFactor, sets * kSVWaveLevelFactor, chunk)) {
      ok = false;
      break;
    }
    for (long long s = 0; s < sets; ++s) {
      const std::size_t at = level1.size();
      level1.resize(at + static_cast<std::size_t>(channels));
      for (long long r = 0; r < kSVWaveLevelFactor; ++r)
        MergeInto(level1.data() + at, chunk.data() + (s * kSVWaveLevelFactor + r) * channels, channels);
    }
  }
  std::vector<LCutListGrfRecord>& level2 = item.levels[1];
  const long long want2 = item.Sets(1) / kSVWaveLevelFactor;
  while (item.Sets(2) < want2) {
    const long long first = item.Sets(2);
    const std::size_t at = level2.size();
    level2.resize(at + static_cast<std::size_t>(channels));
    for (long long r = 0; r < kSVWaveLevelFactor; ++r)
      MergeInto(level2.data() + at, level1.data() + (first * kSVWaveLevelFactor + r) * channels, channels);
  }
  if (!ok || item.tailsKnown == item.known) return ok;
  // The incomplete sets after the complete ones: the records known so far.
  const auto setSize = static_cast<std::size_t>(channels);
  for (auto& tail : item.tails) tail.clear();
  const long long rest = item.known - item.Sets(1) * kSVWaveLevelFactor;
  if (rest > 0) {
    if (!ReadFile(handle, item, item.Sets(1) * kSVWaveLevelFactor, rest, chunk)) return false;
    item.tails[0].assign(setSize, LCutListGrfRecord{});
    for (long long r = 0; r < rest; ++r) MergeInto(item.tails[0].data(), chunk.data() + r * channels, channels);
  }
  if (item.Sets(1) > item.Sets(2) * kSVWaveLevelFactor || !item.tails[0].empty()) {
    item.tails[1].assign(setSize, LCutListGrfRecord{});
    for (long long s = item.Sets(2) * kSVWaveLevelFactor; s < item.Sets(1); ++s)
      MergeInto(item.tails[1].data(), level1.data() + s * channels, channels);
    if (!item.tails[0].empty()) MergeInto(item.tails[1].data(), item.tails[0].data(), channels);
  }
  item.tailsKnown = item.known;
  return true;
}

bool SVWaveLevels::RecordsLocked(const LSoundCacheItemHandle& handle, Item& item, int level, long long first,
                                 long long count, std::vector<LCutListGrfRecord>& out) {
  if (level == 0) return ReadLevel0(handle, item, first, count, out);
  const int channels = item.channels;
  out.assign(static_cast<std::size_t>(count * channels), LCutListGrfRecord{});
  const long long sets = item.Sets(level);
  const std::vector<LCutListGrfRecord>& kept = item.levels[level - 1];
  const std::vector<LCutListGrfRecord>& tail = item.tails[level - 1];
  for (long long s = first; s < first + count; ++s) {
    const LCutListGrfRecord* from = s < sets ? kept.data() + s * channels
                                    : s == sets && !tail.empty() ? tail.data()
                                                                 : nullptr;
    if (from != nullptr) std::copy_n(from, channels, out.begin() + static_cast<std::ptrdiff_t>((s - first) * channels));
  }
  return true;
}

bool SVWaveLevels::Records(const LSoundCacheItemHandle& handle, int channels, int level, long long first,
                           long long count, long long knownRecords, std::vector<LCutListGrfRecord>& out) {
  out.assign(static_cast<std::size_t>(std::max(count, 0LL) * std::max(channels, 0)), LCutListGrfRecord{});
  if (channels <= 0 || count <= 0 || first < 0 || level < 0 || level >= kSVWaveLevelCount || !handle.IsItem())
    return false;
  std::lock_guard<std::mutex> lock(mutex_);
  Item* item = Lookup(handle, channels);
  if (item == nullptr) return false;
  bool ok = Extend(handle, *item, knownRecords);
  ok = RecordsLocked(handle, *item, level, first, count, out) && ok;
  Trim(handle.Number());
  return ok;
}

void SVWaveLevels::Trim(unsigned short keep) {
  std::size_t bytes = 0;
  for (const auto& [number, item] : items_)
    for (const auto& level : item.levels) bytes += level.size() * sizeof(LCutListGrfRecord);
  while (bytes > limit_ && items_.size() > 1) {
    auto oldest = items_.end();
    for (auto it = items_.begin(); it != items_.end(); ++it)
      if (it->first != keep && (oldest == items_.end() || it->second.lastUse < oldest->second.lastUse)) oldest = it;
    if (oldest == items_.end()) break;
    for (const auto& level : oldest->second.levels) bytes -= level.size() * sizeof(LCutListGrfRecord);
    Forget(oldest->first);
  }
}
