#include "effects/telephone.h"

#include <cmath>

#include "effects/chebyshev.h"
#include "effects/filter_source.h"
#include "effects/preroll.h"
#include "effects/sound_process_type.h"

namespace {

constexpr LSPValueSpec kSpecs[] = {
    {"Untere Grenze", "Hz", 100.0, 1000.0, 300.0, false},
    {"Obere Grenze", "Hz", 2000.0, 8000.0, 3400.0, false},
    {"Bits", "Bit", 4.0, 16.0, 8.0, true},
};
constexpr LSPValuePreset kPresets[] = {
    {"Schwache Verbindung", {350.0, 3000.0, 5.0}},
    {"Alter Apparat", {450.0, 2500.0, 6.0}},
    {"Breitband", {100.0, 7000.0, 12.0}},
};
constexpr LSPValueTable kTable{kLSPTypeTelephone, kSpecs, kPresets};

constexpr double kMu = 255.0;
constexpr double kRippleDb = 0.5;
// Poles per edge: below 200 Hz and above 4 kHz the default band is 30 dB down.
constexpr int kLowOrder = 8;
constexpr int kHighOrder = 10;

std::vector<LBiquad> Band(double rate, double lowHz, double highHz) {
  std::vector<LBiquad> sections = LBiquadChebyshev(rate, lowHz, kLowOrder, true, kRippleDb);
  for (const LBiquad& s : LBiquadChebyshev(rate, highHz, kHighOrder, false, kRippleDb)) sections.push_back(s);
  return sections;
}

}  // namespace

LSPTelephone::LSPTelephone() : LSoundProcessValues(kTable) {}

LSoundSource LSPTelephone::OpenSource(LSoundSource& input) {
  return LMakeSource<LSRCTelephone>(input, OpenValue(kLSPTelephoneLowHz), OpenValue(kLSPTelephoneHighHz),
                                    static_cast<int>(OpenValue(kLSPTelephoneBits)));
}

LSRCTelephone::LSRCTelephone(const LSoundSource& input, double lowHz, double highHz, int bits)
    : LSoundProcessBase(input),
      levels_(static_cast<float>((1 << (bits - 1)) - 1)),
      band_(Band(LFilterRate(input), lowHz, highHz), GetChannels()) {
  // Every code the compander can give, expanded once.
  expand_.resize(static_cast<std::size_t>(levels_) + 1);
  for (std::size_t c = 0; c < expand_.size(); ++c)
    expand_[c] = static_cast<float>(std::expm1(static_cast<double>(c) / levels_ * std::log1p(kMu)) / kMu);
}

void LSRCTelephone::Read(float* buffer, long long frames) {
  ReadInput(buffer, frames);
  const long long samples = frames * GetChannels();
  const float toCode = levels_ / static_cast<float>(std::log1p(kMu));
  const float top = static_cast<float>(expand_.size() - 1);
  for (long long i = 0; i < samples; ++i) {
    const float x = buffer[i];
    const float code = std::fmin(top, std::round(std::log1p(static_cast<float>(kMu) * std::fabs(x)) * toCode));
    buffer[i] = std::copysign(expand_[static_cast<std::size_t>(code)], x);
  }
  band_.Process(buffer, frames);
}

void LSRCTelephone::Seek(long long frame) {
  band_.Reset();
  LSeekWithPreroll(*this, frame, LPrerollFrames(*this));
}
