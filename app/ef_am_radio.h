#pragma once
// SVEfAmRadio ("MW-Radioeffekt"): the selection through the AM radio of its settings.
#include "app/ef_process_effect.h"
#include "effects/am_radio.h"

inline constexpr const char* kSVAmRadioLabel = "MW-Radioeffekt";

class SVEfAmRadio final : public SVEfProcessEffect {
public:
  SVEfAmRadio(LCutListAudio& list, SVSelection& selection, const LSPAMRadio& settings = LSPAMRadio())
      : SVEfProcessEffect(list, selection, settings, kSVAmRadioLabel) {}
};
