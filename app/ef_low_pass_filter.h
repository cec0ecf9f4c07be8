#pragma once
// SVEfLowPassFilter ("Tiefpass-Filter"): the selection through the low-pass of its settings.
#include "app/ef_process_effect.h"
#include "effects/pass_filter.h"

inline constexpr const char* kSVLowPassFilterLabel = "Tiefpass-Filter";

class SVEfLowPassFilter final : public SVEfProcessEffect {
public:
  SVEfLowPassFilter(LCutListAudio& list, SVSelection& selection, const LSPLowPass& settings = LSPLowPass())
      : SVEfProcessEffect(list, selection, settings, kSVLowPassFilterLabel) {}
};
