#pragma once
// SVEfAutoGainControl ("Auto-Verstärkungsregelung aktiv"): a slow automatic
// gain that rides the selection towards a target loudness. A measuring pass
// takes the short-term loudness (3 s windows) every 100 ms; the gain that would
// bring each window to the target, limited to a range, is smoothed forwards and
// backwards (so it neither lags nor leads) and applied as an envelope. Where the
// sound is too quiet to have a loudness the gain holds, so pauses do not swell.
#include "app/ef_cut_list_process.h"

inline constexpr const char* kSVAutoGainControlLabel = "Auto-Verstärkungsregelung aktiv";

struct SVAutoGainSettings {
  double targetLufs = -23.0;
  double rangeDb = 15.0;         // most the gain goes up or down
  double smoothingSeconds = 1.0;  // time constant of the gain's changes
};

class SVEfAutoGainControl final : public SVEfCutListProcess {
public:
  SVEfAutoGainControl(LCutListAudio& list, SVSelection& selection, const SVAutoGainSettings& settings = {})
      : SVEfCutListProcess(list, selection), s_(settings) {}

  [[nodiscard]] const char* GetEffectName() const override { return kSVAutoGainControlLabel; }
  [[nodiscard]] int ProcessCutList(LProcessInterface& process, LCutListAudio& piece) override;

private:
  SVAutoGainSettings s_;
};
