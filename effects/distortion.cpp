#include "effects/distortion.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <numbers>

#include "effects/fast_math.h"
#include "effects/sound_process_type.h"

namespace {

constexpr LSPValueSpec kSpecs[] = {
    {"Antrieb", "dB", 0.0, 48.0, 18.0, false},
    {"Kurve", "0 = weich, 1 = hart, 2 = Röhre", 0.0, 2.0, kLSPCurveSoft, true},
    {"Ton", "Hz", 500.0, 20000.0, 8000.0, false},
    {"Mischung", "%", 0.0, 100.0, 100.0, false},
    {"Ausgang", "dB", -24.0, 6.0, -6.0, false},
};
constexpr LSPValuePreset kPresets[] = {
    {"Wärme", {6.0, kLSPCurveTube, 12000.0, 100.0, -3.0}},
    {"Overdrive", {18.0, kLSPCurveSoft, 6000.0, 100.0, -4.0}},
    {"Fuzz", {36.0, kLSPCurveHard, 4000.0, 100.0, -9.0}},
    {"Röhrenverstärker", {24.0, kLSPCurveTube, 7000.0, 100.0, -8.0}},
    {"Parallel", {30.0, kLSPCurveHard, 5000.0, 40.0, -6.0}},
};
constexpr LSPValueTable kTable{kLSPTypeDistortion, kSpecs, kPresets};

// Frames run through the filters at a time.
constexpr int kBlock = 256;
constexpr double kDcHz = 10.0;

// The curves with their antiderivatives. Each meets its rails with a level
// tangent; the soft one also with no bend, so its knee is rounder.
// Both sides of each choice are computed and one picked by its bits, so the
// loops over runs vectorise.
double Pick(bool yes, double a, double b) {
  const std::uint64_t mask = yes ? ~std::uint64_t{0} : 0;
  return std::bit_cast<double>((std::bit_cast<std::uint64_t>(a) & mask) | (std::bit_cast<std::uint64_t>(b) & ~mask));
}

// x held to -1 ... 1.
double Clamp(double x) { return Pick(x > 1.0, 1.0, Pick(x < -1.0, -1.0, x)); }

struct HardCurve {
  // At the rails the polynomial is exactly 1.
  static double F(double x) {
    const double c = Clamp(x);
    return 1.5 * c - 0.5 * c * c * c;
  }
  static double A(double x) {
    const double x2 = x * x;
    const double inside = 0.75 * x2 - 0.125 * x2 * x2;
    return Pick(std::abs(x) >= 1.0, std::abs(x) - 0.375, inside);
  }
};

struct SoftCurve {
  // A quintic over twice the hard curve's width.
  static double F(double x) {
    const double u = Clamp(0.5 * x);
    const double u2 = u * u;
    return u * (15.0 - 10.0 * u2 + 3.0 * u2 * u2) / 8.0;
  }
  static double A(double x) {
    const double u = 0.5 * x;
    const double u2 = u * u;
    const double inside = 2.0 * u2 * (7.5 - 2.5 * u2 + 0.5 * u2 * u2) / 8.0;
    return Pick(std::abs(u) >= 1.0, 2.0 * (std::abs(u) - 0.3125), inside);
  }
};

// The soft curve off its middle, so the two half-waves bend unequally.
struct TubeCurve {
  static constexpr double kBias = 0.4;
  static double F(double x) { return (SoftCurve::F(x + kBias) - SoftCurve::F(kBias)) / (1.0 + SoftCurve::F(kBias)); }
  static double A(double x) {
    return (SoftCurve::A(x + kBias) - SoftCurve::A(kBias) - SoftCurve::F(kBias) * x) / (1.0 + SoftCurve::F(kBias));
  }
};

// The curve applied as the mean of its values between one sample and the next
// (the difference of its antiderivative over the difference of the samples):
// what the corners of a hard-driven curve would fold back is smoothed away
// before it can, which the oversampling alone does not manage at high drive.
// The run holds `count` samples of `stride` interleaved channels; x and a hold
// stride more: each channel's last driven sample and antiderivative of the run before first.
template <class Curve>
inline void ShapeRun(float* high, int count, int stride, double drive, double* previous, double* x, double* a) {
  for (int c = 0; c < stride; ++c) x[c] = previous[c];
  for (int i = 0; i < count; ++i) x[i + stride] = drive * high[i];
  for (int i = 0; i < count + stride; ++i) a[i] = Curve::A(x[i]);
  std::uint64_t close = 0;
  for (int i = 0; i < count; ++i) {
    const double step = x[i + stride] - x[i];
    const bool apart = std::abs(step) > 1e-6;
    close |= std::bit_cast<std::uint64_t>(Pick(apart, 0.0, 1.0));
    high[i] = static_cast<float>((a[i + stride] - a[i]) / Pick(apart, step, 1.0));
  }
  // Where two samples nearly meet, the quotient is noise: the curve at their middle instead.
  if (close) {
    for (int i = 0; i < count; ++i)
      if (!(std::abs(x[i + stride] - x[i]) > 1e-6))
        high[i] = static_cast<float>(Curve::F(0.5 * (x[i + stride] + x[i])));
  }
  for (int c = 0; c < stride; ++c) previous[c] = x[count + c];
}

SONVALE_WIDE_VECTORS
void ShapeHard(float* high, int count, int stride, double drive, double* previous, double* x, double* a) {
  ShapeRun<HardCurve>(high, count, stride, drive, previous, x, a);
}
SONVALE_WIDE_VECTORS
void ShapeSoft(float* high, int count, int stride, double drive, double* previous, double* x, double* a) {
  ShapeRun<SoftCurve>(high, count, stride, drive, previous, x, a);
}
SONVALE_WIDE_VECTORS
void ShapeTube(float* high, int count, int stride, double drive, double* previous, double* x, double* a) {
  ShapeRun<TubeCurve>(high, count, stride, drive, previous, x, a);
}

// The oversampler's delay and the half high-rate sample the mean over a step adds, rounded.
long long RoundTripLatency() { return std::lround(LOversampler().Delay() + 0.5 / kLOversampleFactor); }

}  // namespace

