#pragma once
// SVEfEqualiser ("Entzerren"): the selection through an equaliser: the
// point-list equaliser of a curve, its points mapped at the audio's own sample
// rate, or any equaliser effect of the table with its settings.
#include "app/ef_process_effect.h"
#include "effects/eq.h"
#include "effects/point_list.h"

inline constexpr const char* kSVEqualiserLabel = "Entzerren";

class SVEfEqualiser final : public SVEfProcessEffect {
public:
  SVEfEqualiser(LCutListAudio& list, SVSelection& selection, const LPointList& points)
      : SVEfProcessEffect(list, selection, nullptr, kSVEqualiserLabel), points_(points), curve_(true) {}
  SVEfEqualiser(LCutListAudio& list, SVSelection& selection, const LSoundProcess& settings)
      : SVEfProcessEffect(list, selection, settings, kSVEqualiserLabel) {}

  [[nodiscard]] LSoundSource OpenSource(LSoundSource& input) override {
    if (!curve_) return SVEfProcessEffect::OpenSource(input);
    LSPEq eq;
    points_.MapPointListToEq(eq, input.GetSampleRate());
    return eq.OpenSource(input);
  }

private:
  LPointList points_;
  bool curve_ = false;
};
