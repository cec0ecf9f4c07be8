#include "app/ef_change_speed_pitch.h"

LSPPitchSpeed SVEfChangeSpeedPitch::Tempo(double percent) {
  LSPPitchSpeed s;
  s.SetValue(kLSPPitchSpeedTempo, percent);
  return s;
}

LSPPitchSpeed SVEfChangeSpeedPitch::Speed(double percent) {
  LSPPitchSpeed s;
  s.SetValue(kLSPPitchSpeedSpeed, percent);
  return s;
}

LSPPitchSpeed SVEfChangeSpeedPitch::Pitch(double semitones, double cents) {
  LSPPitchSpeed s;
  s.SetValue(kLSPPitchSpeedSemitones, semitones);
  s.SetValue(kLSPPitchSpeedCents, cents);
  return s;
}

const char* SVEfChangeSpeedPitch::GetEffectName() const {
  switch (mode_) {
    case SVSpeedPitchMode::kBoth:
      return "Tempo und Tonhöhe ändern";
    case SVSpeedPitchMode::kTempo:
      return "Tempo ändern";
    default:
      return "Tonhöhe ändern";
  }
}

LSoundSource SVEfChangeSpeedPitch::OpenSource(LSoundSource& input) {
  if (!formants_) return settings_.OpenSource(input);
  LSPPitch pitch;
  pitch.SetValue(kLSPPitchSemitones, settings_.Value(kLSPPitchSpeedSemitones));
  pitch.SetValue(kLSPPitchCents, settings_.Value(kLSPPitchSpeedCents));
  pitch.SetValue(kLSPPitchFormants, 1);
  return pitch.OpenSource(input);
}