LSPDistortion::LSPDistortion() : LSoundProcessValues(kTable) {}

LSoundSource LSPDistortion::OpenSource(LSoundSource& input) {
  LDistortionSettings s;
  s.driveDb = OpenValue(kLSPDistortionDrive);
  s.curve = static_cast<int>(OpenValue(kLSPDistortionCurve));
  s.toneHz = OpenValue(kLSPDistortionTone);
  s.mix = OpenValue(kLSPDistortionMix) / 100.0;
  s.outputDb = OpenValue(kLSPDistortionOutput);
  return LMakeSource<LSRCDistortion>(input, s);
}

LSRCDistortion::LSRCDistortion(const LSoundSource& input, const LDistortionSettings& settings)
    : LSoundProcessLatent(input, RoundTripLatency()), s_(settings) {
  const double rate = GetSampleRate();
  drive_ = std::pow(10.0, s_.driveDb / 20.0);
  output_ = static_cast<float>(std::pow(10.0, s_.outputDb / 20.0));
  tone_ = LBiquad::LowPass(rate, std::min(s_.toneHz, 0.45 * rate), std::numbers::sqrt2 / 2);
  dcPole_ = std::exp(-2.0 * std::numbers::pi * kDcHz / rate);
  channels_.resize(GetChannels());
  for (Channel& c : channels_) c.dry.assign(static_cast<std::size_t>(Latency()), 0.0f);
  // The channels go up and down in pairs, side by side in the oversampler's lanes.
  for (int ch = 0; ch < GetChannels(); ch += 2) pairs_.emplace_back(std::min(2, GetChannels() - ch));
  shaped_.assign(static_cast<std::size_t>(GetChannels()), 0.0);
  in_.resize(2 * kBlock);
  high_.resize(2 * kBlock * kLOversampleFactor);
  driven_.resize(2 * kBlock * kLOversampleFactor + 2);
  integral_.resize(2 * kBlock * kLOversampleFactor + 2);
}

