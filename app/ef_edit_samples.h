#pragma once
// SVEfEditSamples ("Samples bearbeiten"): replaces the selected audio with
// samples the user drew, given as interleaved frames in the document's channel
// count. The samples are written into a new cache item; the selection then
// covers exactly them.
#include "app/ef_cut_list_process.h"
#include "base/array.h"

class SVEfEditSamples final : public SVEfCutListProcess {
public:
  // samples: interleaved frames; a trailing part frame is dropped.
  SVEfEditSamples(LCutListAudio& list, SVSelection& selection, LArray<float> samples)
      : SVEfCutListProcess(list, selection), samples_(std::move(samples)) {}

  [[nodiscard]] const char* GetEffectName() const override { return "Samples bearbeiten"; }
  [[nodiscard]] int ProcessCutList(LProcessInterface& process, LCutListAudio& piece) override;

private:
  LArray<float> samples_;
};
