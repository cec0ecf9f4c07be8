#include "effects/biquad.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace {

struct Angle {
  double cosw, alpha;
};

// Frequencies are kept below Nyquist so that a setting meant for 48 kHz still
// opens at 8 kHz.
double Omega(double rate, double hz) { return 2.0 * std::numbers::pi * std::clamp(hz, 1.0, rate * 0.49) / rate; }

Angle AngleOf(double rate, double hz, double q) {
  const double w = Omega(rate, hz);
  return {std::cos(w), std::sin(w) / (2.0 * std::max(q, 0.01))};
}

LBiquad Normalised(double b0, double b1, double b2, double a0, double a1, double a2) {
  return {b0 / a0, b1 / a0, b2 / a0, a1 / a0, a2 / a0};
}

}  // namespace

LBiquad LBiquad::LowPass(double rate, double hz, double q) {
  auto [c, a] = AngleOf(rate, hz, q);
  return Normalised((1 - c) / 2, 1 - c, (1 - c) / 2, 1 + a, -2 * c, 1 - a);
}

LBiquad LBiquad::HighPass(double rate, double hz, double q) {
  auto [c, a] = AngleOf(rate, hz, q);
  return Normalised((1 + c) / 2, -(1 + c), (1 + c) / 2, 1 + a, -2 * c, 1 - a);
}

LBiquad LBiquad::LowPass1(double rate, double hz) {
  const double k = std::tan(Omega(rate, hz) / 2);
  return {k / (1 + k), k / (1 + k), 0, (k - 1) / (k + 1), 0};
}

LBiquad LBiquad::HighPass1(double rate, double hz) {
  const double k = std::tan(Omega(rate, hz) / 2);
  return {1 / (1 + k), -1 / (1 + k), 0, (k - 1) / (k + 1), 0};
}

LBiquad LBiquad::Bell(double rate, double hz, double q, double gainDb) {
  auto [c, a] = AngleOf(rate, hz, q);
  const double g = std::pow(10.0, gainDb / 40.0);
  return Normalised(1 + a * g, -2 * c, 1 - a * g, 1 + a / g, -2 * c, 1 - a / g);
}

LBiquad LBiquad::LowShelf(double rate, double hz, double q, double gainDb) {
  auto [c, a] = AngleOf(rate, hz, q);
  const double g = std::pow(10.0, gainDb / 40.0);
  const double s = 2 * std::sqrt(g) * a;
  return Normalised(g * ((g + 1) - (g - 1) * c + s), 2 * g * ((g - 1) - (g + 1) * c), g * ((g + 1) - (g - 1) * c - s),
                    (g + 1) + (g - 1) * c + s, -2 * ((g - 1) + (g + 1) * c), (g + 1) + (g - 1) * c - s);
}

LBiquad LBiquad::HighShelf(double rate, double hz, double q, double gainDb) {
  auto [c, a] = AngleOf(rate, hz, q);
  const double g = std::pow(10.0, gainDb / 40.0);
  const double s = 2 * std::sqrt(g) * a;
  return Normalised(g * ((g + 1) + (g - 1) * c + s), -2 * g * ((g - 1) + (g + 1) * c), g * ((g + 1) + (g - 1) * c - s),
                    (g + 1) - (g - 1) * c + s, 2 * ((g - 1) - (g + 1) * c), (g + 1) - (g - 1) * c - s);
}

LBiquad LBiquad::Notch(double rate, double hz, double q) {
  auto [c, a] = AngleOf(rate, hz, q);
  return Normalised(1, -2 * c, 1, 1 + a, -2 * c, 1 - a);
}

std::vector<LBiquad> LBiquadButterworth(double rate, double hz, int order, bool highPass, double peakFactor) {
  order = std::clamp(order, 1, 8);
  std::vector<LBiquad> sections;
  if (order % 2) sections.push_back(highPass ? LBiquad::HighPass1(rate, hz) : LBiquad::LowPass1(rate, hz));
  const int pairs = order / 2;
  for (int k = 0; k < pairs; ++k) {
    double q = 1.0 / (2.0 * std::cos(std::numbers::pi * (2 * k + 1) / (2.0 * order)));
    if (k == pairs - 1) q *= peakFactor;  // the sharpest pair carries the resonance
    sections.push_back(highPass ? LBiquad::HighPass(rate, hz, q) : LBiquad::LowPass(rate, hz, q));
  }
  return sections;
}

