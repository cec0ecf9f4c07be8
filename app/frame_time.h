#pragma once
// Conversions between frame positions and milliseconds that bookmarks, regions
// and the channel-length check share. Both are done in 64-bit integers in two
// parts, so long files do not overflow and the same frames always give the same
// milliseconds (projects store both and compare them).
#include <string>

// (frames / rate) * 1000 + ((frames mod rate) * 1000) / rate; 0 when rate <= 0.
[[nodiscard]] constexpr long long SVFramesToMs(long long frames, long long rate) {
  if (rate <= 0) return 0;
  return (frames / rate) * 1000 + ((frames % rate) * 1000) / rate;
}

// (ms / 1000) * rate + ((ms mod 1000) * rate) / 1000.
[[nodiscard]] constexpr long long SVMsToFrames(long long ms, long long rate) {
  return (ms / 1000) * rate + ((ms % 1000) * rate) / 1000;
}

// A position as the user reads it, e.g. "0:01:02.500".
[[nodiscard]] std::string SVFramesTimeText(long long frames, long long rate);
