#pragma once
// SVEfVoiceChange ("Stimmenverzerrer"): the selection through the voice changer
// of its settings (pitch, formant colour, robot).
#include "app/ef_process_effect.h"
#include "effects/voice_pitch.h"

inline constexpr const char* kSVVoiceChangeLabel = "Stimmenverzerrer";

class SVEfVoiceChange final : public SVEfProcessEffect {
public:
  SVEfVoiceChange(LCutListAudio& list, SVSelection& selection, const LSPVoicePitch& settings = LSPVoicePitch())
      : SVEfProcessEffect(list, selection, settings, kSVVoiceChangeLabel) {}
};
