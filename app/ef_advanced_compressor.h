#pragma once
// SVEfAdvancedCompressor ("Dynamikkompression"): the selection through the compressor of its settings (a limiter with look-ahead).
#include "app/ef_process_effect.h"
#include "effects/compressor.h"

inline constexpr const char* kSVAdvancedCompressorLabel = "Dynamikkompression";

class SVEfAdvancedCompressor final : public SVEfProcessEffect {
public:
  SVEfAdvancedCompressor(LCutListAudio& list, SVSelection& selection, const LSPDRCSimple& settings = LSPDRCSimple())
      : SVEfProcessEffect(list, selection, settings, kSVAdvancedCompressorLabel) {}
};
