#include "effects/pass_filter.h"

#include <cmath>

#include "effects/filter_source.h"
#include "effects/sound_process_type.h"

namespace {

constexpr LSPValueSpec kHighSpecs[] = {
    {"Frequenz", "Hz", 10.0, 20000.0, 100.0, false},
    {"Ordnung", "dB/Oktave", 6.0, 48.0, 12.0, true},
    {"Resonanz", "dB", 0.0, 24.0, 0.0, false},
};
constexpr LSPValueSpec kLowSpecs[] = {
    {"Frequenz", "Hz", 10.0, 20000.0, 5000.0, false},
    {"Ordnung", "dB/Oktave", 6.0, 48.0, 12.0, true},
    {"Resonanz", "dB", 0.0, 24.0, 0.0, false},
};
constexpr LSPValuePreset kHighPresets[] = {
    {"Trittschall entfernen", {40.0, 24.0, 0.0}},
    {"Brummen entfernen", {120.0, 48.0, 0.0}},
    {"Sprache", {80.0, 12.0, 0.0}},
    {"Telefon", {300.0, 24.0, 0.0}},
};
constexpr LSPValuePreset kLowPresets[] = {
    {"Rauschen dämpfen", {8000.0, 12.0, 0.0}},
    {"Telefon", {3400.0, 24.0, 0.0}},
    {"Dumpf", {800.0, 12.0, 0.0}},
    {"Resonanter Synthesizer", {1200.0, 24.0, 12.0}},
};
constexpr LSPValueTable kHighTable{kLSPTypeHighPass, kHighSpecs, kHighPresets};
constexpr LSPValueTable kLowTable{kLSPTypeLowPass, kLowSpecs, kLowPresets};

std::vector<LBiquad> Sections(const LSoundProcessValues& p, const LSoundSource& input, bool highPass) {
  const double rate = LFilterRate(input);
  const int order = static_cast<int>(std::lround(p.OpenValue(kLSPPassSlope) / 6.0));
  return LBiquadButterworth(rate, p.OpenValue(kLSPPassHz), order, highPass,
                            std::pow(10.0, p.OpenValue(kLSPPassResonance) / 20.0));
}

}  // namespace

LSPHighPass::LSPHighPass() : LSoundProcessValues(kHighTable) {}
LSPLowPass::LSPLowPass() : LSoundProcessValues(kLowTable) {}

LSoundSource LSPHighPass::OpenSource(LSoundSource& input) {
  return LMakeSource<LSRCFilter>(input, Sections(*this, input, true));
}

LSoundSource LSPLowPass::OpenSource(LSoundSource& input) {
  return LMakeSource<LSRCFilter>(input, Sections(*this, input, false));
}
