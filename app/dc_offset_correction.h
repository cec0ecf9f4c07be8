#pragma once
// SVDCOffsetCorrection ("Korrektur des Gleichspannungsversatzes"): measures the
// mean of every channel of the piece and renders the piece with it taken away,
// so each channel is centred on zero. A piece that is centred already (to the
// smallest step of 24-bit audio) is left as it is, with no audio written.
#include "app/ef_cut_list_process.h"

class SVDCOffsetCorrection final : public SVEfCutListProcess {
public:
  using SVEfCutListProcess::SVEfCutListProcess;

  [[nodiscard]] const char* GetEffectName() const override { return "Korrektur des Gleichspannungsversatzes"; }
  [[nodiscard]] int ProcessCutList(LProcessInterface& process, LCutListAudio& piece) override;
};
