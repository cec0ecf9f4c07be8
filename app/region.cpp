#include "app/region.h"

#include <cstdio>

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
