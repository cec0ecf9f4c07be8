#include "effects/vibrato.h"

#include <cmath>
#include <numbers>

#include "effects/sound_process_type.h"

namespace {

constexpr LSPValueSpec kSpecs[] = {
    {"Rate", "Hz", 0.1, 14.0, 5.0, false},
    {"Tiefe", "Cent", 0.0, 200.0, 40.0, false},
};
constexpr LSPValuePreset kPresets[] = {
    {"Leicht", {5.0, 15.0}},
    {"Sänger", {5.5, 50.0}},
    {"Weit", {3.0, 100.0}},
    {"Leiern", {0.8, 30.0}},
};
constexpr LSPValueTable kTable{kLSPTypeVibrato, kSpecs, kPresets};

// A read position moving as swing * sin(2 pi hz t) plays the sound at 1 + swing * 2 pi hz / rate
// times its speed at the top, so this swing lifts the pitch by `cents` there.
double Swing(double hz, double cents, double rate) {
  return (std::exp2(cents / 1200.0) - 1.0) * rate / (2.0 * std::numbers::pi * hz);
}

long long LatencyOf(const LSoundSource& input, double hz, double cents) {
  const double rate = input.GetSampleRate() > 0 ? input.GetSampleRate() : 44100.0;
  return static_cast<long long>(std::ceil(Swing(hz, cents, rate))) + 2;
}

}  // namespace

LSPVibrato::LSPVibrato() : LSoundProcessValues(kTable) {}

LSoundSource LSPVibrato::OpenSource(LSoundSource& input) {
  return LMakeSource<LSRCVibrato>(input, OpenValue(kLSPVibratoRate), OpenValue(kLSPVibratoDepth));
}

LSRCVibrato::LSRCVibrato(const LSoundSource& input, double hz, double cents)
    : LSoundProcessLatent(input, LatencyOf(input, hz, cents)), lfo_(hz, GetSampleRate(), 0.0) {
  swing_ = Swing(hz, cents, GetSampleRate());
  lines_.assign(GetChannels(), LModulatedDelay(2.0 * static_cast<double>(Latency()) + 4.0));
}

void LSRCVibrato::Reset() {
  for (LModulatedDelay& line : lines_) line.Clear();
}

void LSRCVibrato::Process(float* buffer, long long frames, long long first) {
  const int channels = GetChannels();
  const double middle = static_cast<double>(Latency()) + 1.0;
  for (long long i = 0; i < frames; ++i) {
    float* frame = buffer + i * channels;
    const double delay = middle - swing_ * lfo_.At(first + i);
    for (int c = 0; c < channels; ++c) {
      lines_[c].Push(frame[c]);
      frame[c] = lines_[c].Read(delay);
    }
  }
}