void LSRCDistortion::Reset() {
  for (LOversampler& pair : pairs_) pair.Reset();
  std::fill(shaped_.begin(), shaped_.end(), 0.0);
  for (Channel& c : channels_) {
    std::fill(c.dry.begin(), c.dry.end(), 0.0f);
    c.dryAt = 0;
    c.tone1 = c.tone2 = c.dcIn = c.dcOut = 0;
  }
}

void LSRCDistortion::Shape(float* high, int count, int stride, double* previous) {
  switch (s_.curve) {
    case kLSPCurveHard:
      ShapeHard(high, count, stride, drive_, previous, driven_.data(), integral_.data());
      break;
    case kLSPCurveTube:
      ShapeTube(high, count, stride, drive_, previous, driven_.data(), integral_.data());
      break;
    default:
      ShapeSoft(high, count, stride, drive_, previous, driven_.data(), integral_.data());
  }
}

// Tone: transposed direct form II; then the blocker of direct current; then the
// dry sound, late by the latency, mixed in. The state stays in registers for the
// run, the W channels side by side.
template <int W>
void LSRCDistortion::Finish(const float* shaped, float* block, int stride, int n, Channel* c) {
  const double b0 = tone_.b0, b1 = tone_.b1, b2 = tone_.b2, a1 = tone_.a1, a2 = tone_.a2, pole = dcPole_;
  const float wet = static_cast<float>(s_.mix) * output_, dry = static_cast<float>(1.0 - s_.mix);
  const int latency = static_cast<int>(Latency());
  double t1[W], t2[W], dcIn[W], dcOut[W];
  int at[W];
  float* late[W];
  for (int w = 0; w < W; ++w) {
    t1[w] = c[w].tone1, t2[w] = c[w].tone2, dcIn[w] = c[w].dcIn, dcOut[w] = c[w].dcOut;
    at[w] = c[w].dryAt;
    late[w] = c[w].dry.data();
  }
  for (int i = 0; i < n; ++i) {
    for (int w = 0; w < W; ++w) {
      const double x = shaped[i * W + w];
      const double y = b0 * x + t1[w];
      t1[w] = b1 * x - a1 * y + t2[w];
      t2[w] = b2 * x - a2 * y;
      dcOut[w] = y - dcIn[w] + pole * dcOut[w];
      dcIn[w] = y;
      float& sample = block[i * stride + w];
      float input = sample;
      if (latency > 0) {
        std::swap(input, late[w][at[w]]);
        if (++at[w] == latency) at[w] = 0;
      }
      sample = dry * input + wet * static_cast<float>(dcOut[w]);
    }
  }
  for (int w = 0; w < W; ++w) {
    c[w].tone1 = t1[w], c[w].tone2 = t2[w], c[w].dcIn = dcIn[w], c[w].dcOut = dcOut[w];
    c[w].dryAt = at[w];
  }
}

void LSRCDistortion::Process(float* buffer, long long frames, long long) {
  const int channels = GetChannels();
  for (long long at = 0; at < frames; at += kBlock) {
    const int n = static_cast<int>(std::min<long long>(kBlock, frames - at));
    float* block = buffer + at * channels;
    for (std::size_t p = 0; p < pairs_.size(); ++p) {
      const int first = 2 * static_cast<int>(p), width = std::min(2, channels - first);
      for (int i = 0; i < n; ++i)
        for (int c = 0; c < width; ++c) in_[i * width + c] = block[i * channels + first + c];
      pairs_[p].Up(in_.data(), n, high_.data());
      Shape(high_.data(), n * kLOversampleFactor * width, width, &shaped_[first]);
      pairs_[p].Down(high_.data(), n, in_.data());
      if (width == 2) Finish<2>(in_.data(), block + first, channels, n, &channels_[first]);
      else Finish<1>(in_.data(), block + first, channels, n, &channels_[first]);
    }
  }
}
