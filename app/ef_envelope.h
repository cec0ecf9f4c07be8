#pragma once
// SVEfEnvelope ("Hüllkurve"): a level curve drawn over the selection. Points
// are placed by their share of the selection (0 at its first frame, 1 at its
// last), so the same curve fits any length; between points the gain runs in a
// straight line. A fade in is the curve from 0 to 1, a fade out from 1 to 0.
#include "app/ef_sound_source_process.h"
#include "base/array.h"

struct SVEnvelopePoint {
  double position;  // 0 ... 1 over the selection
  float gain;       // linear factor
};

class SVEfEnvelope final : public SVEfSoundSourceProcess {
public:
  SVEfEnvelope(LCutListAudio& list, SVSelection& selection, LArray<SVEnvelopePoint> points)
      : SVEfSoundSourceProcess(list, selection), points_(std::move(points)) {}

  // The curves of a linear fade in and fade out.
  [[nodiscard]] static LArray<SVEnvelopePoint> FadeIn() { return {{0.0, 0.0f}, {1.0, 1.0f}}; }
  [[nodiscard]] static LArray<SVEnvelopePoint> FadeOut() { return {{0.0, 1.0f}, {1.0, 0.0f}}; }

  [[nodiscard]] const char* GetEffectName() const override { return "Hüllkurve"; }
  [[nodiscard]] LSoundSource OpenSource(LSoundSource& input) override;

private:
  LArray<SVEnvelopePoint> points_;
};
