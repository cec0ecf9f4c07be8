#pragma once
// Serving a source's Read through a reader's one conversion buffer: requests of
// any length go in steps of at most kLFileBufferFrames frames.
#include <algorithm>
#include <cstring>

// Frames in the one conversion buffer that every file reader and writer owns.
constexpr long long kLFileBufferFrames = 8192;

// Fills out with frames frames from position on and advances position by frames.
// Frames before 0 read as silence without asking fetch; fetch(out, at, n) with
// at >= 0 and n <= kLFileBufferFrames writes the frames it can deliver from at on
// and answers how many; the rest of its step reads as silence.
template <class Fetch>
void LReadInSteps(float* out, long long frames, int channels, long long& position, Fetch&& fetch) {
  while (frames > 0) {
    long long n;
    long long got = 0;
    if (position < 0) {
      n = std::min(frames, -position);
    } else {
      n = std::min(frames, kLFileBufferFrames);
      got = std::clamp(fetch(out, position, n), 0LL, n);
    }
    std::memset(out + got * channels, 0, static_cast<size_t>((n - got) * channels) * sizeof(float));
    out += n * channels;
    position += n;
    frames -= n;
  }
}
