#include "effects/deesser.h"

#include <algorithm>
#include <cmath>

#include "effects/filter_source.h"
#include "effects/preroll.h"
#include "effects/sound_process_type.h"

namespace {

constexpr LSPValueSpec kSpecs[] = {
    {"Frequenz", "Hz", 2000.0, 16000.0, 6000.0, false},
    {"Schwelle", "dB", -60.0, 0.0, -30.0, false},
    {"Reduktion", "dB", 0.0, 30.0, 10.0, false},
};
constexpr LSPValuePreset kPresets[] = {
    {"Sanft", {6000.0, -25.0, 4.0}},
    {"Stark", {5000.0, -35.0, 12.0}},
    {"Frauenstimme", {7000.0, -30.0, 8.0}},
    {"Männerstimme", {4500.0, -30.0, 8.0}},
};
constexpr LSPValueTable kTable{kLSPTypeDeesser2, kSpecs, kPresets};

constexpr double kAttackMs = 1.0;
constexpr double kReleaseMs = 60.0;
constexpr double kFloor = 1e-10;

double Coefficient(double ms, double rate) { return std::exp(-1000.0 / (ms * rate)); }

// Two equal fourth-order Butterworth filters: their low and high halves add up to
// an all-pass, and the split is steep enough that a band an octave up is turned
// down by nearly the full reduction.
std::vector<LBiquad> Crossover(double rate, double hz, bool high) {
  const std::vector<LBiquad> half = LBiquadButterworth(rate, hz, 4, high, 1.0);
  std::vector<LBiquad> both = half;
  both.insert(both.end(), half.begin(), half.end());
  return both;
}

}  // namespace

LSPDeesser2::LSPDeesser2() : LSoundProcessValues(kTable) {}

LSoundSource LSPDeesser2::OpenSource(LSoundSource& input) {
  return LMakeSource<LSRCDeesser>(input, OpenValue(kLSPDeesserHz), OpenValue(kLSPDeesserThreshold),
                                  OpenValue(kLSPDeesserReduction));
}

LSRCDeesser::LSRCDeesser(const LSoundSource& input, double hz, double thresholdDb, double reductionDb)
    : LSoundProcessBase(input),
      low_(Crossover(LFilterRate(input), std::min(hz, 0.45 * LFilterRate(input)), false), GetChannels()),
      high_(Crossover(LFilterRate(input), std::min(hz, 0.45 * LFilterRate(input)), true), GetChannels()),
      threshold_(thresholdDb),
      maxReduction_(reductionDb),
      attack_(Coefficient(kAttackMs, GetSampleRate())),
      release_(Coefficient(kReleaseMs, GetSampleRate())) {}

void LSRCDeesser::Read(float* buffer, long long frames) {
  ReadInput(buffer, frames);
  const int channels = GetChannels();
  const std::size_t samples = static_cast<std::size_t>(frames * channels);
  if (upper_.size() < samples) upper_.resize(samples);
  std::copy(buffer, buffer + samples, upper_.begin());
  low_.Process(buffer, frames);
  high_.Process(upper_.data(), frames);
  for (long long i = 0; i < frames; ++i) {
    float* out = buffer + i * channels;
    const float* up = upper_.data() + i * channels;
    double peak = 0;
    for (int c = 0; c < channels; ++c) peak = std::max(peak, static_cast<double>(std::abs(up[c])));
    level_ = std::max(peak, release_ * level_);
    const double over = 20.0 * std::log10(std::max(level_, kFloor)) - threshold_;
    const double target = std::clamp(over, 0.0, maxReduction_);
    reduction_ = target + (target > reduction_ ? attack_ : release_) * (reduction_ - target);
    const float gain = reduction_ > 0.0 ? static_cast<float>(std::pow(10.0, -reduction_ / 20.0)) : 1.0f;
    for (int c = 0; c < channels; ++c) out[c] += gain * up[c];
  }
}

void LSRCDeesser::Seek(long long frame) {
  low_.Reset();
  high_.Reset();
  level_ = reduction_ = 0;
  LSeekWithPreroll(*this, frame, LPrerollFrames(*this));
}
