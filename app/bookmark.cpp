#include "app/bookmark.h"

#include <cstdio>

#include "app/frame_time.h"

void LSVBookmark::NameSet(const char* text) { std::snprintf(name, sizeof name, "%s", text ? text : ""); }

void LSVBookmark::SourceFileNameSet(const char* text) {
  std::snprintf(sourceFileName, sizeof sourceFileName, "%s", text ? text : "");
}

void LSVBookmark::PositionSet(long long frames) {
  position = frames;
  MsRecompute();
}

void LSVBookmark::MsRecompute() { positionMs = SVFramesToMs(position, sampleRate); }
