#pragma once
// SVEfNoiseGate ("Noise-Gate"): the selection through the noise gate of its settings.
#include "app/ef_process_effect.h"
#include "effects/noise_gate.h"

inline constexpr const char* kSVNoiseGateLabel = "Noise-Gate";

class SVEfNoiseGate final : public SVEfProcessEffect {
public:
  SVEfNoiseGate(LCutListAudio& list, SVSelection& selection, const LSPNoiseGate& settings = LSPNoiseGate())
      : SVEfProcessEffect(list, selection, settings, kSVNoiseGateLabel) {}
};
