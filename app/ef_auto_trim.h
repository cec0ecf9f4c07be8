#pragma once
// SVEfAutoTrim: removes silence from the piece by editing its cut list only;
// no audio is written. A frame is silent when every channel's magnitude stays
// at or below the threshold.
//  - Mode flag set ("AutoTrimmen"): the silence before the first and after the
//    last sound goes; a piece without any sound goes whole.
//  - Mode flag clear ("Stille trimmen"): every run of silence at least the
//    minimum length goes, wherever it lies.
#include "app/ef_cut_list_process.h"

inline constexpr double kSVAutoTrimDefaultThresholdDb = -50.0;
inline constexpr long long kSVAutoTrimDefaultMinimumMs = 500;

class SVEfAutoTrim final : public SVEfCutListProcess {
public:
  // thresholdDb: the level of silence in decibels of full scale; minimumMs: the
  // shortest silence that "Stille trimmen" removes.
  SVEfAutoTrim(LCutListAudio& list, SVSelection& selection, bool autoTrim,
               double thresholdDb = kSVAutoTrimDefaultThresholdDb, long long minimumMs = kSVAutoTrimDefaultMinimumMs)
      : SVEfCutListProcess(list, selection), autoTrim_(autoTrim), thresholdDb_(thresholdDb), minimumMs_(minimumMs) {}

  [[nodiscard]] const char* GetEffectName() const override { return autoTrim_ ? "AutoTrimmen" : "Stille trimmen"; }
  [[nodiscard]] int ProcessCutList(LProcessInterface& process, LCutListAudio& piece) override;

private:
  bool autoTrim_;
  double thresholdDb_;
  long long minimumMs_;
};
