#pragma once
// The pieces the modulation effects share: a delay line read at a fractional,
// moving delay, and a low-frequency oscillator tied to the frame position so
// that a seek lands on the same phase as reading straight through.
#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numbers>
#include <vector>

// The cubic Hermite curve through x0 (f = 0) and x1 (f = 1), its slopes taken from xm and x2.
inline float LHermite(float xm, float x0, float x1, float x2, float f) {
  const float c1 = 0.5f * (x1 - xm);
  const float c2 = xm - 2.5f * x0 + 2.0f * x1 - 0.5f * x2;
  const float c3 = 0.5f * (x2 - xm) + 1.5f * (x0 - x1);
  return ((c3 * f + c2) * f + c1) * f + x0;
}

// One channel's delay line. Read(d) gives the sample d frames before the next
// write (d = 1 is the newest), by cubic Hermite interpolation, which keeps the
// highs of a moving delay that a straight line would dull.
class LModulatedDelay {
public:
  // Shortest delay Read accepts: the interpolation needs one sample after its spot.
  static constexpr double kMinDelay = 3.0;

  explicit LModulatedDelay(double maxDelay = 0) { SetMaxDelay(maxDelay); }

  void SetMaxDelay(double maxDelay) {
    std::size_t size = 8;
    while (static_cast<double>(size) < maxDelay + 8) size *= 2;
    line_.assign(size, 0.0f);
    mask_ = size - 1;
    write_ = size;
  }
  void Clear() {
    std::fill(line_.begin(), line_.end(), 0.0f);
    write_ = line_.size();
  }
  void Push(float x) { line_[write_++ & mask_] = x; }

  // `delay` no more than the line was made for.
  float Read(double delay) const {
    delay = std::max(delay, kMinDelay);
    // The write index starts a whole line in, so the spot is never before 0 and
    // cutting off its fraction is its floor.
    const double at = static_cast<double>(write_) - delay;
    const std::size_t i = static_cast<std::size_t>(at);
    const float f = static_cast<float>(at - static_cast<double>(i));
    const float xm = line_[(i - 1) & mask_], x0 = line_[i & mask_], x1 = line_[(i + 1) & mask_],
                x2 = line_[(i + 2) & mask_];
    return LHermite(xm, x0, x1, x2, f);
  }

private:
  std::vector<float> line_;
  std::size_t mask_ = 0;
  std::size_t write_ = 0;
};

// The phase in turns (0 ... 1) of an oscillator of `hz` at `frame`, plus `offset` turns.
inline double LLfoPhase(double hz, double rate, long long frame, double offset = 0.0) {
  const double turns = hz / rate * static_cast<double>(frame) + offset;
  return turns - std::floor(turns);
}

inline double LLfoSine(double phase) { return std::sin(2.0 * std::numbers::pi * phase); }

// A sine oscillator computed exactly every 16 frames of the timeline and drawn
// straight between: at the few hertz these effects swing, the straight line
// misses the curve by less than 1e-4 of its height, and the sines cost a
// sixteenth. The corners lie on fixed frames, so any block size gives the same.
class LLfo {
public:
  LLfo(double hz, double rate, double offset) : hz_(hz), rate_(rate), offset_(offset) {}

  double At(long long frame) {
    const long long segment = frame >> kShift;
    Enter(segment);
    return from_ + step_ * static_cast<double>(frame - (segment << kShift));
  }
  // At(first + i) into out[i] for i < n, segment by segment.
  void Run(long long first, int n, double* out) {
    for (int i = 0; i < n;) {
      const long long segment = (first + i) >> kShift;
      Enter(segment);
      const long long corner = segment << kShift;
      const int end = static_cast<int>(std::min<long long>(n, corner + (1 << kShift) - first));
      for (; i < end; ++i) out[i] = from_ + step_ * static_cast<double>(first + i - corner);
    }
  }

private:
  void Enter(long long segment) {
    if (segment == segment_) return;
    // Reading straight on, this corner is the last segment's far one.
    from_ = segment == segment_ + 1 ? to_ : LLfoSine(LLfoPhase(hz_, rate_, segment << kShift, offset_));
    to_ = LLfoSine(LLfoPhase(hz_, rate_, (segment + 1) << kShift, offset_));
    step_ = (to_ - from_) / (1 << kShift);
    segment_ = segment;
  }

  static constexpr int kShift = 4;
  double hz_, rate_, offset_;
  long long segment_ = -(1LL << 62);
  double from_ = 0, to_ = 0, step_ = 0;
};
