#pragma once
// SVEfHighPassFilter ("Hochpass-Filter"): the selection through the high-pass of its settings.
#include "app/ef_process_effect.h"
#include "effects/pass_filter.h"

inline constexpr const char* kSVHighPassFilterLabel = "Hochpass-Filter";

class SVEfHighPassFilter final : public SVEfProcessEffect {
public:
  SVEfHighPassFilter(LCutListAudio& list, SVSelection& selection, const LSPHighPass& settings = LSPHighPass())
      : SVEfProcessEffect(list, selection, settings, kSVHighPassFilterLabel) {}
};
