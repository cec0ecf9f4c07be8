#include "effects/chorus.h"

#include <algorithm>
#include <cmath>

#include "effects/sound_process_type.h"

namespace {

constexpr LSPValueSpec kSpecs[] = {
    {"Stimmen", "", 1.0, 4.0, 2.0, true},
    {"Verzögerung", "ms", 5.0, 40.0, 20.0, false},
    {"Tiefe", "ms", 0.0, 10.0, 3.0, false},
    {"Rate", "Hz", 0.05, 5.0, 0.8, false},
    {"Mischung", "%", 0.0, 100.0, 50.0, false},
};
constexpr LSPValuePreset kPresets[] = {
    {"Dezent", {1.0, 15.0, 2.0, 0.5, 30.0}},
    {"Klassisch", {2.0, 20.0, 4.0, 1.0, 50.0}},
    {"Ensemble", {4.0, 25.0, 6.0, 0.6, 60.0}},
    {"Schwebend", {3.0, 30.0, 8.0, 0.2, 50.0}},
};
constexpr LSPValueTable kTable{kLSPTypeChorus, kSpecs, kPresets};

// How much faster each further voice's oscillator runs.
constexpr double kVoiceRateStep = 0.13;

}  // namespace

LSPChorus::LSPChorus() : LSoundProcessValues(kTable) {}

LSoundSource LSPChorus::OpenSource(LSoundSource& input) {
  LChorusSettings s;
  s.voices = static_cast<int>(OpenValue(kLSPChorusVoices));
  s.delayMs = OpenValue(kLSPChorusDelay);
  s.depthMs = std::min(OpenValue(kLSPChorusDepth), s.delayMs - 1.0);
  s.hz = OpenValue(kLSPChorusRate);
  s.mix = OpenValue(kLSPChorusMix) / 100.0;
  return LMakeSource<LSRCChorus>(input, s);
}

LSRCChorus::LSRCChorus(const LSoundSource& input, const LChorusSettings& settings)
    : LSoundProcessLatent(input, 0), s_(settings) {
  const double perMs = GetSampleRate() / 1000.0;
  delay_ = s_.delayMs * perMs;
  depth_ = s_.depthMs * perMs;
  lines_.assign(GetChannels(), LModulatedDelay(delay_ + depth_ + 4.0));
  for (int side = 0; side < std::min<int>(GetChannels(), 2); ++side)
    for (int v = 0; v < s_.voices; ++v)
      lfos_.emplace_back(s_.hz * (1.0 + kVoiceRateStep * v), GetSampleRate(),
                         static_cast<double>(v) / s_.voices + side * 0.25);
}

void LSRCChorus::Reset() {
  for (LModulatedDelay& line : lines_) line.Clear();
}

long long LSRCChorus::Preroll() const { return static_cast<long long>(delay_ + depth_) + 4; }

void LSRCChorus::Process(float* buffer, long long frames, long long first) {
  const int channels = GetChannels();
  const int voices = s_.voices;
  const float dry = static_cast<float>(1.0 - s_.mix);
  const float wet = static_cast<float>(s_.mix / s_.voices);
  for (long long i = 0; i < frames; ++i) {
    float* frame = buffer + i * channels;
    for (int c = 0; c < channels; ++c) lines_[c].Push(frame[c]);
    double delays[8];
    for (std::size_t l = 0; l < lfos_.size(); ++l) delays[l] = delay_ + 1.0 + depth_ * lfos_[l].At(first + i);
    for (int c = 0; c < channels; ++c) {
      float sum = 0.0f;
      // Read(1) is the frame just pushed.
      for (int v = 0; v < voices; ++v) sum += lines_[c].Read(delays[(c % 2) * voices + v]);
      frame[c] = dry * frame[c] + wet * sum;
    }
  }
}
