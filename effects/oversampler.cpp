#include "effects/oversampler.h"

#include <cmath>
#include <numbers>

namespace {

using Lanes = LOversampler::Lanes;

// Sections per chain in each stage, lowest rate first, and where each stage's
// pass band ends, as a part of its high rate.
constexpr int kSections[3] = {4, 2, 1};
constexpr double kPassEdge[3] = {20.0 / 88.2, 22.05 / 176.4, 22.05 / 352.8};

// Keeps the chains' state off the denormal range when the input falls silent:
// an all-pass passes a constant through unchanged, and this one is far below anything heard.
constexpr float kFloor = 1e-18f;

// The coefficients of an elliptic half-band built from `count` first-order
// all-passes, rising: the even ones go to the prompt chain, the odd ones to the
// late one. The transition band runs from `passEdge` to its mirror about a quarter of the rate.
std::vector<double> HalfBand(int count, double passEdge) {
  const double pi = std::numbers::pi;
  const double k = std::pow(std::tan((0.5 + 2.0 * passEdge) * pi / 4.0), 2.0);
  const double root = std::pow(1.0 - k * k, 0.25);
  const double e = 0.5 * (1.0 - root) / (1.0 + root);
  const double e4 = std::pow(e, 4.0);
  const double q = e * (1.0 + e4 * (2.0 + e4 * (15.0 + 150.0 * e4)));  // the nome
  const int order = 2 * count + 1;
  std::vector<double> a;
  for (int c = 1; c <= count; ++c) {
    double num = 0.0, den = 0.5;
    for (int i = 0, sign = 1; i < 20; ++i, sign = -sign)
      num += sign * std::pow(q, i * (i + 1)) * std::sin((2 * i + 1) * c * pi / order);
    for (int i = 1, sign = -1; i < 20; ++i, sign = -sign)
      den += sign * std::pow(q, i * i) * std::cos(2 * i * c * pi / order);
    const double w = std::pow(q, 0.25) * num / den, w2 = w * w;
    const double x = std::sqrt((1.0 - w2 * k) * (1.0 - w2 / k)) / (1.0 + w2);
    a.push_back((1.0 - x) / (1.0 + x));
  }
  return a;
}

// One step of a chain of first-order all-passes (a + 1/z) / (1 + a/z): s holds
// the last input and the output of each section after it. The section's own
// output is fed back through one multiplication and one subtraction, the
// shortest loop, which is what bounds the speed.
template <int M>
inline Lanes Step(const Lanes* a, Lanes* s, Lanes x) {
  for (int k = 0; k < M; ++k) {
    const Lanes y = (a[k] * x + s[k]) - a[k] * s[k + 1];
    s[k] = x;
    x = y;
  }
  s[M] = x;
  return x;
}

// Two steps at once: the second output reaches back past the first straight to
// the last one, y1 = u1 - a u0 + a² y (u = a x + x before), so both wait on the
// same feedback and the loop runs twice as far for its length.
template <int M>
inline void Steps(const Lanes* a, Lanes* s, Lanes& x0, Lanes& x1) {
  for (int k = 0; k < M; ++k) {
    const Lanes u0 = a[k] * x0 + s[k], u1 = a[k] * x1 + x0;
    const Lanes y0 = u0 - a[k] * s[k + 1];
    const Lanes y1 = (u1 - a[k] * u0) + (a[k] * a[k]) * s[k + 1];
    s[k] = x1;
    x0 = y0;
    x1 = y1;
  }
  s[M] = x1;
}

// Runs n frames through the chains, two at a time where paired: lanes(j)
// gives frame j's input, put(j, y) takes its output.
template <int M, class In, class Out>
inline void Chains(const Lanes* a, Lanes* s, bool paired, int n, In lanes, Out put) {
  int j = 0;
  for (; paired && j + 1 < n; j += 2) {
    Lanes y0 = lanes(j), y1 = lanes(j + 1);
    Steps<M>(a, s, y0, y1);
    put(j, y0);
    put(j + 1, y1);
  }
  for (; j < n; ++j) put(j, Step<M>(a, s, lanes(j)));
}

// Doubles the rate of n frames: the prompt chain gives the even samples, the late one the odd.
template <int M, int C>
void UpStage(const Lanes* coefficients, Lanes* state, bool paired, const float* in, int n, float* out) {
  Lanes a[M], s[M + 1];
  for (int k = 0; k < M; ++k) a[k] = coefficients[k];
  for (int k = 0; k <= M; ++k) s[k] = state[k];
  auto lanes = [&](int j) {
    const float l = in[C * j], r = C == 2 ? in[C * j + 1] : 0.0f;
    return Lanes{l, l, r, r};
  };
  auto put = [&](int j, Lanes y) {
    out[2 * C * j] = y[0];
    out[2 * C * j + C] = y[1];
    if constexpr (C == 2) {
      out[4 * j + 1] = y[2];
      out[4 * j + 3] = y[3];
    }
  };
  Chains<M>(a, s, paired, n, lanes, put);
  for (int k = 0; k <= M; ++k) state[k] = s[k];
}

// Halves the rate of 2 n frames: the mean of the prompt chain on the even
// samples and the late one on the odd sample before.
template <int M, int C>
void DownStage(const Lanes* coefficients, Lanes* state, bool paired, Lanes& held, const float* in, int n, float* out) {
  Lanes a[M], s[M + 1];
  for (int k = 0; k < M; ++k) a[k] = coefficients[k];
  for (int k = 0; k <= M; ++k) s[k] = state[k];
  auto lanes = [&](int j) {
    const float* even = in + 2 * C * j;
    const float lateLeft = j > 0 ? even[-C] : held[1], lateRight = j > 0 ? even[-1] : held[3];
    return Lanes{even[0], lateLeft, C == 2 ? even[1] : 0.0f, C == 2 ? lateRight : 0.0f};
  };
  auto put = [&](int j, Lanes y) {
    out[C * j] = 0.5f * (y[0] + y[1]);
    if constexpr (C == 2) out[2 * j + 1] = 0.5f * (y[2] + y[3]);
  };
  Chains<M>(a, s, paired, n, lanes, put);
  if (n > 0) {
    const float* odd = in + 2 * C * n - C;
    held = Lanes{0.0f, odd[0], 0.0f, C == 2 ? odd[1] : 0.0f};
  }
  for (int k = 0; k <= M; ++k) state[k] = s[k];
}

template <int C>
void Run(bool up, int stage, const Lanes* a, Lanes* state, Lanes& held, const float* in, int n, float* out) {
  // Steps go in pairs only where every run has an even count of them, so the
  // samples do not depend on how the sound is cut into runs.
  const bool paired = stage > 0;
  if (up) {
    if (kSections[stage] == 4) UpStage<4, C>(a, state, paired, in, n, out);
    else if (kSections[stage] == 2) UpStage<2, C>(a, state, paired, in, n, out);
    else UpStage<1, C>(a, state, paired, in, n, out);
  } else {
    if (kSections[stage] == 4) DownStage<4, C>(a, state, paired, held, in, n, out);
    else if (kSections[stage] == 2) DownStage<2, C>(a, state, paired, held, in, n, out);
    else DownStage<1, C>(a, state, paired, held, in, n, out);
  }
}

}  // namespace

