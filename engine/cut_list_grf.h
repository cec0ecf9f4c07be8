#pragma once
// LCutListGrfFrame: one frame of a cut list's peak overview, the record of
// every channel for 256 frames of audio, each record the two peak codes of a
// cache item's ".grf" (see sound_cache_overview.h). LCutListAudio::GrfBufferGet
// fills arrays of them for the waveform view.
//
// Mono and stereo frames keep their records inline; more channels go to the heap.
#include <cstdint>

#include "base/array.h"

struct LCutListGrfRecord {
  std::uint16_t positive = 0;  // code of the largest sample of the block, 0 if none was above 0
  std::uint16_t negative = 0;  // code of the magnitude of the smallest, 0 if none was below 0
};

class LCutListGrfFrame {
public:
  // Sets the channel count; records are kept where the count allows, new ones are 0.
  void ChannelsSet(int channels);
  [[nodiscard]] int Channels() const { return channels_; }

  [[nodiscard]] LCutListGrfRecord* Records() { return channels_ > kInline ? more_.data() : inline_; }
  [[nodiscard]] const LCutListGrfRecord* Records() const { return channels_ > kInline ? more_.data() : inline_; }
  [[nodiscard]] LCutListGrfRecord& operator[](int channel) { return Records()[channel]; }
  [[nodiscard]] const LCutListGrfRecord& operator[](int channel) const { return Records()[channel]; }

  void Clear();

private:
  static constexpr int kInline = 2;
  int channels_ = 0;
  LCutListGrfRecord inline_[kInline];
  LArray<LCutListGrfRecord> more_;
};
