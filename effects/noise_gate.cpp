#include "effects/noise_gate.h"

#include <algorithm>
#include <cmath>

#include "effects/preroll.h"
#include "effects/sound_process_type.h"

namespace {

constexpr LSPValueSpec kSpecs[] = {
    {"Schwelle", "dB", -80.0, 0.0, -40.0, false},
    {"Dämpfung", "dB", 0.0, 100.0, 40.0, false},
    {"Angriff", "ms", 0.1, 500.0, 1.0, false},
    {"Haltezeit", "ms", 0.0, 2000.0, 50.0, false},
    {"Freigabe", "ms", 1.0, 5000.0, 100.0, false},
};
constexpr LSPValuePreset kPresets[] = {
    {"Sprache", {-45.0, 30.0, 2.0, 100.0, 150.0}},
    {"Rauschen entfernen", {-50.0, 60.0, 1.0, 50.0, 100.0}},
    {"Schlagzeug", {-30.0, 80.0, 0.1, 20.0, 50.0}},
};
constexpr LSPValueTable kTable{kLSPTypeNoiseGate, kSpecs, kPresets};

constexpr double kDetectorMs = 5.0;

double Coefficient(double ms, double rate) { return std::exp(-1000.0 / (std::max(ms, 1e-3) * rate)); }

}  // namespace

LSPNoiseGate::LSPNoiseGate() : LSoundProcessValues(kTable) {}

LSoundSource LSPNoiseGate::OpenSource(LSoundSource& input) {
  return LMakeSource<LSRCNoiseGate>(input, OpenValue(kLSPGateThreshold), OpenValue(kLSPGateRange),
                                    OpenValue(kLSPGateAttack), OpenValue(kLSPGateHold), OpenValue(kLSPGateRelease));
}

LSRCNoiseGate::LSRCNoiseGate(const LSoundSource& input, double thresholdDb, double rangeDb, double attackMs,
                             double holdMs, double releaseMs)
    : LSoundProcessBase(input), threshold_(std::pow(10.0, thresholdDb / 20.0)), rangeDb_(rangeDb), gainDb_(-rangeDb) {
  const double rate = GetSampleRate();
  attack_ = Coefficient(attackMs, rate);
  release_ = Coefficient(releaseMs, rate);
  decay_ = Coefficient(kDetectorMs, rate);
  holdFrames_ = std::llround(holdMs * rate / 1000.0);
}

void LSRCNoiseGate::Read(float* buffer, long long frames) {
  ReadInput(buffer, frames);
  const int channels = GetChannels();
  for (long long i = 0; i < frames; ++i) {
    float* frame = buffer + i * channels;
    double peak = 0;
    for (int c = 0; c < channels; ++c) peak = std::max(peak, static_cast<double>(std::abs(frame[c])));
    level_ = std::max(peak, level_ * decay_);
    double target = 0.0;
    if (level_ >= threshold_) {
      holdLeft_ = holdFrames_;
    } else if (holdLeft_ > 0) {
      --holdLeft_;
    } else {
      target = -rangeDb_;
    }
    gainDb_ = target + (target > gainDb_ ? attack_ : release_) * (gainDb_ - target);
    const float gain = static_cast<float>(std::pow(10.0, gainDb_ / 20.0));
    for (int c = 0; c < channels; ++c) frame[c] *= gain;
  }
}

void LSRCNoiseGate::Seek(long long frame) {
  level_ = 0;
  holdLeft_ = 0;
  gainDb_ = -rangeDb_;
  LSeekWithPreroll(*this, frame, LPrerollFrames(*this));
}
