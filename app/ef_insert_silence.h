#pragma once
// SVEfInsertSilence ("Stille einfügen"): silence of a given length in place of
// the selection, or at its start when it is empty. Only the cut list changes.
#include "app/ef_cut_list_process.h"

class SVEfInsertSilence final : public SVEfCutListProcess {
public:
  SVEfInsertSilence(LCutListAudio& list, SVSelection& selection, long long frames)
      : SVEfCutListProcess(list, selection), frames_(frames) {}

  [[nodiscard]] const char* GetEffectName() const override { return "Stille einfügen"; }
  [[nodiscard]] int ProcessCutList(LProcessInterface& process, LCutListAudio& piece) override {
    (void)process;
    piece.Clear();
    if (frames_ > 0) piece.EfInsertSilence(0, frames_);
    return 0;
  }

private:
  long long frames_;
};
