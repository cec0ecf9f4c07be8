#include "effects/phaser.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "effects/modulation.h"
#include "effects/preroll.h"
#include "effects/sound_process_type.h"

namespace {

constexpr LSPValueSpec kSpecs[] = {
    {"Stufen", "", 1.0, 12.0, 4.0, true},
    {"Rate", "Hz", 0.01, 10.0, 0.5, false},
    {"Tiefe", "%", 0.0, 100.0, 70.0, false},
    {"Rückkopplung", "%", -95.0, 95.0, 40.0, false},
    {"Frequenz", "Hz", 50.0, 5000.0, 800.0, false},
    {"Mischung", "%", 0.0, 100.0, 50.0, false},
};
constexpr LSPValuePreset kPresets[] = {
    {"Sanft", {4.0, 0.2, 50.0, 20.0, 600.0, 50.0}},
    {"Tief kreisend", {8.0, 0.1, 90.0, 60.0, 400.0, 50.0}},
    {"Schnell", {6.0, 3.0, 60.0, 30.0, 1000.0, 50.0}},
};
constexpr LSPValueTable kTable{kLSPTypePhaser, kSpecs, kPresets};

constexpr double kOctavesAtFullDepth = 2.0;

}  // namespace

LSPPhaser::LSPPhaser() : LSoundProcessValues(kTable) {}

LSoundSource LSPPhaser::OpenSource(LSoundSource& input) {
  return LMakeSource<LSRCPhaser>(input, static_cast<int>(OpenValue(kLSPPhaserStages)), OpenValue(kLSPPhaserRate),
                                 OpenValue(kLSPPhaserDepth), OpenValue(kLSPPhaserFeedback), OpenValue(kLSPPhaserHz),
                                 OpenValue(kLSPPhaserMix));
}

LSRCPhaser::LSRCPhaser(const LSoundSource& input, int stages, double rateHz, double depthPercent,
                       double feedbackPercent, double centreHz, double mixPercent)
    : LSoundProcessBase(input),
      stages_(stages),
      rateHz_(rateHz),
      octaves_(kOctavesAtFullDepth * depthPercent / 100.0),
      feedback_(feedbackPercent / 100.0),
      centreHz_(centreHz),
      mix_(mixPercent / 100.0),
      state_(static_cast<std::size_t>(GetChannels()) * (1 + 2 * stages), 0.0) {}

// The all-pass coefficient of the step that holds `frame`: -1 < a < 1, break frequency where it is swept.
double LSRCPhaser::Coefficient(long long frame) const {
  const double rate = GetSampleRate();
  const long long step = frame - frame % kLModulationStep;
  const double hz = std::clamp(centreHz_ * std::exp2(octaves_ * LLfoSine(step, rateHz_, rate)), 10.0, rate * 0.45);
  const double t = std::tan(std::numbers::pi * hz / rate);
  return (t - 1.0) / (t + 1.0);
}

void LSRCPhaser::Read(float* buffer, long long frames) {
  ReadInput(buffer, frames);
  const int channels = GetChannels();
  const std::size_t stride = 1 + 2 * static_cast<std::size_t>(stages_);
  double a = Coefficient(position_);
  for (long long i = 0; i < frames; ++i) {
    const long long at = position_ + i;
    if (at % kLModulationStep == 0) a = Coefficient(at);
    for (int c = 0; c < channels; ++c) {
      double* s = state_.data() + c * stride;
      const double dry = buffer[i * channels + c];
      double x = dry + feedback_ * s[0];
      for (int k = 0; k < stages_; ++k) {
        double& x1 = s[1 + 2 * k];
        double& y1 = s[2 + 2 * k];
        // The part from the last frame first: only one multiply and add wait for x.
        const double y = a * x + (x1 - a * y1);
        x1 = x;
        y1 = y;
        x = y;
      }
      s[0] = x;
      buffer[i * channels + c] = static_cast<float>((1.0 - mix_) * dry + mix_ * x);
    }
  }
  position_ += frames;
}

void LSRCPhaser::Seek(long long frame) {
  std::fill(state_.begin(), state_.end(), 0.0);
  const long long preroll = LPrerollFrames(*this);
  position_ = std::max(0LL, frame - preroll);
  LSeekWithPreroll(*this, frame, preroll);
}
