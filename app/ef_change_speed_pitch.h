#pragma once
// SVEfChangeSpeedPitch: the selection at another tempo, pitch or speed. Its label
// follows the mode: "Tempo und Tonhöhe ändern" (tempo and pitch together, as a
// changed speed does), "Tempo ändern", or "Tonhöhe ändern". A changed tempo or
// speed makes the piece longer or shorter, and the selection follows it.
#include "app/ef_sound_source_process.h"
#include "effects/pitch_speed.h"

enum class SVSpeedPitchMode { kBoth = 0, kTempo = 1, kPitch = 2 };

class SVEfChangeSpeedPitch final : public SVEfSoundSourceProcess {
public:
  SVEfChangeSpeedPitch(LCutListAudio& list, SVSelection& selection, SVSpeedPitchMode mode,
                       const LSPPitchSpeed& settings)
      : SVEfSoundSourceProcess(list, selection), mode_(mode), settings_(settings) {}

  // Percent of the pace, pitch kept.
  [[nodiscard]] static LSPPitchSpeed Tempo(double percent);
  // Percent of the speed: pace and pitch together.
  [[nodiscard]] static LSPPitchSpeed Speed(double percent);
  // Semitones and cents, pace kept.
  [[nodiscard]] static LSPPitchSpeed Pitch(double semitones, double cents);

  // Pitch with the formants kept where they are, so a voice keeps its timbre.
  void KeepFormants(bool keep) { formants_ = keep; }

  [[nodiscard]] const char* GetEffectName() const override;
  [[nodiscard]] LSoundSource OpenSource(LSoundSource& input) override;

private:
  SVSpeedPitchMode mode_;
  LSPPitchSpeed settings_;
  bool formants_ = false;
};
