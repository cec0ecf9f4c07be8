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
  if (double db = OpenValue(kLSP3BandLow); db != 0.0) bands.push_back(LBiquad::LowShelf(rate, kLSP3BandLowHz, kShelfQ, db));
  if (double db = OpenValue(kLSP3BandMid); db != 0.0) bands.push_back(LBiquad::Bell(rate, kLSP3BandMidHz, kMidQ, db));
  if (double db = OpenValue(kLSP3BandHigh); db != 0.0)
    bands.push_back(LBiquad::HighShelf(rate, kLSP3BandHighHz, kShelfQ, db));
  return LMakeSource<LSRCFilter>(input, std::move(bands));
}
