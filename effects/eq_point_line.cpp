#include "effects/eq_point_line.h"

#include "effects/eq.h"
#include "effects/filter_source.h"
#include "effects/sound_process_type.h"

namespace {

constexpr LSPValuePreset kPresets[] = {{"Bass betonen", {}}, {"Präsenz", {}}, {"Telefon", {}}, {"Höhen dämpfen", {}}};
constexpr LPoint kFlat[] = {{20.0, 0.0}, {20000.0, 0.0}};
constexpr LPoint kBass[] = {{20.0, 6.0}, {100.0, 6.0}, {400.0, 0.0}, {20000.0, 0.0}};
constexpr LPoint kPresence[] = {{20.0, 0.0}, {1500.0, 0.0}, {3500.0, 5.0}, {8000.0, 0.0}, {20000.0, 0.0}};
constexpr LPoint kTelephone[] = {{20.0, -24.0}, {250.0, -24.0}, {400.0, 0.0},
                                 {3000.0, 0.0}, {3800.0, -24.0}, {20000.0, -24.0}};
constexpr LPoint kDull[] = {{20.0, 0.0}, {4000.0, 0.0}, {16000.0, -12.0}, {20000.0, -12.0}};
constexpr std::span<const LPoint> kPresetCurves[] = {kBass, kPresence, kTelephone, kDull};
constexpr LSPValueTable kTable{kLSPTypeEqPointLine, std::span<const LSPValueSpec>{}, kPresets};
constexpr LSPCurveTable kCurve{{"Frequenz", "Hz", 20.0, 20000.0, "Verstärkung", "dB", -24.0, 24.0}, true, kFlat,
                               kPresetCurves};

}  // namespace

LSPEqPointLine::LSPEqPointLine() : LSoundProcessCurve(kTable, kCurve) {}

LSoundSource LSPEqPointLine::OpenSource(LSoundSource& input) {
  const auto rate = static_cast<std::uint32_t>(LFilterRate(input));
  LArray<float> gains(rate / 2 + 1);
  for (std::size_t hz = 0; hz < gains.size(); ++hz) gains[hz] = static_cast<float>(CurveAt(static_cast<double>(hz), 0.0));
  LSPEq eq;
  eq.SetGains(std::move(gains));
  return eq.OpenSource(input);
}