LOversampler::LOversampler(int channels) : channels_(channels == 2 ? 2 : 1) {
  for (int stage = 0; stage < kLOversampleStages; ++stage) {
    const std::vector<double> a = HalfBand(2 * kSections[stage], kPassEdge[stage]);
    // At low frequencies a section delays by (1 - a) / (1 + a) samples of the
    // chain's rate; the half-band by the mean of its two chains, the late one a
    // high-rate sample later. Up and down the stage, in base-rate frames:
    double chains = 0.0;
    for (std::size_t k = 0; k < a.size(); ++k) {
      chains += (1.0 - a[k]) / (1.0 + a[k]);
      if (k % 2 == 1) {
        const float prompt = static_cast<float>(a[k - 1]), late = static_cast<float>(a[k]);
        coefficients_[stage].push_back(Lanes{prompt, late, prompt, late});
      }
    }
    delay_ += 2.0 * (chains + 0.5) / (2 << stage);
  }
  latency_ = static_cast<int>(std::lround(delay_));
  Reset();
}

void LOversampler::Reset() {
  for (int stage = 0; stage < kLOversampleStages; ++stage) {
    upState_[stage].assign(static_cast<std::size_t>(kSections[stage] + 1), Lanes{});
    downState_[stage].assign(static_cast<std::size_t>(kSections[stage] + 1), Lanes{});
    held_[stage] = Lanes{};
  }
}

void LOversampler::Up(const float* in, int n, float* out) {
  const std::size_t size = static_cast<std::size_t>(n) * kLOversampleFactor * channels_;
  a_.resize(size);
  b_.resize(size);
  for (int i = 0; i < n * channels_; ++i) a_[i] = in[i] + kFloor;
  const float* from = a_.data();
  for (int stage = 0; stage < kLOversampleStages; ++stage) {
    float* to = stage == kLOversampleStages - 1 ? out : stage % 2 == 0 ? b_.data() : a_.data();
    const int frames = n << stage;
    Lanes* state = upState_[stage].data();
    if (channels_ == 2) Run<2>(true, stage, coefficients_[stage].data(), state, held_[stage], from, frames, to);
    else Run<1>(true, stage, coefficients_[stage].data(), state, held_[stage], from, frames, to);
    from = to;
  }
}

void LOversampler::Down(const float* in, int n, float* out) {
  const std::size_t size = static_cast<std::size_t>(n) * kLOversampleFactor * channels_;
  a_.resize(size);
  b_.resize(size);
  const float* from = in;
  for (int stage = kLOversampleStages - 1; stage >= 0; --stage) {
    float* to = stage == 0 ? out : (kLOversampleStages - 1 - stage) % 2 == 0 ? a_.data() : b_.data();
    const int frames = n << stage;
    Lanes* state = downState_[stage].data();
    if (channels_ == 2) Run<2>(false, stage, coefficients_[stage].data(), state, held_[stage], from, frames, to);
    else Run<1>(false, stage, coefficients_[stage].data(), state, held_[stage], from, frames, to);
    from = to;
  }
}
