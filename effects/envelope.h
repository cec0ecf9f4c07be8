#pragma once
// LSRCEnvelope: a level that changes over time, given as points (frame of the
// input, linear gain). Between two points the gain runs in a straight line from
// one to the other; before the first point and after the last it holds their
// gains. A single point is a constant gain, no point leaves the audio as it is.
// Fades in and out are envelopes of two points.
#include "base/array.h"
#include "effects/sound_process_base.h"

struct LEnvelopePoint {
  long long frame;
  float gain;  // linear factor
};

class LSRCEnvelope final : public LSoundProcessBase {
public:
  // Points may come in any order; at a frame given twice the later point wins
  // after it, so a step can be made.
  LSRCEnvelope(const LSoundSource& input, LArray<LEnvelopePoint> points);

  void Read(float* buffer, long long frames) override;
  // The gain applied at a frame.
  float GainAt(long long frame) const;

private:
  LArray<LEnvelopePoint> points_;  // sorted by frame
};
