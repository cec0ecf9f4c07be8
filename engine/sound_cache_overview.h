#pragma once
// The peak overview of a cache item (".grf"): for every block of 256 frames, in
// order, one 4-byte record per channel (channel 0 first): the positive peak code
// and then the negative peak code, each unsigned 16-bit little-endian. The last
// block may be shorter and still has a full record.
//
// A peak p > 0 codes as the integer part of p * 4134.916, at least 1 (a sound
// never draws as silence), and 65535 above +24 dB (15.848932), which itself codes
// as 65534. Full scale 1.0 codes as 4134. The coding is on disk: never change it.
#include <cstdint>

constexpr long long kLSoundCacheOverviewBlockFrames = 256;
constexpr int kLSoundCacheOverviewRecordBytes = 4;
constexpr double kLSoundCachePeakCodeFactor = 4134.916;
constexpr float kLSoundCachePeakOverRange = 15.848932f;
constexpr std::uint16_t kLSoundCachePeakCodeOverRange = 65535;

// The code of a peak magnitude (0 for anything not above 0, NaN included).
[[nodiscard]] inline std::uint16_t LSoundCachePeakCode(float peak) {
  if (!(peak > 0.0f)) return 0;
  if (peak > kLSoundCachePeakOverRange) return kLSoundCachePeakCodeOverRange;
  auto code = static_cast<std::uint32_t>(static_cast<double>(peak) * kLSoundCachePeakCodeFactor);
  return code == 0 ? std::uint16_t{1} : static_cast<std::uint16_t>(code);
}

// The amplitude a code stands for.
[[nodiscard]] inline float LSoundCachePeakFromCode(std::uint16_t code) {
  return static_cast<float>(code / kLSoundCachePeakCodeFactor);
}

// Records per channel of an item of the given length.
[[nodiscard]] inline long long LSoundCacheOverviewBlocks(long long frames) {
  return frames <= 0 ? 0 : (frames + kLSoundCacheOverviewBlockFrames - 1) / kLSoundCacheOverviewBlockFrames;
}
