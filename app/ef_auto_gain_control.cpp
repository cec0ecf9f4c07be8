#include "app/ef_auto_gain_control.h"

#include <algorithm>
#include <cmath>

#include "app/cut_list_render.h"
#include "effects/envelope.h"
#include "effects/loudness_meter.h"

namespace {

constexpr double kStepSeconds = 0.1;
// Windows of 3 s: the value taken for a step is the one centred on it.
constexpr long long kWindowSteps = 30;
constexpr long long kCentreSteps = kWindowSteps / 2;
// Below this a window counts as a pause.
constexpr double kQuietLufs = -70.0;

}  // namespace

int SVEfAutoGainControl::ProcessCutList(LProcessInterface& process, LCutListAudio& piece) {
  LSoundSource input = piece.OpenSource();
  const long long step = std::max<long long>(1, std::llround(piece.GetSampleRate() * kStepSeconds));
  LArray<double> loudness;
  process.SetStatus(kSVAutoGainControlLabel, 0);
  const LProcessResult measured = LLoudnessShortTermMeasure(process, input, step, loudness);
  if (measured != kLProcessSuccess) return measured == kLProcessCancelled ? kLProcessCancelled : kLProcessFailed;
  const auto count = static_cast<long long>(loudness.size());
  if (count == 0) return kLProcessSuccess;

  // The wanted gain per step; the first windows are not yet full and read too soft.
  LArray<double> gain(static_cast<std::size_t>(count), 0.0);
  double held = 0.0;
  bool any = false;
  for (long long k = 0; k < count; ++k) {
    const long long centre = std::clamp(k + kCentreSteps, std::min(kWindowSteps - 1, count - 1), count - 1);
    const double level = loudness[static_cast<std::size_t>(centre)];
    if (level > kQuietLufs) {
      held = std::clamp(s_.targetLufs - level, -s_.rangeDb, s_.rangeDb);
      // A leading pause takes the first gain there is.
      if (!any) std::fill(gain.begin(), gain.begin() + k, held);
      any = true;
    }
    gain[static_cast<std::size_t>(k)] = held;
  }
  if (!any) return kLProcessSuccess;
  const double a = s_.smoothingSeconds > 0 ? std::exp(-kStepSeconds / s_.smoothingSeconds) : 0.0;
  for (long long k = 1; k < count; ++k) gain[k] = a * gain[k - 1] + (1 - a) * gain[k];
  for (long long k = count - 2; k >= 0; --k) gain[k] = a * gain[k + 1] + (1 - a) * gain[k];

  LArray<LEnvelopePoint> points;
  points.reserve(static_cast<std::size_t>(count));
  for (long long k = 0; k < count; ++k)
    points.push_back({k * step + step / 2, static_cast<float>(std::pow(10.0, gain[static_cast<std::size_t>(k)] / 20))});
  LCutListAudio output;
  const LProcessResult rendered =
      SVCutListRender(process, GetEffectName(), LMakeSource<LSRCEnvelope>(input, std::move(points)), output);
  if (rendered != kLProcessSuccess) return rendered == kLProcessCancelled ? kLProcessCancelled : kLProcessFailed;
  piece = std::move(output);
  return kLProcessSuccess;
}
