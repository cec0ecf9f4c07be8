#pragma once
// LCutListSegment: one stretch of a cut list, frames [offset, offset + length)
// of one cache item played with a linear gain, or a stretch of silence.
//
// The segment owns one reference to its item through its handle: copying a
// segment takes another, destroying it releases it. So the cache's count of an
// item is the number of live segments naming it (in every cut list, clipboard,
// undo state and open source) plus the references of open sinks.
#include "base/list.h"
#include "engine/cut_list_attachment.h"
#include "engine/mp3_item_attributes.h"
#include "engine/sound_cache_item_handle.h"

class LCutListSegment {
public:
  // Silence of no length.
  LCutListSegment() = default;
  LCutListSegment(LSoundCacheItemHandle itemHandle, long long frames, float segmentGain, long long itemOffset)
      : item(std::move(itemHandle)), length(frames), gain(segmentGain), offset(itemOffset) {}

  [[nodiscard]] static LCutListSegment Silence(long long frames) {
    LCutListSegment segment;
    segment.length = frames;
    return segment;
  }

  // True for silence and for anything that names no item (reads as zeros).
  [[nodiscard]] bool IsSilence() const { return !item.IsItem(); }
  [[nodiscard]] unsigned short ItemNumber() const { return item.Number(); }

  // Shortens a segment over an item decoded from MP3 so that it ends before the
  // encoder's padding. Segments over other items, and silence, stay as they are.
  void SubtractEncoderPadding();

  // The item's MP3 attributes, looked up when first needed.
  LMP3ItemAttributes mp3;
  LSoundCacheItemHandle item{kLSoundCacheItemSilence};
  long long length = 0;  // frames
  float gain = 1.0f;     // exactly 1.0: the samples are used as they are
  long long offset = 0;  // first frame of the item that the segment plays
  LList<LCutListAttachment> attached;
};
