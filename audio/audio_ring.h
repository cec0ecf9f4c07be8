#pragma once
// LAudioRing: a lock-free ring of interleaved float frames between exactly one
// producer thread and one consumer thread, allocated once. Neither side ever
// waits: a full ring takes fewer frames than offered, an empty one gives fewer
// than asked, and the caller decides what that means (an overrun, an underrun).
#include <atomic>
#include <cstddef>
#include <vector>

class LAudioRing {
public:
  // Room for at least capacityFrames frames of channels floats.
  LAudioRing(long capacityFrames, int channels);
  LAudioRing(const LAudioRing&) = delete;
  LAudioRing& operator=(const LAudioRing&) = delete;

  // Producer: copies up to frames frames in; answers how many went in.
  long Write(const float* in, long frames);
  // Consumer: copies up to frames frames out; answers how many came.
  long Read(float* out, long frames);

  long ReadableFrames() const;
  long WritableFrames() const;
  long CapacityFrames() const { return static_cast<long>(mask_ + 1); }

private:
  std::vector<float> samples_;
  int channels_;
  std::size_t mask_;  // frame capacity is a power of two, so indices wrap by masking
  // Frame counters that only grow; each is written by one side only.
  alignas(64) std::atomic<std::size_t> written_{0};
  alignas(64) std::atomic<std::size_t> read_{0};
};
