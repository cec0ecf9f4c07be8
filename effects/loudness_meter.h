#pragma once
// Loudness as broadcasters measure it (K-weighted, gated): the integrated
// loudness in LUFS, the loudness range in LU and the true peak in dBTP of a
// whole source, and the short-term loudness (the last 3 s) along it. Both read
// the source from frame 0 in blocks, with progress and cancel, and leave it at
// frame 0 again. Channels 1 to 5 count as left, right, centre and the two
// surrounds; further channels are not weighed.
#include <limits>
#include <string>

#include "base/array.h"
#include "base/process_interface.h"
#include "engine/sound_source.h"

// Loudness of silence, and of a source too short to be gated (under 400 ms).
inline constexpr double kLLoudnessSilent = -std::numeric_limits<double>::infinity();

struct LLoudness {
  double integratedLufs = kLLoudnessSilent;
  double rangeLu = 0.0;
  double truePeakDb = kLLoudnessSilent;  // the loudest channel's
  long long frames = 0;
};

// kLProcessFailed for a rate or channel count the meter does not take.
[[nodiscard]] LProcessResult LLoudnessMeasure(LProcessInterface& process, LSoundSource& source, LLoudness& out);

// The short-term loudness after every `step` frames (the last value after the
// end); a value covers the 3 s up to its point, or what there is of them at the
// start, and is kLLoudnessSilent where that is silent.
[[nodiscard]] LProcessResult LLoudnessShortTermMeasure(LProcessInterface& process, LSoundSource& source,
                                                       long long step, LArray<double>& out);

// "-23.0 LUFS", "-∞" for silence; for reports.
[[nodiscard]] std::string LLoudnessText(double value, const char* unit);
