#pragma once
// SVEfAmplify ("Verstärken"): a change of level that rewrites no audio. The
// gains of the piece's segments are scaled, so the cut list plays the same cache
// items louder or softer, and an undo or a second change costs nothing.
#include "app/ef_cut_list_process.h"

class SVEfAmplify final : public SVEfCutListProcess {
public:
  // gainDb: the change of level in decibels.
  SVEfAmplify(LCutListAudio& list, SVSelection& selection, double gainDb);

  [[nodiscard]] const char* GetEffectName() const override { return "Verstärken"; }
  [[nodiscard]] int ProcessCutList(LProcessInterface& process, LCutListAudio& piece) override;
  // The linear factor the gains are multiplied by.
  [[nodiscard]] float Factor() const { return factor_; }

private:
  float factor_;
};
