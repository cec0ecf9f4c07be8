#pragma once
// SVEfDeesser ("De-Esser"): the selection through the de-esser (effect type 33),
// made through the effect table, so the operation runs as soon as a build has
// the effect; without it the render fails and the document stays as it was.
#include <memory>

#include "app/ef_process_effect.h"
#include "effects/sound_process_table.h"
#include "effects/sound_process_type.h"

inline constexpr const char* kSVDeesserLabel = "De-Esser";

class SVEfDeesser final : public SVEfProcessEffect {
public:
  // With the de-esser's default settings.
  SVEfDeesser(LCutListAudio& list, SVSelection& selection)
      : SVEfProcessEffect(list, selection, MakeDefault(), kSVDeesserLabel) {}
  SVEfDeesser(LCutListAudio& list, SVSelection& selection, const LSoundProcess& settings)
      : SVEfProcessEffect(list, selection, settings, kSVDeesserLabel) {}

private:
  static std::unique_ptr<LSoundProcess> MakeDefault() {
    const LSoundProcessTypeRow* row = LSoundProcessTypeRowOf(kLSPTypeDeesser2);
    return row && row->make ? row->make() : nullptr;
  }
};
