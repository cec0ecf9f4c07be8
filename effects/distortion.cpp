#include "effects/distortion.h"

#include <algorithm>
#include <cmath>
#include <numbers>

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
struct HardCurve {
  static double F(double x) {
    if (x >= 1.0) return 1.0;
    if (x <= -1.0) return -1.0;
    return 1.5 * x - 0.5 * x * x * x;
  }
  static double A(double x) {
    if (std::abs(x) >= 1.0) return std::abs(x) - 0.375;
    const double x2 = x * x;
    return 0.75 * x2 - 0.125 * x2 * x2;
  }
};

struct SoftCurve {
  // A quintic over twice the hard curve's width.
  static double F(double x) {
    const double u = 0.5 * x;
    if (u >= 1.0) return 1.0;
    if (u <= -1.0) return -1.0;
    const double u2 = u * u;
    return u * (15.0 - 10.0 * u2 + 3.0 * u2 * u2) / 8.0;
  }
  static double A(double x) {
    const double u = 0.5 * x;
    if (std::abs(u) >= 1.0) return 2.0 * (std::abs(u) - 0.3125);
    const double u2 = u * u;
    return 2.0 * u2 * (7.5 - 2.5 * u2 + 0.5 * u2 * u2) / 8.0;
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
template <class Curve>
void ShapeRun(float* high, int n, double drive, double& previous) {
  double last = previous, lastA = Curve::A(last);
  for (int i = 0; i < n; ++i) {
    const double x = drive * high[i];
    const double a = Curve::A(x);
    const double step = x - last;
    high[i] = static_cast<float>(std::abs(step) > 1e-6 ? (a - lastA) / step : Curve::F(0.5 * (x + last)));
    last = x;
    lastA = a;
  }
  previous = last;
}

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
    : LSoundProcessLatent(input, LOversampler().Latency()), s_(settings) {
  const double rate = GetSampleRate();
  drive_ = std::pow(10.0, s_.driveDb / 20.0);
  output_ = static_cast<float>(std::pow(10.0, s_.outputDb / 20.0));
  tone_ = LBiquad::LowPass(rate, std::min(s_.toneHz, 0.45 * rate), std::numbers::sqrt2 / 2);
  dcPole_ = std::exp(-2.0 * std::numbers::pi * kDcHz / rate);
  channels_.resize(GetChannels());
  for (Channel& c : channels_) c.dry.assign(static_cast<std::size_t>(Latency()), 0.0f);
  in_.resize(kBlock);
  out_.resize(kBlock);
  high_.resize(kBlock * kLOversampleFactor);
}

void LSRCDistortion::Reset() {
  for (Channel& c : channels_) {
    c.oversampler.Reset();
    std::fill(c.dry.begin(), c.dry.end(), 0.0f);
    c.dryAt = 0;
    c.tone1 = c.tone2 = c.dcIn = c.dcOut = c.shaped = 0;
  }
}

void LSRCDistortion::Shape(float* high, int n, double& previous) const {
  switch (s_.curve) {
    case kLSPCurveHard:
      ShapeRun<HardCurve>(high, n, drive_, previous);
      break;
    case kLSPCurveTube:
      ShapeRun<TubeCurve>(high, n, drive_, previous);
      break;
    default:
      ShapeRun<SoftCurve>(high, n, drive_, previous);
  }
}

void LSRCDistortion::Process(float* buffer, long long frames, long long) {
  const int channels = GetChannels();
  const float wet = static_cast<float>(s_.mix) * output_, dry = static_cast<float>(1.0 - s_.mix);
  const int latency = static_cast<int>(Latency());
  for (long long at = 0; at < frames; at += kBlock) {
    const int n = static_cast<int>(std::min<long long>(kBlock, frames - at));
    float* block = buffer + at * channels;
    for (int ch = 0; ch < channels; ++ch) {
      Channel& c = channels_[ch];
      for (int i = 0; i < n; ++i) in_[i] = block[i * channels + ch];
      c.oversampler.Up(in_.data(), n, high_.data());
      Shape(high_.data(), n * kLOversampleFactor, c.shaped);
      c.oversampler.Down(high_.data(), n, out_.data());
      for (int i = 0; i < n; ++i) {
        // Tone: transposed direct form II; then the blocker of direct current.
        const double x = out_[i];
        const double y = tone_.b0 * x + c.tone1;
        c.tone1 = tone_.b1 * x - tone_.a1 * y + c.tone2;
        c.tone2 = tone_.b2 * x - tone_.a2 * y;
        c.dcOut = y - c.dcIn + dcPole_ * c.dcOut;
        c.dcIn = y;
        float late = in_[i];
        if (latency > 0) {
          std::swap(late, c.dry[c.dryAt]);
          if (++c.dryAt == latency) c.dryAt = 0;
        }
        block[i * channels + ch] = dry * late + wet * static_cast<float>(c.dcOut);
      }
    }
  }
}