LBiquadCascade::LBiquadCascade(std::vector<LBiquad> sections, int channels)
    : sections_(std::move(sections)), channels_(std::max(channels, 1)), state_(sections_.size() * channels_ * 2, 0.0) {}

namespace {

// A decayed tail would go on as denormals, which are slow.
double Flush(double z) { return std::abs(z) < 1e-30 ? 0.0 : z; }

// N sections in a row over one channel of a block. Each sample of a section waits
// for its previous sample, but the later sections of a sample overlap the
// earlier ones of the next, so running several together is nearly as fast as one.
template <int N>
void Run(const LBiquad* f, double* const* state, float* p, long long frames, int stride) {
  double z1[N], z2[N];
  for (int k = 0; k < N; ++k) z1[k] = state[k][0], z2[k] = state[k][1];
  for (long long i = 0; i < frames; ++i, p += stride) {
    double x = *p;
    for (int k = 0; k < N; ++k) {
      const double y = f[k].b0 * x + z1[k];
      z1[k] = f[k].b1 * x - f[k].a1 * y + z2[k];
      z2[k] = f[k].b2 * x - f[k].a2 * y;
      x = y;
    }
    *p = static_cast<float>(x);
  }
  for (int k = 0; k < N; ++k) state[k][0] = Flush(z1[k]), state[k][1] = Flush(z2[k]);
}

// The same over both channels of a stereo block at once: the two channels are
// independent, so they go through the same instructions side by side.
template <int N>
void RunStereo(const LBiquad* f, double* const* state, float* p, long long frames) {
  double z1[N][2], z2[N][2];
  for (int k = 0; k < N; ++k)
    for (int c = 0; c < 2; ++c) z1[k][c] = state[2 * k + c][0], z2[k][c] = state[2 * k + c][1];
  for (long long i = 0; i < frames; ++i, p += 2) {
    double x[2] = {p[0], p[1]};
    for (int k = 0; k < N; ++k) {
      for (int c = 0; c < 2; ++c) {
        const double y = f[k].b0 * x[c] + z1[k][c];
        z1[k][c] = f[k].b1 * x[c] - f[k].a1 * y + z2[k][c];
        z2[k][c] = f[k].b2 * x[c] - f[k].a2 * y;
        x[c] = y;
      }
    }
    p[0] = static_cast<float>(x[0]);
    p[1] = static_cast<float>(x[1]);
  }
  for (int k = 0; k < N; ++k)
    for (int c = 0; c < 2; ++c) state[2 * k + c][0] = Flush(z1[k][c]), state[2 * k + c][1] = Flush(z2[k][c]);
}

}  // namespace

void LBiquadCascade::Process(float* buffer, long long frames) {
  // Up to four sections at a time over the whole block, with their coefficients in registers.
  const std::size_t count = sections_.size();
  for (std::size_t s = 0; s < count; s += 4) {
    const std::size_t n = std::min<std::size_t>(4, count - s);
    const LBiquad* f = &sections_[s];
    if (channels_ == 2) {
      double* state[8];
      for (std::size_t k = 0; k < 2 * n; ++k) state[k] = &state_[(s * 2 + k) * 2];
      switch (n) {
        case 1: RunStereo<1>(f, state, buffer, frames); break;
        case 2: RunStereo<2>(f, state, buffer, frames); break;
        case 3: RunStereo<3>(f, state, buffer, frames); break;
        default: RunStereo<4>(f, state, buffer, frames); break;
      }
      continue;
    }
    for (int c = 0; c < channels_; ++c) {
      double* state[4];
      for (std::size_t k = 0; k < n; ++k) state[k] = &state_[((s + k) * channels_ + c) * 2];
      switch (n) {
        case 1: Run<1>(f, state, buffer + c, frames, channels_); break;
        case 2: Run<2>(f, state, buffer + c, frames, channels_); break;
        case 3: Run<3>(f, state, buffer + c, frames, channels_); break;
        default: Run<4>(f, state, buffer + c, frames, channels_); break;
      }
    }
  }
}

void LBiquadCascade::Reset() { std::fill(state_.begin(), state_.end(), 0.0); }
