#include "effects/gain.h"

#include <algorithm>
#include <cmath>

#include "effects/sound_process_type.h"

namespace {

constexpr LSPValueSpec kSpecs[] = {{"Pegel", "dB", kLSPGainMinDb, kLSPGainMaxDb, 0.0, false}};
constexpr LSPValuePreset kPresets[] = {
    {"Viel leiser", {-12.0}},
    {"Halbe Lautstärke", {-6.0}},
    {"Doppelte Lautstärke", {6.0}},
    {"Viel lauter", {12.0}},
};
constexpr LSPValueTable kTable{kLSPTypeGain, kSpecs, kPresets};

}  // namespace

LSPGain::LSPGain() : LSoundProcessValues(kTable) {}
LSPGain::LSPGain(double gainDb) : LSoundProcessValues(kTable) { SetGainDb(gainDb); }

LSoundSource LSPGain::OpenSource(LSoundSource& input) { return LMakeSource<LSRCGain>(input, GetGainDb()); }

LSRCGain::LSRCGain(const LSoundSource& input, double gainDb) : LSoundProcessBase(input) {
  // Not a number leaves the sound as it is.
  double db = std::isfinite(gainDb) ? std::clamp(gainDb, kLSPGainMinDb, kLSPGainMaxDb) : 0.0;
  factor_ = static_cast<float>(std::pow(10.0, db / 20.0));
}

void LSRCGain::Read(float* buffer, long long frames) {
  ReadInput(buffer, frames);
  const float factor = factor_;
  const long long samples = frames * GetChannels();
  for (long long i = 0; i < samples; ++i) buffer[i] *= factor;
}
