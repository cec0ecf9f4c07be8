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
  // Names the region in this process so that an undo finds it in a list other
  // documents changed since; 0 until a change needs it. Never stored.
  std::uint64_t id = 0;

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

// A fresh region id, never 0.
[[nodiscard]] std::uint64_t SVRegionIdNew();

// What one undoable step did to the project's region list: a region added
// (after only), deleted (before only) or changed (both). Regions are shared by
// all documents, so Undo and Redo replay just this change on the list as it is
// now instead of putting a whole old list back over other documents' work.
struct SVRegionChange {
  std::uint64_t id = 0;  // 0: the step left the regions alone
  std::size_t index = 0;  // the region's place in the list
  bool hasBefore = false;
  bool hasAfter = false;
  SVRegion before;
  SVRegion after;

  [[nodiscard]] bool IsEmpty() const { return id == 0; }
  // Puts the list back as it was before the step (Undo) or after it (Redo).
  void Revert(SVRegionList& regions) const { Replay(regions, hasBefore, before); }
  void Apply(SVRegionList& regions) const { Replay(regions, hasAfter, after); }

private:
  // Makes the region with id in regions what to is, or takes it out.
  void Replay(SVRegionList& regions, bool present, const SVRegion& to) const;
};
