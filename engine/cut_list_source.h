#pragma once
// LCutListAudioSource: reads a cut list from start to end, what
// LCutListAudio::OpenSource hands out. It holds copies of the list's segments
// (and so references to their items), so the list may be edited, or go,
// while the source is read; it keeps reading what the list held when opened.
//
// Item segments read their item's ".aud" straight into the caller's buffer,
// scaled by the segment's gain unless that is exactly 1.0 (then bit for bit).
// Silence segments, missing item files and frames outside the data read as
// zeros. One Read crosses any number of segment boundaries.
#include <cstddef>
#include <memory>
#include <vector>

#include "base/file_stream.h"
#include "engine/cut_list_audio.h"
#include "engine/sound_source.h"

class LCutListAudioSource final : public LSoundSourceBase {
public:
  explicit LCutListAudioSource(const LCutListAudio& list);

  void Read(float* buffer, long long frames) override;
  long long GetPositionSample() const override { return position_; }
  long long GetEndSample() const override { return end_; }
  void Seek(long long frame) override;

  [[nodiscard]] std::size_t SegmentCount() const { return segments_.size(); }

private:
  // Reads frames [within, within + frames) of segment index into out.
  void SegmentRead(std::size_t index, long long within, float* out, long long frames);
  // The item's ".aud", opened when first needed and kept while the item stays the same.
  LFileStream* ItemFile(unsigned short item);

  std::vector<LCutListSegment> segments_;
  std::vector<long long> starts_;  // position of each segment in the list
  long long end_ = 0;
  long long position_ = 0;
  std::size_t current_ = 0;  // the segment at or before position_
  long long bytesPerFrame_;

  unsigned short fileItem_ = kLSoundCacheItemNone;
  std::unique_ptr<LFileStream> file_;
  long long filePosition_ = -1;  // byte offset of file_, -1 when unknown
};
