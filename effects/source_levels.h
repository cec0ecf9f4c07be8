#pragma once
// Measuring a source: the peak and the mean of every channel over the whole
// source, in one pass with progress and cancel. What normalising and the DC
// offset correction look at before they process.
#include "base/array.h"
#include "base/process_interface.h"
#include "engine/sound_source.h"

struct LSourceLevels {
  LArray<float> peak;   // largest magnitude per channel
  LArray<double> mean;  // average sample per channel (0 for an empty source)
  long long frames = 0;

  // The largest of the channels' peaks (0 when there is none).
  [[nodiscard]] float PeakAll() const;
};

// Reads source from frame 0 to its end and leaves it at frame 0 again. On
// cancel out holds what was read so far.
[[nodiscard]] LProcessResult LSourceLevelsMeasure(LProcessInterface& process, LSoundSource& source,
                                                  LSourceLevels& out);
