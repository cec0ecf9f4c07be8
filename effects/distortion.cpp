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
// Where the tube curve sits on the soft one: off its middle.
constexpr float kTubeBias = 0.4f;
constexpr double kDcHz = 10.0;

// A rational curve close to tanh that meets the rails at +-3 with a level
// tangent, cheaper than tanh or a square root.
float Soft(float x) {
  x = std::clamp(x, -3.0f, 3.0f);
  return x * (27.0f + x * x) / (27.0f + 9.0f * x * x);
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
  drive_ = static_cast<float>(std::pow(10.0, s_.driveDb / 20.0));
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
    c.tone1 = c.tone2 = c.dcIn = c.dcOut = 0;
  }
}

void LSRCDistortion::Shape(float* high, int n) const {
  const float drive = drive_;
  switch (s_.curve) {
    case kLSPCurveHard:
      // A cubic that meets the rails with a level tangent: hard, yet smooth enough
      // that its harmonics fall fast.
      for (int i = 0; i < n; ++i) {
        const float x = std::clamp(drive * high[i], -1.0f, 1.0f);
        high[i] = 1.5f * x - 0.5f * x * x * x;
      }
      break;
    case kLSPCurveTube: {
      const float offset = Soft(kTubeBias), scale = 1.0f / (1.0f + Soft(kTubeBias));
      for (int i = 0; i < n; ++i) high[i] = (Soft(drive * high[i] + kTubeBias) - offset) * scale;
      break;
    }
    default:
      for (int i = 0; i < n; ++i) high[i] = Soft(drive * high[i]);
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
      Shape(high_.data(), n * kLOversampleFactor);
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
