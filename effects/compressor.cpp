#include "effects/compressor.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "effects/fast_math.h"
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
  level_.resize(kBlock);
  gains_.resize(kBlock);
}

double LSRCCompressor::CurveReductionDb(double levelDb) const {
  const double over = levelDb - s_.thresholdDb;
  const double knee = s_.kneeDb;
  if (2.0 * over <= -knee) return 0.0;
  if (2.0 * std::abs(over) < knee) return slope_ * (over + knee / 2) * (over + knee / 2) / (2.0 * knee);
  return slope_ * over;
}

void LSRCCompressor::Detect(const float* frames, int n, float* gains) {
  const int channels = GetChannels();
  double* level = level_.data();
  // The detector's level per frame, as a power or an amplitude.
  if (s_.rms) {
    for (int i = 0; i < n; ++i) {
      const float* frame = frames + i * channels;
      double square = 0;
      for (int c = 0; c < channels; ++c) square = std::max(square, static_cast<double>(frame[c]) * frame[c]);
      rmsState_ = square + rmsCoef_ * (rmsState_ - square);
      level[i] = std::max(rmsState_, kFloor * kFloor);
    }
  } else {
    for (int i = 0; i < n; ++i) {
      const float* frame = frames + i * channels;
      double peak = 0;
      for (int c = 0; c < channels; ++c) peak = std::max(peak, static_cast<double>(std::abs(frame[c])));
      level[i] = std::max(peak, kFloor);
    }
  }
  // In dB: a power's tenfold is 10 dB, an amplitude's 20.
  const double toDb = (s_.rms ? 10.0 : 20.0) * std::numbers::ln2 / std::numbers::ln10;
  for (int i = 0; i < n; ++i) level[i] = toDb * LFastLog2(level[i]);
  for (int i = 0; i < n; ++i) {
    const double target = CurveReductionDb(level[i]);
    // Rises of the reduction are taken at once and falls follow the release, so
    // a sine's peaks hold it steady; the attack then smooths the result.
    peakReduction_ = std::max(target, target + release_ * (peakReduction_ - target));
    reduction_ = peakReduction_ + attack_ * (reduction_ - peakReduction_);
    level[i] = reduction_;
  }
  const double toOctaves = std::numbers::ln10 / (20.0 * std::numbers::ln2);
  for (int i = 0; i < n; ++i) gains[i] = static_cast<float>(LFastExp2((s_.makeupDb - level[i]) * toOctaves));
}

void LSRCCompressor::Read(float* buffer, long long frames) {
  const int channels = GetChannels();
  if (!primed_) {
    primed_ = true;
    if (delay_ > 0) {
      ReadInput(line_.data(), delay_);
      for (long long i = 0; i < delay_; i += kBlock) {
        const int n = static_cast<int>(std::min<long long>(kBlock, delay_ - i));
        Detect(&line_[static_cast<std::size_t>(i * channels)], n, gains_.data());
      }
      lineIndex_ = 0;
    }
  }
  ReadInput(buffer, frames);
  for (long long at = 0; at < frames; at += kBlock) {
    const int n = static_cast<int>(std::min<long long>(kBlock, frames - at));
    float* block = buffer + at * channels;
    Detect(block, n, gains_.data());
    for (int i = 0; i < n; ++i) {
      float* frame = block + i * channels;
      if (delay_ > 0) {
        float* held = &line_[static_cast<std::size_t>(lineIndex_ * channels)];
        for (int c = 0; c < channels; ++c) std::swap(frame[c], held[c]);
        if (++lineIndex_ == delay_) lineIndex_ = 0;
      }
      for (int c = 0; c < channels; ++c) frame[c] *= gains_[i];
    }
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
