#include "effects/flanger.h"

#include <algorithm>
#include <cmath>

#include "effects/preroll.h"
#include "effects/sound_process_type.h"

namespace {

constexpr LSPValueSpec kSpecs[] = {
    {"Verzögerung", "ms", 0.1, 10.0, 1.0, false},
    {"Tiefe", "ms", 0.0, 10.0, 2.0, false},
    {"Rate", "Hz", 0.05, 5.0, 0.3, false},
    {"Rückkopplung", "%", -95.0, 95.0, 40.0, false},
    {"Mischung", "%", 0.0, 100.0, 50.0, false},
};
constexpr LSPValuePreset kPresets[] = {
    {"Sanft", {1.0, 1.5, 0.2, 20.0, 40.0}},
    {"Düsenjet", {0.5, 4.0, 0.1, 80.0, 50.0}},
    {"Metallisch", {2.0, 1.0, 0.5, -70.0, 50.0}},
    {"Schnell", {1.0, 2.0, 2.0, 50.0, 50.0}},
};
constexpr LSPValueTable kTable{kLSPTypeFlanger, kSpecs, kPresets};

}  // namespace

LSPFlanger::LSPFlanger() : LSoundProcessValues(kTable) {}

LSoundSource LSPFlanger::OpenSource(LSoundSource& input) {
  LFlangerSettings s;
  s.delayMs = OpenValue(kLSPFlangerDelay);
  s.depthMs = OpenValue(kLSPFlangerDepth);
  s.hz = OpenValue(kLSPFlangerRate);
  s.feedback = OpenValue(kLSPFlangerFeedback) / 100.0;
  s.mix = OpenValue(kLSPFlangerMix) / 100.0;
  return LMakeSource<LSRCFlanger>(input, s);
}

LSRCFlanger::LSRCFlanger(const LSoundSource& input, const LFlangerSettings& settings)
    : LSoundProcessLatent(input, 0), s_(settings) {
  const double perMs = GetSampleRate() / 1000.0;
  delay_ = s_.delayMs * perMs;
  depth_ = s_.depthMs * perMs;
  lines_.assign(GetChannels(), LModulatedDelay(delay_ + depth_ + 4.0));
  // A quarter turn on, the sine is the cosine the sweep starts its rise from.
  for (int side = 0; side < std::min<int>(GetChannels(), 2); ++side)
    lfos_.emplace_back(s_.hz, GetSampleRate(), 0.25 + side * 0.25);
}

void LSRCFlanger::Reset() {
  for (LModulatedDelay& line : lines_) line.Clear();
}

long long LSRCFlanger::Preroll() const {
  const double trips = std::log(1e-4) / std::log(std::max(std::abs(s_.feedback), 0.01));
  return static_cast<long long>(trips * (delay_ + depth_ + 1.0)) + LPrerollFrames(*this);
}

void LSRCFlanger::Process(float* buffer, long long frames, long long first) {
  const int channels = GetChannels();
  const float dry = static_cast<float>(1.0 - s_.mix);
  const float wet = static_cast<float>(s_.mix);
  const float feedback = static_cast<float>(s_.feedback);
  for (long long i = 0; i < frames; ++i) {
    float* frame = buffer + i * channels;
    double delays[2];
    for (std::size_t l = 0; l < lfos_.size(); ++l) delays[l] = delay_ + depth_ * 0.5 * (1.0 - lfos_[l].At(first + i));
    for (int c = 0; c < channels; ++c) {
      // Read(1) is the newest frame in the line, one before this one.
      const float delayed = lines_[c].Read(delays[c % 2]);
      lines_[c].Push(frame[c] + feedback * delayed);
      frame[c] = dry * frame[c] + wet * delayed;
    }
  }
}
