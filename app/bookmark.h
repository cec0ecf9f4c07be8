#pragma once
// LSVBookmark: a named position in a document. A document keeps its bookmarks
// sorted by position (SVFile::AddBookmark); the project file stores them with
// every field below, and the unknown chunks keep what a newer version wrote.
#include <cstdint>
#include <ctime>

#include "base/list.h"
#include "base/sdf_unknown_chunk.h"
#include "base/string_long.h"

// Handed to the SDF writer with a new bookmark's container. Stored in project files; never change.
inline constexpr std::uint32_t kLSVBookmarkSdfValueNew = 65535;

struct LSVBookmark {
  char name[kLPathMax] = {};
  char sourceFileName[kLPathMax] = {};  // the document's file name, without folder, when made
  std::uint8_t enabled = 1;
  std::time_t creationTime = 0;
  std::int32_t identifier = 0;
  long long position = 0;  // frames
  std::int32_t sampleRate = 0;
  long long positionMs = 0;  // always derived from position and sampleRate
  std::uint32_t sdfValue = kLSVBookmarkSdfValueNew;
  LList<LSDFUnknownChunk> unknownChunks;

  // Both keep at most kLPathMax - 1 bytes.
  void NameSet(const char* text);
  void SourceFileNameSet(const char* text);
  // Moves the bookmark and recomputes its milliseconds.
  void PositionSet(long long frames);
  void MsRecompute();
};
