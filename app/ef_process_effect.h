#pragma once
// SVEfProcessEffect: the selection through one effect of the effect table,
// under a label of its own. The effect's settings are copied when the object is
// made, so the caller may change or drop its own afterwards. The named
// operations (compression, gate, filters, equalisers, de-esser) are this with
// their labels; SVEfForEffect picks the one an effect belongs to.
#include <memory>

#include "app/ef_sound_source_process.h"
#include "base/string_long.h"
#include "effects/sound_process.h"

class SVEfProcessEffect : public SVEfSoundSourceProcess {
public:
  SVEfProcessEffect(LCutListAudio& list, SVSelection& selection, const LSoundProcess& effect, const char* label)
      : SVEfProcessEffect(list, selection, std::unique_ptr<LSoundProcess>(effect.GetNewCopy()), label) {}
  // effect may be null (an effect this build lacks): the render then fails and
  // the document stays as it was.
  SVEfProcessEffect(LCutListAudio& list, SVSelection& selection, std::unique_ptr<LSoundProcess> effect,
                    const char* label)
      : SVEfSoundSourceProcess(list, selection), effect_(std::move(effect)), label_(label ? label : "") {}

  [[nodiscard]] const char* GetEffectName() const override { return label_.c_str(); }
  [[nodiscard]] LSoundSource OpenSource(LSoundSource& input) override;
  // The settings that run; null when the effect is missing.
  [[nodiscard]] const LSoundProcess* Effect() const { return effect_.get(); }

private:
  std::unique_ptr<LSoundProcess> effect_;
  LStringLong label_;
};

// The operation for effect: the named one of its type (a compressor runs as
// "Dynamikkompression", a high-pass as "Hochpass-Filter", ...), else one named
// after the effect itself.
[[nodiscard]] std::unique_ptr<SVEfProcessEffect> SVEfForEffect(LCutListAudio& list, SVSelection& selection,
                                                               const LSoundProcess& effect);
