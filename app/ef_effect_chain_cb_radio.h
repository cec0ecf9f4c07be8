#pragma once
// SVEfEffectChainCBRadio: the selection through the ready CB radio chain (a
// narrow band, distortion, the hiss of the link and a squelch), named after it.
#include "app/ef_sound_source_process.h"
#include "effects/cb_radio_chain.h"

inline constexpr const char* kSVCBRadioLabel = "CB-Funk";

class SVEfEffectChainCBRadio final : public SVEfSoundSourceProcess {
public:
  SVEfEffectChainCBRadio(LCutListAudio& list, SVSelection& selection)
      : SVEfSoundSourceProcess(list, selection), chain_(LCBRadioChain()) {}

  [[nodiscard]] const char* GetEffectName() const override { return kSVCBRadioLabel; }
  [[nodiscard]] LSoundSource OpenSource(LSoundSource& input) override { return chain_.OpenSource(input); }

private:
  LSoundProcessMulti chain_;
};
