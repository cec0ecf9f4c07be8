#pragma once
// SVRegion: a named range of the project, with its own cut list. The project
// keeps the list of regions (SVProject); every undo snapshot of a document
// copies it. Positions are kept twice, in frames and in milliseconds: the
// milliseconds survive a change of sample rate, the frames are recomputed.
#include <cstdint>

#include "base/list.h"
#include "base/sdf_unknown_chunk.h"
#include "base/string_long.h"
#include "engine/cut_list_audio.h"

struct SVRegion {
  char name[kLPathMax] = {};
  char sourceFileName[kLPathMax] = {};  // as in a bookmark
  long long start = 0;                  // frames
  long long end = 0;
  std::int32_t sampleRate = 0;
  long long startMs = 0;
  long long endMs = 0;
  std::int32_t value = 0;  // the further value projects store with the region
  LCutListAudio cutList;
  LList<LSDFUnknownChunk> unknownChunks;
  LList<LSDFUnknownChunk> cutListUnknownChunks;  // kept from the cut list's container in a project file

  // Both keep at most kLPathMax - 1 bytes.
  void NameSet(const char* text);
  void SourceFileNameSet(const char* text);
  // Sets the range in frames at a rate and derives the milliseconds.
  void RangeSet(long long startFrames, long long endFrames, std::int32_t rate);
  // A new rate recomputes the frame positions from the milliseconds.
  void SampleRateSet(std::int32_t rate);
  // Moves the end to start + frames and recomputes its milliseconds.
  void LengthSet(long long frames);
  [[nodiscard]] long long Length() const { return end - start; }
};

using SVRegionList = LList<SVRegion>;
