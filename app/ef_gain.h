#pragma once
// SVEfGain: the selection through a constant gain, rendered into new audio (see
// ef_amplify.h for the change of level that writes nothing). The caller names
// the action.
#include "app/ef_sound_source_process.h"
#include "base/string_long.h"
#include "effects/gain.h"

// The label when the caller gives none.
inline constexpr const char* kSVGainLabel = "Verstärkung";

class SVEfGain final : public SVEfSoundSourceProcess {
public:
  SVEfGain(LCutListAudio& list, SVSelection& selection, double gainDb, const char* label = kSVGainLabel)
      : SVEfSoundSourceProcess(list, selection), gain_(gainDb), label_(label ? label : kSVGainLabel) {}

  [[nodiscard]] const char* GetEffectName() const override { return label_.c_str(); }
  [[nodiscard]] LSoundSource OpenSource(LSoundSource& input) override { return gain_.OpenSource(input); }

private:
  LSPGain gain_;
  LStringLong label_;
};
