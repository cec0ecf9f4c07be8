#include "effects/tremolo.h"

#include <algorithm>
#include <cmath>

#include "effects/modulated_delay.h"
#include "effects/sound_process_type.h"

namespace {

constexpr LSPValueSpec kSpecs[] = {
    {"Rate", "Hz", 0.1, 20.0, 4.0, false},
    {"Tiefe", "%", 0.0, 100.0, 50.0, false},
    {"Wellenform", "0 = Sinus, 1 = Dreieck, 2 = Rechteck", 0.0, 2.0, kLSPWaveSine, true},
    {"Stereophase", "°", 0.0, 180.0, 0.0, false},
};
constexpr LSPValuePreset kPresets[] = {
    {"Sanft", {3.0, 30.0, kLSPWaveSine, 0.0}},
    {"Pulsierend", {6.0, 80.0, kLSPWaveSquare, 0.0}},
    {"Hubschrauber", {12.0, 100.0, kLSPWaveTriangle, 0.0}},
    {"Kreisend", {2.0, 60.0, kLSPWaveSine, 180.0}},
};
constexpr LSPValueTable kTable{kLSPTypeTremolo, kSpecs, kPresets};

// The oscillator from -1 to 1.
double Wave(int wave, double phase) {
  switch (wave) {
    case kLSPWaveTriangle:
      return 4.0 * std::abs(phase - 0.5) - 1.0;
    case kLSPWaveSquare:
      // Steep but not instant, so the edges do not click.
      return std::clamp(8.0 * LLfoSine(phase), -1.0, 1.0);
    default:
      return LLfoSine(phase);
  }
}

}  // namespace

LSPTremolo::LSPTremolo() : LSoundProcessValues(kTable) {}

LSoundSource LSPTremolo::OpenSource(LSoundSource& input) {
  return LMakeSource<LSRCTremolo>(input, OpenValue(kLSPTremoloRate), OpenValue(kLSPTremoloDepth) / 100.0,
                                  static_cast<int>(OpenValue(kLSPTremoloWave)),
                                  OpenValue(kLSPTremoloStereoPhase) / 360.0);
}

LSRCTremolo::LSRCTremolo(const LSoundSource& input, double hz, double depth, int wave, double stereoTurns)
    : LSoundProcessLatent(input, 0), hz_(hz), depth_(depth), stereoTurns_(stereoTurns), wave_(wave) {}

void LSRCTremolo::Process(float* buffer, long long frames, long long first) {
  const int channels = GetChannels();
  const double rate = GetSampleRate();
  for (long long i = 0; i < frames; ++i) {
    float* frame = buffer + i * channels;
    const double phase = LLfoPhase(hz_, rate, first + i);
    const float gain = static_cast<float>(1.0 - depth_ * (1.0 - Wave(wave_, phase)) / 2.0);
    if (channels >= 2 && stereoTurns_ != 0.0) {
      const double other = phase + stereoTurns_;
      const float gain2 = static_cast<float>(1.0 - depth_ * (1.0 - Wave(wave_, other - std::floor(other))) / 2.0);
      for (int c = 0; c < channels; ++c) frame[c] *= c % 2 ? gain2 : gain;
    } else {
      for (int c = 0; c < channels; ++c) frame[c] *= gain;
    }
  }
}
