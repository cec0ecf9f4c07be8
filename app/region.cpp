#include "app/region.h"

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <iterator>

#include "app/frame_time.h"

void SVRegion::NameSet(const char* text) { std::snprintf(name, sizeof name, "%s", text ? text : ""); }

void SVRegion::SourceFileNameSet(const char* text) {
  std::snprintf(sourceFileName, sizeof sourceFileName, "%s", text ? text : "");
}

void SVRegion::RangeSet(long long startFrames, long long endFrames, std::int32_t rate) {
  start = startFrames;
  end = endFrames;
  sampleRate = rate;
  startMs = SVFramesToMs(start, sampleRate);
  endMs = SVFramesToMs(end, sampleRate);
}

void SVRegion::SampleRateSet(std::int32_t rate) {
  sampleRate = rate;
  start = SVMsToFrames(startMs, sampleRate);
  end = SVMsToFrames(endMs, sampleRate);
}

void SVRegion::LengthSet(long long frames) {
  end = start + frames;
  endMs = SVFramesToMs(end, sampleRate);
}

std::uint64_t SVRegionIdNew() {
  static std::atomic<std::uint64_t> last{0};
  return ++last;
}

void SVRegionChange::Replay(SVRegionList& regions, bool present, const SVRegion& to) const {
  if (id == 0) return;
  auto it = regions.begin();
  while (it != regions.end() && it->id != id) ++it;
  if (!present) {
    if (it != regions.end()) regions.erase(it);
    return;
  }
  if (it != regions.end()) {
    *it = to;
    return;
  }
  // Back in its old place, or at the end when the list has since grown shorter.
  auto at = regions.begin();
  std::advance(at, static_cast<std::ptrdiff_t>(std::min(index, regions.size())));
  regions.insert(at, to);
}
