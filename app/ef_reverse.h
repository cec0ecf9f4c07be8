#pragma once
// SVEfReverse ("Umkehren"): the selection played backwards, frame by frame; the
// channels inside a frame keep their order. The piece is read from its end in
// blocks and written into a new cache item.
#include "app/ef_cut_list_process.h"

// Status title while the audio is reversed.
inline constexpr const char* kSVReverseStatus = "Soundumkehrung";
// The selected audio could not be read; nothing was changed.
inline constexpr const char* kSVReverseReadFailedText =
    "Die Auswahl konnte nicht gelesen werden. Das Dokument bleibt unverändert.";

class SVEfReverse : public SVEfCutListProcess {
public:
  using SVEfCutListProcess::SVEfCutListProcess;

  [[nodiscard]] const char* GetEffectName() const override { return "Umkehren"; }
  // A read that leaves the source in error fails the edit with the piece as it was.
  [[nodiscard]] int ProcessCutList(LProcessInterface& process, LCutListAudio& piece) override;

protected:
  // The source the piece is read through.
  [[nodiscard]] virtual LSoundSource OpenInput(const LCutListAudio& piece) const;
};
