#include "app/ef_ps_profile.h"

#include <cstdio>

bool SVEfPSProfile::ParsePoint(const std::string& text, LStretchPoint& point) {
  double at = 0, tempo = 0, semitones = 0;
  int used = 0;
  const int read = std::sscanf(text.c_str(), "%lf=%lf%n:%lf%n", &at, &tempo, &used, &semitones, &used);
  if (read < 2 || used != static_cast<int>(text.size())) return false;
  if (at < 0 || at > 100 || tempo < 10 || tempo > 1000 || semitones < -24 || semitones > 24) return false;
  point = {at / 100.0, tempo, semitones};
  return true;
}

LSoundSource SVEfPSProfile::OpenSource(LSoundSource& input) {
  LStretchSettings s;
  s.profile = points_;
  return LOpenPitchSpeed(input, s, 1.0);
}
