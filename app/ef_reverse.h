#pragma once
// SVEfReverse ("Umkehren"): the selection played backwards, frame by frame; the
// channels inside a frame keep their order. The piece is read from its end in
// blocks and written into a new cache item.
#include "app/ef_cut_list_process.h"

// Status title while the audio is reversed.
inline constexpr const char* kSVReverseStatus = "Soundumkehrung";

class SVEfReverse final : public SVEfCutListProcess {
public:
  using SVEfCutListProcess::SVEfCutListProcess;

  [[nodiscard]] const char* GetEffectName() const override { return "Umkehren"; }
  [[nodiscard]] int ProcessCutList(LProcessInterface& process, LCutListAudio& piece) override;
};
