#include "effects/am_radio.h"

#include <algorithm>
#include <cmath>

#include "effects/filter_source.h"
#include "effects/modulation.h"
#include "effects/preroll.h"
#include "effects/sound_process_type.h"

namespace {

constexpr LSPValueSpec kSpecs[] = {
    {"Untere Grenze", "Hz", 30.0, 1000.0, 150.0, false},
    {"Obere Grenze", "Hz", 1500.0, 10000.0, 4500.0, false},
    {"Rauschen", "dB", -90.0, -10.0, -45.0, false},
    {"Schwund", "%", 0.0, 100.0, 30.0, false},
    {"Schwundrate", "Hz", 0.01, 2.0, 0.2, false},
};
constexpr LSPValuePreset kPresets[] = {
    {"Klarer Empfang", {100.0, 5000.0, -60.0, 0.0, 0.2}},
    {"Fernempfang", {200.0, 3500.0, -35.0, 60.0, 0.3}},
    {"Nachts auf Mittelwelle", {250.0, 3000.0, -30.0, 85.0, 0.5}},
};
constexpr LSPValueTable kTable{kLSPTypeAMRadio, kSpecs, kPresets};

constexpr int kOrder = 4;
// The second swell runs at the golden ratio of the first, so the fading never repeats exactly.
constexpr double kSecondSwell = 1.618;

std::vector<LBiquad> Band(double rate, double lowHz, double highHz) {
  std::vector<LBiquad> sections = LBiquadButterworth(rate, lowHz, kOrder, true, 1.0);
  for (const LBiquad& s : LBiquadButterworth(rate, highHz, kOrder, false, 1.0)) sections.push_back(s);
  return sections;
}

}  // namespace

LSPAMRadio::LSPAMRadio() : LSoundProcessValues(kTable) {}

LSoundSource LSPAMRadio::OpenSource(LSoundSource& input) {
  return LMakeSource<LSRCAMRadio>(input, OpenValue(kLSPAMRadioLowHz), OpenValue(kLSPAMRadioHighHz),
                                  OpenValue(kLSPAMRadioNoiseDb), OpenValue(kLSPAMRadioFade),
                                  OpenValue(kLSPAMRadioFadeHz));
}

LSRCAMRadio::LSRCAMRadio(const LSoundSource& input, double lowHz, double highHz, double noiseDb, double fadePercent,
                         double fadeHz)
    // Uniform noise of peak a has an RMS of a / sqrt(3).
    : LSoundProcessBase(input),
      noise_(static_cast<float>(std::sqrt(3.0) * std::pow(10.0, noiseDb / 20.0))),
      fade_(fadePercent / 100.0),
      fadeHz_(fadeHz),
      band_(Band(LFilterRate(input), lowHz, highHz), GetChannels()) {}

void LSRCAMRadio::Read(float* buffer, long long frames) {
  ReadInput(buffer, frames);
  const int channels = GetChannels();
  const double rate = GetSampleRate();
  for (long long i = 0; i < frames; ++i) {
    const long long at = position_ + i;
    float gain = 1.0f;
    if (fade_ > 0) {
      const double swell = 0.5 + 0.25 * LLfoSine(at, fadeHz_, rate) + 0.25 * LLfoSine(at, fadeHz_ * kSecondSwell, rate);
      gain = static_cast<float>(1.0 - fade_ * swell);
    }
    // One receiver: the same hiss in every channel.
    const float hiss = noise_ * LHashNoise(at, 0);
    for (int c = 0; c < channels; ++c) buffer[i * channels + c] = buffer[i * channels + c] * gain + hiss;
  }
  position_ += frames;
  band_.Process(buffer, frames);
}

void LSRCAMRadio::Seek(long long frame) {
  band_.Reset();
  const long long preroll = LPrerollFrames(*this);
  position_ = std::max(0LL, frame - preroll);
  LSeekWithPreroll(*this, frame, preroll);
}
