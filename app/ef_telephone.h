#pragma once
// SVEfTelephone ("Telefoneffekt"): the selection through the telephone of its settings.
#include "app/ef_process_effect.h"
#include "effects/telephone.h"

inline constexpr const char* kSVTelephoneLabel = "Telefoneffekt";

class SVEfTelephone final : public SVEfProcessEffect {
public:
  SVEfTelephone(LCutListAudio& list, SVSelection& selection, const LSPTelephone& settings = LSPTelephone())
      : SVEfProcessEffect(list, selection, settings, kSVTelephoneLabel) {}
};
