#include "effects/oversampler.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace {

double BesselI0(double x) {
  double sum = 1.0, term = 1.0;
  for (int k = 1; k < 50; ++k) {
    term *= (x / (2.0 * k)) * (x / (2.0 * k));
    sum += term;
    if (term < sum * 1e-17) break;
  }
  return sum;
}

// Kaiser window's beta for a stop band `db` down.
double KaiserBeta(double db) { return db > 50 ? 0.1102 * (db - 8.7) : 0.5842 * std::pow(db - 21, 0.4) + 0.07886 * (db - 21); }

// Taps either side of the middle for a Kaiser design, rounded up to an odd count.
int HalfLength(double db, double transition) {
  int half = static_cast<int>(std::ceil((db - 8.0) / (2.285 * 2.0 * std::numbers::pi * transition) / 2.0));
  return half | 1;
}

constexpr double kStopDb = 90.0;

// Dot product in four running sums, which the compiler can keep in vector registers.
float Dot(const float* a, const float* b, int n) {
  float s0 = 0, s1 = 0, s2 = 0, s3 = 0;
  int i = 0;
  for (; i + 4 <= n; i += 4) {
    s0 += a[i] * b[i];
    s1 += a[i + 1] * b[i + 1];
    s2 += a[i + 2] * b[i + 2];
    s3 += a[i + 3] * b[i + 3];
  }
  for (; i < n; ++i) s0 += a[i] * b[i];
  return (s0 + s1) + (s2 + s3);
}

// Writes x into a history kept twice over and answers the start of the window
// whose last sample is x.
const float* Push(std::vector<float>& line, int& at, int length, float x) {
  line[at] = x;
  line[at + length] = x;
  const float* window = &line[at + 1];
  if (++at == length) at = 0;
  return window;
}

}  // namespace

LOversampler::Stage::Stage(int half) : half_(half) {
  const double beta = KaiserBeta(kStopDb);
  const int taps = half + 1;
  taps_.resize(taps);
  // Causal filter g[i] = h[i - half]; the even i carry the odd, non-zero taps of the half-band.
  for (int q = 0; q < taps; ++q) {
    const int k = 2 * q - half;
    const double r = static_cast<double>(k) / (half + 1);
    const double window = BesselI0(beta * std::sqrt(std::max(0.0, 1.0 - r * r))) / BesselI0(beta);
    taps_[q] = static_cast<float>(std::sin(std::numbers::pi * k / 2.0) / (std::numbers::pi * k) * window);
  }
  // The history windows read oldest first, so the taps go in reverse.
  std::reverse(taps_.begin(), taps_.end());
  upLine_.assign(2 * taps, 0.0f);
  evenLine_.assign(2 * taps, 0.0f);
  oddLine_.assign(2 * ((half + 1) / 2 + 1), 0.0f);
}

void LOversampler::Stage::Reset() {
  std::fill(upLine_.begin(), upLine_.end(), 0.0f);
  std::fill(evenLine_.begin(), evenLine_.end(), 0.0f);
  std::fill(oddLine_.begin(), oddLine_.end(), 0.0f);
  upAt_ = evenAt_ = oddAt_ = 0;
}

void LOversampler::Stage::Up(const float* in, int n, float* out) {
  const int taps = static_cast<int>(taps_.size());
  // The middle tap of the half-band, 0.5 doubled, lands on the odd outputs as the input (half - 1) / 2 back.
  const int back = (half_ - 1) / 2;
  for (int j = 0; j < n; ++j) {
    const float* window = Push(upLine_, upAt_, taps, in[j]);
    out[2 * j] = 2.0f * Dot(window, taps_.data(), taps);
    out[2 * j + 1] = window[taps - 1 - back];
  }
}

void LOversampler::Stage::Down(const float* in, int n, float* out) {
  const int taps = static_cast<int>(taps_.size());
  const int oddLength = static_cast<int>(oddLine_.size()) / 2;
  // The middle tap meets the odd sample (half + 1) / 2 before this frame's.
  const int back = (half_ + 1) / 2;
  for (int j = 0; j < n; ++j) {
    const float* even = Push(evenLine_, evenAt_, taps, in[2 * j]);
    const float* odd = Push(oddLine_, oddAt_, oddLength, in[2 * j + 1]);
    out[j] = Dot(even, taps_.data(), taps) + 0.5f * odd[oddLength - 1 - back];
  }
}

LOversampler::LOversampler() {
  // Pass to 20 kHz, stop from the mirror of 20 kHz at 44.1 kHz; then the mirror of 22 kHz.
  const double first = (44.1 - 2.0 * 20.0) / 88.2;
  const double second = (88.2 - 2.0 * 22.05) / 176.4;
  const double third = (176.4 - 2.0 * 22.05) / 352.8;
  for (double t : {first, second, third}) stages_.emplace_back(HalfLength(kStopDb, t));
  int high = 0;  // the round trip's delay in high-rate samples
  for (std::size_t s = 0; s < stages_.size(); ++s) high += 2 * stages_[s].Half() << (stages_.size() - 1 - s);
  const int extra = (kLOversampleFactor - high % kLOversampleFactor) % kLOversampleFactor;
  pad_.assign(static_cast<std::size_t>(2 * (extra + 1)), 0.0f);
  latency_ = (high + extra) / kLOversampleFactor;
}

void LOversampler::Reset() {
  for (Stage& stage : stages_) stage.Reset();
  std::fill(pad_.begin(), pad_.end(), 0.0f);
  padAt_ = 0;
}

void LOversampler::Up(const float* in, int n, float* out) {
  a_.resize(static_cast<std::size_t>(n) * kLOversampleFactor);
  b_.resize(a_.size());
  stages_[0].Up(in, n, a_.data());
  stages_[1].Up(a_.data(), 2 * n, b_.data());
  stages_[2].Up(b_.data(), 4 * n, out);
  const int length = static_cast<int>(pad_.size()) / 2;
  if (length > 1) {
    for (int i = 0; i < 8 * n; ++i) out[i] = *Push(pad_, padAt_, length, out[i]);
  }
}

void LOversampler::Down(const float* in, int n, float* out) {
  a_.resize(static_cast<std::size_t>(n) * kLOversampleFactor);
  b_.resize(a_.size());
  stages_[2].Down(in, 4 * n, a_.data());
  stages_[1].Down(a_.data(), 2 * n, b_.data());
  stages_[0].Down(b_.data(), n, out);
}
