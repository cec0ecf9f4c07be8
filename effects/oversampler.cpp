#include "effects/oversampler.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "effects/fast_math.h"

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

// sum[j] = gain * taps[q] * line[from + j - q] summed over the taps, for j < n:
// the history lies before `from`. Runs of outputs are summed in registers, tap
// by tap, so each output is loaded and stored once.
SONVALE_WIDE_VECTORS
void Convolve(const std::vector<float>& taps, const float* line, int from, int n, float gain, float* sum) {
  constexpr int kRun = 32;
  const int count = static_cast<int>(taps.size());
  const float* tap = taps.data();
  int j0 = 0;
  for (; j0 + kRun <= n; j0 += kRun) {
    float acc[kRun] = {};
    for (int q = 0; q < count; ++q) {
      const float c = gain * tap[q];
      const float* x = line + from + j0 - q;
      for (int k = 0; k < kRun; ++k) acc[k] += c * x[k];
    }
    std::copy(acc, acc + kRun, sum + j0);
  }
  for (int j = j0; j < n; ++j) {
    float acc = 0.0f;
    for (int q = 0; q < count; ++q) acc += gain * tap[q] * line[from + j - q];
    sum[j] = acc;
  }
}

// Keeps the last `keep` samples of a run as the history of the next.
void KeepHistory(std::vector<float>& line, int keep, int n) {
  std::copy(line.begin() + n, line.begin() + n + keep, line.begin());
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
  Reset();
}

void LOversampler::Stage::Reset() {
  const int history = static_cast<int>(taps_.size()) - 1;
  up_.assign(static_cast<std::size_t>(history), 0.0f);
  even_.assign(static_cast<std::size_t>(history), 0.0f);
  odd_.assign(static_cast<std::size_t>((half_ + 1) / 2), 0.0f);
  std::fill(lead_.begin(), lead_.end(), 0.0f);
}

void LOversampler::Stage::Up(const float* in, int n, float* out) {
  const int history = static_cast<int>(taps_.size()) - 1;
  up_.resize(static_cast<std::size_t>(history + n));
  sum_.resize(static_cast<std::size_t>(n));
  std::copy(in, in + n, up_.begin() + history);
  Convolve(taps_, up_.data(), history, n, 2.0f, sum_.data());
  // The middle tap of the half-band, 0.5 doubled, lands on the odd outputs as the input (half - 1) / 2 back.
  const float* late = up_.data() + history - (half_ - 1) / 2;
  for (int j = 0; j < n; ++j) {
    out[2 * j] = sum_[j];
    out[2 * j + 1] = late[j];
  }
  KeepHistory(up_, history, n);
}

void LOversampler::Stage::Down(const float* in, int n, float* out) {
  const int history = static_cast<int>(taps_.size()) - 1;
  // The middle tap meets the odd sample (half + 1) / 2 before this frame's.
  const int back = (half_ + 1) / 2;
  even_.resize(static_cast<std::size_t>(history + n));
  odd_.resize(static_cast<std::size_t>(back + n));
  // The input runs `lead` samples late: the held ones first, then the run's.
  const int lead = static_cast<int>(lead_.size());
  const int held = std::min(n, (lead + 1) / 2);
  for (int j = 0; j < held; ++j) {
    const int i = 2 * j - lead;
    even_[history + j] = i < 0 ? lead_[lead + i] : in[i];
    odd_[back + j] = i + 1 < 0 ? lead_[lead + i + 1] : in[i + 1];
  }
  for (int j = held; j < n; ++j) {
    even_[history + j] = in[2 * j - lead];
    odd_[back + j] = in[2 * j + 1 - lead];
  }
  if (lead > 2 * n) {
    std::copy(lead_.begin() + 2 * n, lead_.end(), lead_.begin());
    std::copy(in, in + 2 * n, lead_.end() - 2 * n);
  } else if (lead > 0) {
    std::copy(in + 2 * n - lead, in + 2 * n, lead_.begin());
  }
  Convolve(taps_, even_.data(), history, n, 1.0f, out);
  for (int j = 0; j < n; ++j) out[j] += 0.5f * odd_[j];
  KeepHistory(even_, history, n);
  KeepHistory(odd_, back, n);
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
  stages_.back().SetLead(extra);
  latency_ = (high + extra) / kLOversampleFactor;
}

void LOversampler::Reset() {
  for (Stage& stage : stages_) stage.Reset();
}

void LOversampler::Up(const float* in, int n, float* out) {
  a_.resize(static_cast<std::size_t>(n) * kLOversampleFactor);
  b_.resize(a_.size());
  stages_[0].Up(in, n, a_.data());
  stages_[1].Up(a_.data(), 2 * n, b_.data());
  stages_[2].Up(b_.data(), 4 * n, out);
}

void LOversampler::Down(const float* in, int n, float* out) {
  a_.resize(static_cast<std::size_t>(n) * kLOversampleFactor);
  b_.resize(a_.size());
  stages_[2].Down(in, 4 * n, a_.data());
  stages_[1].Down(a_.data(), 2 * n, b_.data());
  stages_[0].Down(b_.data(), n, out);
}
