#pragma once
// SVEfEffectChain: the selection through an effect chain, each effect that is
// valid and enabled in turn. Named after the chain, or "Effektkette" when the
// chain has no name.
#include "app/ef_sound_source_process.h"
#include "base/string_long.h"
#include "effects/sound_process_multi.h"

inline constexpr const char* kSVEffectChainLabel = "Effektkette";

class SVEfEffectChain final : public SVEfSoundSourceProcess {
public:
  // chain must outlive the object; name may be empty or null.
  SVEfEffectChain(LCutListAudio& list, SVSelection& selection, const LSoundProcessMulti& chain,
                  const char* name = nullptr)
      : SVEfSoundSourceProcess(list, selection), chain_(chain), name_(name && *name ? name : kSVEffectChainLabel) {}

  [[nodiscard]] const char* GetEffectName() const override { return name_.c_str(); }
  [[nodiscard]] LSoundSource OpenSource(LSoundSource& input) override { return chain_.OpenSource(input); }

private:
  const LSoundProcessMulti& chain_;
  LStringLong name_;
};
