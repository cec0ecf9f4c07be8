#include "effects/drc_point_line.h"

#include <algorithm>
#include <cmath>

#include "effects/preroll.h"
#include "effects/sound_process_type.h"

namespace {

constexpr LSPValueSpec kSpecs[] = {
    {"Angriff", "ms", 0.1, 500.0, 10.0, false},
    {"Freigabe", "ms", 1.0, 5000.0, 150.0, false},
};
constexpr LSPValuePreset kPresets[] = {
    {"Sanfte Kompression", {20.0, 200.0}},
    {"Sprache", {5.0, 150.0}},
    {"Begrenzer", {1.0, 50.0}},
    {"Expander", {5.0, 100.0}},
};
constexpr LPoint kDefault[] = {{-90.0, -90.0}, {-20.0, -20.0}, {0.0, -10.0}};
constexpr LPoint kSoft[] = {{-90.0, -90.0}, {-24.0, -24.0}, {0.0, -12.0}};
constexpr LPoint kSpeech[] = {{-90.0, -90.0}, {-30.0, -24.0}, {-15.0, -12.0}, {0.0, -9.0}};
constexpr LPoint kLimiter[] = {{-90.0, -90.0}, {-3.0, -3.0}, {0.0, -3.0}};
constexpr LPoint kExpander[] = {{-90.0, -90.0}, {-50.0, -70.0}, {-35.0, -35.0}, {0.0, 0.0}};
constexpr std::span<const LPoint> kPresetCurves[] = {kSoft, kSpeech, kLimiter, kExpander};
constexpr LSPValueTable kTable{kLSPTypeDRCPointLine, kSpecs, kPresets};
constexpr LSPCurveTable kCurve{{"Eingang", "dB", -90.0, 0.0, "Ausgang", "dB", -90.0, 20.0}, false, kDefault,
                               kPresetCurves};

constexpr double kStepDb = 0.1;
constexpr double kFloor = 1e-10;

double Coefficient(double ms, double rate) { return std::exp(-1000.0 / (std::max(ms, 1e-3) * rate)); }

}  // namespace

LSPDRCPointLine::LSPDRCPointLine() : LSoundProcessCurve(kTable, kCurve) {}

double LSPDRCPointLine::CurveGainDb(double levelDb) const {
  std::vector<LPoint> points = CurvePoints();
  if (points.empty()) return 0.0;
  const LSPCurveAxes& axes = CurveAxes();
  const double first = std::clamp(points.front().frequency, axes.xMin, axes.xMax);
  const double last = std::clamp(points.back().frequency, axes.xMin, axes.xMax);
  const double at = std::clamp(levelDb, std::min(first, last), last);
  return CurveAt(at, at) - at;
}

LSoundSource LSPDRCPointLine::OpenSource(LSoundSource& input) { return LMakeSource<LSRCDRCPointLine>(input, *this); }

LSRCDRCPointLine::LSRCDRCPointLine(const LSoundSource& input, const LSPDRCPointLine& settings)
    : LSoundProcessBase(input), floorDb_(settings.CurveAxes().xMin) {
  const double rate = GetSampleRate();
  attack_ = Coefficient(settings.OpenValue(kLSPDRCCurveAttack), rate);
  release_ = Coefficient(settings.OpenValue(kLSPDRCCurveRelease), rate);
  const int steps = static_cast<int>(std::lround((settings.CurveAxes().xMax - floorDb_) / kStepDb));
  table_.resize(static_cast<std::size_t>(steps) + 1);
  for (int i = 0; i <= steps; ++i) table_[i] = static_cast<float>(settings.CurveGainDb(floorDb_ + i * kStepDb));
}

void LSRCDRCPointLine::Read(float* buffer, long long frames) {
  ReadInput(buffer, frames);
  const int channels = GetChannels();
  const double last = static_cast<double>(table_.size() - 1);
  for (long long i = 0; i < frames; ++i) {
    float* frame = buffer + i * channels;
    double peak = 0;
    for (int c = 0; c < channels; ++c) peak = std::max(peak, static_cast<double>(std::abs(frame[c])));
    level_ = std::max(peak, release_ * level_);
    const double db = 20.0 * std::log10(std::max(level_, kFloor));
    const double index = std::clamp((db - floorDb_) / kStepDb, 0.0, last);
    const double target = table_[static_cast<std::size_t>(index + 0.5)];
    gainDb_ = target + attack_ * (gainDb_ - target);
    const float gain = static_cast<float>(std::pow(10.0, gainDb_ / 20.0));
    for (int c = 0; c < channels; ++c) frame[c] *= gain;
  }
}

void LSRCDRCPointLine::Seek(long long frame) {
  level_ = gainDb_ = 0;
  LSeekWithPreroll(*this, frame, LPrerollFrames(*this));
}
