#include "app/ef_amplify.h"

#include <cmath>

#include "base/list.h"
#include "engine/cut_list_segment.h"

SVEfAmplify::SVEfAmplify(LCutListAudio& list, SVSelection& selection, double gainDb)
    : SVEfCutListProcess(list, selection),
      factor_(std::isfinite(gainDb) ? static_cast<float>(std::pow(10.0, gainDb / 20.0)) : 1.0f) {}

int SVEfAmplify::ProcessCutList(LProcessInterface& process, LCutListAudio& piece) {
  (void)process;
  if (factor_ == 1.0f) return kLProcessSuccess;
  LList<LCutListSegment> segments = piece.Segments();
  piece.Clear();
  for (LCutListSegment& segment : segments) {
    if (!segment.IsSilence()) segment.gain *= factor_;
    piece.SegmentAppend(std::move(segment));
  }
  return kLProcessSuccess;
}
