#include "effects/parametric_eq.h"

#include "effects/filter_source.h"
#include "effects/sound_process_type.h"

namespace {

constexpr LSPValueSpec kSpecs[] = {
    {"Frequenz", "Hz", 20.0, 20000.0, 1000.0, false},
    {"Verstärkung", "dB", -24.0, 24.0, 0.0, false},
    {"Güte", "", 0.1, 20.0, 1.0, false},
    {"Typ", "0 = Glocke, 1 = Kuhschwanz tief, 2 = Kuhschwanz hoch, 3 = Kerbe", 0.0, 3.0, 0.0, true},
};
constexpr LSPValuePreset kPresets[] = {
    {"Präsenz", {3000.0, 4.0, 1.0, kLSPBandBell}},
    {"Dröhnen dämpfen", {250.0, -6.0, 1.4, kLSPBandBell}},
    {"Bassanhebung", {100.0, 6.0, 0.7, kLSPBandLowShelf}},
    {"Glanz", {8000.0, 4.0, 0.7, kLSPBandHighShelf}},
    {"Netzbrummen 50 Hz", {50.0, 0.0, 10.0, kLSPBandNotch}},
};
constexpr LSPValueTable kTable{kLSPTypeParametricEqBand, kSpecs, kPresets};

}  // namespace

LSPParametricEqBand::LSPParametricEqBand() : LSoundProcessValues(kTable) {}

LSoundSource LSPParametricEqBand::OpenSource(LSoundSource& input) {
  const double rate = LFilterRate(input);
  const double hz = OpenValue(kLSPBandHz), db = OpenValue(kLSPBandGain), q = OpenValue(kLSPBandQ);
  LBiquad band;
  switch (static_cast<int>(OpenValue(kLSPBandShape))) {
    case kLSPBandLowShelf: band = LBiquad::LowShelf(rate, hz, q, db); break;
    case kLSPBandHighShelf: band = LBiquad::HighShelf(rate, hz, q, db); break;
    case kLSPBandNotch: band = LBiquad::Notch(rate, hz, q); break;
    default: band = LBiquad::Bell(rate, hz, q, db); break;
  }
  return LMakeSource<LSRCFilter>(input, std::vector<LBiquad>{band});
}
