// Finding a cut point where every channel rises through zero.
#include <algorithm>
#include <cstdlib>
#include <limits>
#include <vector>

#include "engine/cut_list_audio.h"

namespace {

// Frames scanned per read.
constexpr long long kScanBlockFrames = 8192;

long long Distance(long long a, long long b) { return a > b ? a - b : b - a; }

}  // namespace

bool LCutListAudio::ZeroCrossCutpointFind(LSoundSource& source, long long target, long long low, long long high,
                                          long long& result) {
  result = target;
  if (target < 1) {
    result = 0;
    return true;
  }
  if (source.IsError()) return false;
  const long long end = source.GetEndSample();
  if (end <= target) {
    result = end;
    return true;
  }
  const int channels = source.GetChannels();
  if (target < low || target > high || channels == 0) return false;

  const long long first = std::max(low, 0LL);
  const long long total = std::min(end, high) - first;
  source.Seek(first);

  constexpr long long kNone = std::numeric_limits<long long>::min();
  std::vector<long long> latest(static_cast<std::size_t>(channels), kNone);
  int channelsCrossed = 0;
  bool haveExact = false;
  long long exact = 0;
  bool haveNear = false;
  long long nearest = 0;
  long long smallestSpread = std::numeric_limits<long long>::max();

  std::vector<float> block(static_cast<std::size_t>(std::min(std::max(total, 0LL), kScanBlockFrames)) * channels);
  for (long long done = 0; done < total;) {
    const long long frames = std::min(total - done, kScanBlockFrames);
    source.Read(block.data(), frames);
    const long long blockStart = first + done;
    done += frames;
    bool skipRest = false;
    // A crossing needs both of its frames in this block; one that straddles two blocks is not seen.
    for (long long i = 0; i + 1 < frames && !skipRest; ++i) {
      const float* now = block.data() + i * channels;
      const float* next = now + channels;
      for (int c = 0; c < channels; ++c) {
        if (!(now[c] <= 0.0f && next[c] > 0.0f)) continue;
        if (latest[static_cast<std::size_t>(c)] == kNone) ++channelsCrossed;
        latest[static_cast<std::size_t>(c)] = blockStart + i;
        if (channelsCrossed < channels) continue;
        const auto [lowest, highest] = std::minmax_element(latest.begin(), latest.end());
        const long long a = *lowest;
        const long long b = *highest;
        if (a == b) {
          if (!haveExact || Distance(a, target) < Distance(exact, target)) {
            exact = a;
            haveExact = true;
          }
        } else if (b - a < smallestSpread) {
          smallestSpread = b - a;
          const long long middle = a + (b - a) / 2;
          if (!haveNear || Distance(middle, target) < Distance(nearest, target)) {
            nearest = middle;
            haveNear = true;
          }
        }
        if (haveExact && exact >= target) skipRest = true;
      }
    }
  }
  if (haveExact) {
    result = exact;
    return true;
  }
  if (haveNear) {
    result = nearest;
    return true;
  }
  return false;
}
