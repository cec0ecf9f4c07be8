#include "effects/eq_simple_3band.h"

#include "effects/filter_source.h"
#include "effects/sound_process_type.h"

namespace {

constexpr LSPValueSpec kSpecs[] = {
    {"Tiefen", "dB", -24.0, 24.0, 0.0, false},
    {"Mitten", "dB", -24.0, 24.0, 0.0, false},
    {"Höhen", "dB", -24.0, 24.0, 0.0, false},
};
constexpr LSPValuePreset kPresets[] = {
    {"Bass betonen", {6.0, 0.0, 0.0}},
    {"Höhen betonen", {0.0, 0.0, 6.0}},
    {"Sprache", {-4.0, 3.0, 2.0}},
    {"Badewanne", {5.0, -4.0, 5.0}},
};
constexpr LSPValueTable kTable{kLSPTypeEqSimple3Band, kSpecs, kPresets};
constexpr double kShelfQ = 0.7071;
constexpr double kMidQ = 0.7;

}  // namespace

LSPEqSimple3Band::LSPEqSimple3Band() : LSoundProcessValues(kTable) {}

LSoundSource LSPEqSimple3Band::OpenSource(LSoundSource& input) {
  const double rate = LFilterRate(input);
  std::vector<LBiquad> bands;
  // A flat knob costs nothing.
  const double low = OpenValue(kLSP3BandLow), mid = OpenValue(kLSP3BandMid), high = OpenValue(kLSP3BandHigh);
  if (low != 0.0) bands.push_back(LBiquad::LowShelf(rate, kLSP3BandLowHz, kShelfQ, low));
  if (mid != 0.0) bands.push_back(LBiquad::Bell(rate, kLSP3BandMidHz, kMidQ, mid));
  if (high != 0.0) bands.push_back(LBiquad::HighShelf(rate, kLSP3BandHighHz, kShelfQ, high));
  return LMakeSource<LSRCFilter>(input, std::move(bands));
}
