#pragma once
// SVEfPSProfile ("Tonhöhe Tempo Profil"): tempo and pitch following a curve of
// points over the selection, e.g. a record slowing down to a stop.
#include <string>
#include <vector>

#include "app/ef_sound_source_process.h"
#include "effects/pitch_speed.h"

inline constexpr const char* kSVPSProfileLabel = "Tonhöhe Tempo Profil";

class SVEfPSProfile final : public SVEfSoundSourceProcess {
public:
  SVEfPSProfile(LCutListAudio& list, SVSelection& selection, std::vector<LStretchPoint> points)
      : SVEfSoundSourceProcess(list, selection), points_(std::move(points)) {}

  // Reads "ANTEIL=TEMPO[:HALBTÖNE]" (share of the selection and tempo in percent);
  // false, with nothing added, for text that is no such point or lies out of range.
  [[nodiscard]] static bool ParsePoint(const std::string& text, LStretchPoint& point);

  [[nodiscard]] const char* GetEffectName() const override { return kSVPSProfileLabel; }
  [[nodiscard]] LSoundSource OpenSource(LSoundSource& input) override;

private:
  std::vector<LStretchPoint> points_;
};
