#pragma once
// SVEfDelete ("Audio löschen"): removes the selected audio. Only the cut list
// changes; no audio is written. With a frequency band, the band is removed and
// the rest of the selected time stays: the piece becomes silence of its own
// length, over which the rest is laid back.
#include "app/ef_cut_list_process.h"

class SVEfDelete final : public SVEfCutListProcess {
public:
  using SVEfCutListProcess::SVEfCutListProcess;

  [[nodiscard]] const char* GetEffectName() const override { return "Audio löschen"; }
  [[nodiscard]] int ProcessCutList(LProcessInterface& process, LCutListAudio& piece) override;
};
