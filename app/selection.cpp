#include "app/selection.h"

#include "app/cut_list_render.h"
#include "effects/eq.h"
#include "effects/point_list.h"

void SVSelection::CollapseIfEmpty(long long cursor) {
  if (!IsEmptyForSnapshot()) return;
  start = cursor;
  end = cursor;
}

LCutListAudio SVSelection::Trim(LProcessInterface& process, const LCutListAudio& list) const {
  // An equal band is no band: the range alone, at every frequency.
  if (IsEmpty()) return list;
  LCutListAudio trimmed(list);
  trimmed.EfTrim(start, end);
  if (!HasBand()) return trimmed;
  LCutListAudio rendered;
  if (SVCutListRender(process, kSVSelectionRenderTitle, OpenTrimmedSource(trimmed), rendered) != kLProcessSuccess) {
    return LCutListAudio();
  }
  return rendered;
}

LSoundSource SVSelection::OpenTrimmedSource(const LCutListAudio& list) const {
  LSoundSource source = list.OpenSource();
  if (!HasBand()) return source;
  LPointList points;
  points.Add(kSVBandLowestHz, kSVBandFloorDb);
  points.Add(lowFrequency - 1.0, kSVBandFloorDb);
  points.Add(lowFrequency, 0.0);
  points.Add(highFrequency, 0.0);
  points.Add(highFrequency + 1.0, kSVBandFloorDb);
  points.Add(kSVBandHighestHz, kSVBandFloorDb);
  LSPEq eq;
  points.MapPointListToEq(eq, list.GetSampleRate());
  return eq.OpenSource(source);
}
