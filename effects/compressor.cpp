#include "effects/compressor.h"

#include <algorithm>
#include <cmath>

#include "effects/preroll.h"
#include "effects/sound_process_type.h"

namespace {

constexpr LSPValueSpec kSpecs[] = {
    {"Schwelle", "dB", -60.0, 0.0, -20.0, false},
    {"Verhältnis", ":1", 1.0, 20.0, 4.0, false},
    {"Angriff", "ms", 0.1, 500.0, 10.0, false},
    {"Freigabe", "ms", 1.0, 5000.0, 100.0, false},
    {"Aufholverstärkung", "dB", 0.0, 30.0, 0.0, false},
    {"Knie", "dB", 0.0, 24.0, 0.0, false},
    {"Erkennung", "0 = Spitze, 1 = RMS", 0.0, 1.0, kLSPDRCPeak, true},
    {"Vorausschau", "ms", 0.0, 20.0, 0.0, false},
};
constexpr LSPValuePreset kPresets[] = {
    {"Sanft", {-18.0, 2.0, 20.0, 200.0, 3.0, 6.0, kLSPDRCRms, 0.0}},
    {"Sprache", {-24.0, 4.0, 5.0, 150.0, 6.0, 6.0, kLSPDRCRms, 0.0}},
    {"Stark", {-30.0, 8.0, 2.0, 100.0, 10.0, 0.0, kLSPDRCPeak, 0.0}},
    {"Begrenzer", {-1.0, 20.0, 1.0, 50.0, 0.0, 0.0, kLSPDRCPeak, 5.0}},
};
constexpr LSPValueTable kTable{kLSPTypeDRCSimple, kSpecs, kPresets};

constexpr double kRmsMs = 10.0;
constexpr double kFloor = 1e-10;  // -200 dB, the level of silence

// One-pole coefficient of a time constant.
double Coefficient(double ms, double rate) { return std::exp(-1000.0 / (std::max(ms, 1e-3) * rate)); }

}  // namespace

LSPDRCSimple::LSPDRCSimple() : LSoundProcessValues(kTable) {}

LSoundSource LSPDRCSimple::OpenSource(LSoundSource& input) {
  LCompressorSettings s;
  s.thresholdDb = OpenValue(kLSPDRCThreshold);
  s.ratio = OpenValue(kLSPDRCRatio);
  s.attackMs = OpenValue(kLSPDRCAttack);
  s.releaseMs = OpenValue(kLSPDRCRelease);
  s.makeupDb = OpenValue(kLSPDRCMakeup);
  s.kneeDb = OpenValue(kLSPDRCKnee);
  s.rms = OpenValue(kLSPDRCDetection) == kLSPDRCRms;
  s.lookAheadMs = OpenValue(kLSPDRCLookAhead);
  return LMakeSource<LSRCCompressor>(input, s);
}

LSRCCompressor::LSRCCompressor(const LSoundSource& input, const LCompressorSettings& settings)
    : LSoundProcessBase(input), s_(settings) {
  const double rate = GetSampleRate();
  slope_ = 1.0 - 1.0 / std::max(s_.ratio, 1.0);
  attack_ = Coefficient(s_.attackMs, rate);
  release_ = Coefficient(s_.releaseMs, rate);
  rmsCoef_ = Coefficient(kRmsMs, rate);
  delay_ = std::llround(std::max(s_.lookAheadMs, 0.0) * rate / 1000.0);
  line_.assign(static_cast<std::size_t>(delay_ * GetChannels()), 0.0f);
}

double LSRCCompressor::CurveReductionDb(double levelDb) const {
  const double over = levelDb - s_.thresholdDb;
  const double knee = s_.kneeDb;
  if (2.0 * over <= -knee) return 0.0;
  if (2.0 * std::abs(over) < knee) return slope_ * (over + knee / 2) * (over + knee / 2) / (2.0 * knee);
  return slope_ * over;
}

float LSRCCompressor::Detect(const float* frame) {
  const int channels = GetChannels();
  double level;
  if (s_.rms) {
    double square = 0;
    for (int c = 0; c < channels; ++c) square = std::max(square, static_cast<double>(frame[c]) * frame[c]);
    rmsState_ = square + rmsCoef_ * (rmsState_ - square);
    level = 10.0 * std::log10(std::max(rmsState_, kFloor * kFloor));
  } else {
    double peak = 0;
    for (int c = 0; c < channels; ++c) peak = std::max(peak, static_cast<double>(std::abs(frame[c])));
    level = 20.0 * std::log10(std::max(peak, kFloor));
  }
  const double target = CurveReductionDb(level);
  // Rises of the reduction are taken at once and falls follow the release, so
  // a sine's peaks hold it steady; the attack then smooths the result.
  peakReduction_ = std::max(target, target + release_ * (peakReduction_ - target));
  reduction_ = peakReduction_ + attack_ * (reduction_ - peakReduction_);
  return static_cast<float>(std::pow(10.0, (s_.makeupDb - reduction_) / 20.0));
}

void LSRCCompressor::Read(float* buffer, long long frames) {
  const int channels = GetChannels();
  if (!primed_) {
    primed_ = true;
    if (delay_ > 0) {
      ReadInput(line_.data(), delay_);
      for (long long i = 0; i < delay_; ++i) (void)Detect(&line_[static_cast<std::size_t>(i * channels)]);
      lineIndex_ = 0;
    }
  }
  ReadInput(buffer, frames);
  for (long long i = 0; i < frames; ++i) {
    float* frame = buffer + i * channels;
    const float gain = Detect(frame);
    if (delay_ > 0) {
      float* held = &line_[static_cast<std::size_t>(lineIndex_ * channels)];
      for (int c = 0; c < channels; ++c) std::swap(frame[c], held[c]);
      if (++lineIndex_ == delay_) lineIndex_ = 0;
    }
    for (int c = 0; c < channels; ++c) frame[c] *= gain;
  }
}

void LSRCCompressor::Seek(long long frame) {
  rmsState_ = peakReduction_ = reduction_ = 0;
  primed_ = false;
  LSeekWithPreroll(*this, frame, LPrerollFrames(*this));
}

long long LSRCCompressor::GetPositionSample() const {
  return LSoundProcessBase::GetPositionSample() - (primed_ ? delay_ : 0);
}
