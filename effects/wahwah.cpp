#include "effects/wahwah.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "effects/modulation.h"
#include "effects/preroll.h"
#include "effects/sound_process_type.h"

namespace {

constexpr LSPValueSpec kSpecs[] = {
    {"Rate", "Hz", 0.05, 10.0, 1.5, false},
    {"Tiefe", "%", 0.0, 100.0, 80.0, false},
    {"Resonanz", "Q", 0.5, 20.0, 4.0, false},
    {"Untere Frequenz", "Hz", 100.0, 2000.0, 350.0, false},
    {"Obere Frequenz", "Hz", 500.0, 8000.0, 2500.0, false},
    {"Mischung", "%", 0.0, 100.0, 100.0, false},
};
constexpr LSPValuePreset kPresets[] = {
    {"Funk", {3.0, 100.0, 6.0, 400.0, 2200.0, 100.0}},
    {"Langsam", {0.5, 90.0, 5.0, 300.0, 3000.0, 100.0}},
    {"Dezent", {1.0, 60.0, 2.0, 500.0, 2000.0, 50.0}},
};
constexpr LSPValueTable kTable{kLSPTypeWahwah, kSpecs, kPresets};

}  // namespace

LSPWahwah::LSPWahwah() : LSoundProcessValues(kTable) {}

LSoundSource LSPWahwah::OpenSource(LSoundSource& input) {
  return LMakeSource<LSRCWahwah>(input, OpenValue(kLSPWahRate), OpenValue(kLSPWahDepth), OpenValue(kLSPWahResonance),
                                 OpenValue(kLSPWahLowHz), OpenValue(kLSPWahHighHz), OpenValue(kLSPWahMix));
}

LSRCWahwah::LSRCWahwah(const LSoundSource& input, double rateHz, double depthPercent, double q, double lowHz,
                       double highHz, double mixPercent)
    : LSoundProcessBase(input),
      rateHz_(rateHz),
      depth_(depthPercent / 100.0),
      k_(1.0 / q),
      // A range given upside down is swept all the same.
      lowHz_(std::min(lowHz, highHz)),
      highHz_(std::max(lowHz, highHz)),
      mix_(mixPercent / 100.0),
      state_(2 * static_cast<std::size_t>(GetChannels()), 0.0) {}

LSRCWahwah::Tuning LSRCWahwah::TuningAt(long long frame) const {
  const double rate = GetSampleRate();
  const long long step = frame - frame % kLModulationStep;
  const double u = 0.5 + 0.5 * depth_ * LLfoSine(step, rateHz_, rate);
  const double hz = std::min(lowHz_ * std::pow(highHz_ / lowHz_, u), rate * 0.45);
  const double g = std::tan(std::numbers::pi * hz / rate);
  const double a1 = 1.0 / (1.0 + g * (g + k_));
  return {a1, g * a1, g * g * a1};
}

void LSRCWahwah::Read(float* buffer, long long frames) {
  ReadInput(buffer, frames);
  const int channels = GetChannels();
  Tuning t = TuningAt(position_);
  for (long long i = 0; i < frames; ++i) {
    const long long at = position_ + i;
    if (at % kLModulationStep == 0) t = TuningAt(at);
    for (int c = 0; c < channels; ++c) {
      double& ic1 = state_[2 * c];
      double& ic2 = state_[2 * c + 1];
      const double x = buffer[i * channels + c];
      const double v3 = x - ic2;
      const double v1 = t.a1 * ic1 + t.a2 * v3;
      const double v2 = ic2 + t.a2 * ic1 + t.a3 * v3;
      ic1 = 2.0 * v1 - ic1;
      ic2 = 2.0 * v2 - ic2;
      // k * band-pass peaks at unity.
      buffer[i * channels + c] = static_cast<float>((1.0 - mix_) * x + mix_ * k_ * v1);
    }
  }
  position_ += frames;
}

void LSRCWahwah::Seek(long long frame) {
  std::fill(state_.begin(), state_.end(), 0.0);
  const long long preroll = LPrerollFrames(*this);
  position_ = std::max(0LL, frame - preroll);
  LSeekWithPreroll(*this, frame, preroll);
}
