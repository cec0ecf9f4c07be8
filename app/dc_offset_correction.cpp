#include "app/dc_offset_correction.h"

#include <cmath>

#include "app/cut_list_render.h"
#include "effects/dc_offset.h"
#include "effects/source_levels.h"

namespace {
// The measuring pass shows the first half of the progress, the render the second.
constexpr double kMeasureShare = 0.5;
// An offset below the smallest step of 24-bit audio is rounding, not an offset.
constexpr double kCentredBelow = 1.0 / (1 << 24);
}  // namespace

int SVDCOffsetCorrection::ProcessCutList(LProcessInterface& process, LCutListAudio& piece) {
  LSoundSource source = piece.OpenSource();
  LSourceLevels levels;
  {
    LProcessInterfaceSubProcess measure(process, 0.0, kMeasureShare);
    const LProcessResult measured = LSourceLevelsMeasure(measure, source, levels);
    if (measured != kLProcessSuccess) return measured;
  }
  LArray<float> offsets;
  bool centred = true;
  for (double mean : levels.mean) {
    offsets.push_back(static_cast<float>(mean));
    centred = centred && std::fabs(mean) < kCentredBelow;
  }
  if (centred) return kLProcessSuccess;

  LProcessInterfaceSubProcess render(process, kMeasureShare, 1.0);
  LCutListAudio output;
  const LProcessResult rendered =
      SVCutListRender(render, GetEffectName(), LMakeSource<LSRCDCOffset>(source, std::move(offsets)), output);
  if (rendered != kLProcessSuccess) return rendered;
  piece = std::move(output);
  return kLProcessSuccess;
}
