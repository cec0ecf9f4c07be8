#pragma once
// Seeking a source whose output depends on what came before (filters, envelope
// followers): it starts that many frames early and reads them away, so that a
// seek and a read give what reading straight through gives, up to the rounding
// of a decayed state.
#include <algorithm>
#include <vector>

#include "effects/sound_process_base.h"

// Frames read away before a seek target: a fifth of a second settles every
// filter and envelope of these effects below the float noise.
inline long long LPrerollFrames(const LSoundSourceBase& source) { return source.GetSampleRate() / 5 + 1; }

// `self` has already cleared its state; this moves its input to `frame` less the
// pre-roll (not before 0) and reads the difference through self.Read.
inline void LSeekWithPreroll(LSoundProcessBase& self, long long frame, long long preroll) {
  const long long start = std::max(0LL, frame - preroll);
  self.LSoundProcessBase::Seek(start);
  const long long channels = self.GetChannels();
  std::vector<float> scratch(static_cast<std::size_t>(std::min(frame - start, 4096LL) * channels) + 1);
  for (long long at = start; at < frame;) {
    const long long n = std::min(frame - at, 4096LL);
    self.Read(scratch.data(), n);
    at += n;
  }
}
