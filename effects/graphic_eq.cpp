#include "effects/graphic_eq.h"

#include <algorithm>
#include <array>
#include <complex>
#include <numbers>
#include <cmath>

#include "effects/filter_source.h"
#include "effects/point_curve.h"
#include "effects/sound_process_type.h"

namespace {

constexpr double kOctaves[] = {31.5, 63, 125, 250, 500, 1000, 2000, 4000, 8000, 16000};
constexpr double kHalfOctaves[] = {22.4, 31.5, 45,   63,   90,   125,  180,  250,  355,  500,
                                   710,  1000, 1400, 2000, 2800, 4000, 5600, 8000, 11200, 16000};
constexpr double kThirdOctaves[] = {20,   25,   31.5, 40,   50,   63,   80,   100,   125,   160,   200,
                                    250,  315,  400,  500,  630,  800,  1000, 1250,  1600,  2000,  2500,
                                    3150, 4000, 5000, 6300, 8000, 10000, 12500, 16000, 20000};

constexpr std::array<LSPValueSpec, 1 + kLSPGraphicMaxBands> MakeSpecs() {
  std::array<LSPValueSpec, 1 + kLSPGraphicMaxBands> specs{};
  specs[0] = {"Bänder", "", 10.0, 31.0, 10.0, true};
  for (int i = 1; i <= kLSPGraphicMaxBands; ++i) specs[i] = {"Band", "dB", -24.0, 24.0, 0.0, false};
  return specs;
}
constexpr std::array<LSPValueSpec, 1 + kLSPGraphicMaxBands> kSpecs = MakeSpecs();
//                                          31.5  63   125  250  500   1k   2k   4k   8k  16k
constexpr LSPValuePreset kPresets[] = {
    {"Bass betonen", {10, 6.0, 5.0, 3.0, 1.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0}},
    {"Höhen betonen", {10, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 1.0, 3.0, 5.0, 6.0}},
    {"Loudness", {10, 6.0, 4.0, 1.0, 0.0, -1.0, -1.0, 0.0, 1.0, 4.0, 5.0}},
    {"Sprache", {10, -12.0, -6.0, -2.0, 0.0, 2.0, 3.0, 3.0, 2.0, 0.0, -3.0}},
    {"Telefon", {10, -24.0, -24.0, -12.0, 0.0, 3.0, 3.0, 3.0, -6.0, -24.0, -24.0}},
};
constexpr LSPValueTable kTable{kLSPTypeGraphicEqBand, kSpecs, kPresets};
constexpr int kCompensationRounds = 12;
constexpr double kMaxBellDb = 36.0;

// Band widths: an octave, half an octave, a third.
double QFor(int bands) {
  const double octaves = bands == 10 ? 1.0 : bands == 20 ? 0.5 : 1.0 / 3.0;
  const double factor = std::pow(2.0, octaves);
  return std::sqrt(factor) / (factor - 1.0);
}

double ResponseDb(const LBiquad& f, double hz, double rate) {
  const std::complex<double> z = std::polar(1.0, -2.0 * std::numbers::pi * hz / rate);
  const std::complex<double> h = (f.b0 + f.b1 * z + f.b2 * z * z) / (1.0 + f.a1 * z + f.a2 * z * z);
  return 20.0 * std::log10(std::abs(h));
}

// Neighbouring bells overlap, so each centre would get its neighbours' share too.
// The bells' own gains are corrected until every centre sits at its band's gain.
std::vector<LBiquad> Compensated(std::span<const double> centres, std::vector<double> wanted, double rate, double q) {
  std::vector<double> gains = wanted;
  auto design = [&] {
    std::vector<LBiquad> bells;
    for (std::size_t i = 0; i < centres.size(); ++i) bells.push_back(LBiquad::Bell(rate, centres[i], q, gains[i]));
    return bells;
  };
  for (int round = 0; round < kCompensationRounds; ++round) {
    const std::vector<LBiquad> bells = design();
    for (std::size_t i = 0; i < centres.size(); ++i) {
      double db = 0;
      for (const LBiquad& b : bells) db += ResponseDb(b, centres[i], rate);
      gains[i] = std::clamp(gains[i] + wanted[i] - db, -kMaxBellDb, kMaxBellDb);
    }
  }
  std::vector<LBiquad> bells = design();
  // A flat band costs nothing.
  std::erase_if(bells, [](const LBiquad& b) { return b.b0 == 1.0 && b.b1 == b.a1 && b.b2 == b.a2; });
  return bells;
}

}  // namespace

LSPGraphicEqBand::LSPGraphicEqBand() : LSoundProcessValues(kTable) {}

int LSPGraphicEqBand::BandCount() const {
  const double n = OpenValue(kLSPGraphicBands);
  return n < 15 ? 10 : n < 26 ? 20 : 31;
}

std::span<const double> LSPGraphicEqBand::Centres() const {
  switch (BandCount()) {
    case 10: return kOctaves;
    case 20: return kHalfOctaves;
    default: return kThirdOctaves;
  }
}

int LSPGraphicEqBand::GetNumParameters() const { return kLSPGraphicFirstGain + BandCount(); }

void LSPGraphicEqBand::SetParameterByIndex(int index, void* value) {
  if (index < GetNumParameters()) LSoundProcessValues::SetParameterByIndex(index, value);
}

void LSPGraphicEqBand::GetParameterByIndex(int index, LSoundProcessParameter* out) const {
  if (index >= GetNumParameters() || !out) return;
  LSoundProcessValues::GetParameterByIndex(index, out);
  if (index >= kLSPGraphicFirstGain) LSPPointLabel(out->szName, Centres()[index - kLSPGraphicFirstGain], "Hz");
}

LSoundSource LSPGraphicEqBand::OpenSource(LSoundSource& input) {
  const double rate = LFilterRate(input);
  std::span<const double> centres = Centres();
  // Bands above what the rate holds are left out.
  while (!centres.empty() && centres.back() >= 0.45 * rate) centres = centres.first(centres.size() - 1);
  std::vector<double> wanted;
  bool flat = true;
  for (std::size_t i = 0; i < centres.size(); ++i) {
    wanted.push_back(OpenValue(kLSPGraphicFirstGain + static_cast<int>(i)));
    flat = flat && wanted.back() == 0.0;
  }
  if (flat) return LMakeSource<LSRCFilter>(input, std::vector<LBiquad>{});
  return LMakeSource<LSRCFilter>(input, Compensated(centres, std::move(wanted), rate, QFor(BandCount())));
}
