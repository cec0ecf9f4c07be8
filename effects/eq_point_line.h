#pragma once
// LSPEqPointLine (type 12, "Visueller EQ"): an equaliser drawn as a curve of
// points (frequency in Hz, gain in dB, -24 ... +24), straight between points on
// a logarithmic frequency axis and held beyond the first and last point. It runs
// as the linear-phase filter of the point-list equaliser (LSRCEq): the sound keeps
// its shape in time and its place, whatever the curve.
// Saved layout: as every LSoundProcessCurve, the points in chunk 0x2010.
#include "effects/sound_process_curve.h"

class LSPEqPointLine final : public LSoundProcessCurve {
public:
  LSPEqPointLine();
  LSPEqPointLine(const LSPEqPointLine&) = default;
  // A flat curve answers the input itself.
  [[nodiscard]] LSoundSource OpenSource(LSoundSource& input) override;
  [[nodiscard]] LSoundProcess* GetNewCopy() const override { return new LSPEqPointLine(*this); }
};
