#pragma once
// LSPDoppler (type 21, "Doppler"): the sound as heard from a source that passes
// the listener on a straight line, and LSRCDoppler, its processing source. Its
// pitch rises while it comes and falls as it goes, it swells to its nearest
// point and, in stereo, travels from left to right.
//
// Settings: "Geschwindigkeit" (km/h), "Abstand" (m, the nearest the path comes)
// and "Vorbeifahrt" (% of the input's length at which it is nearest; an input of
// unknown length is passed at its start).
// Saved layout: as every LSoundProcessValues, chunks 0x2001 to 0x2003 in that order.
#include <vector>

#include "effects/sound_process_base.h"
#include "effects/sound_process_values.h"

inline constexpr int kLSPDopplerKmh = 0;
inline constexpr int kLSPDopplerDistance = 1;
inline constexpr int kLSPDopplerPass = 2;

// Speed of sound in air, m/s.
inline constexpr double kLSpeedOfSound = 343.0;
// Farthest the path is followed, as seconds of sound travel; beyond, the source stands still.
inline constexpr double kLSRCDopplerMaxDelaySeconds = 4.0;

class LSPDoppler final : public LSoundProcessValues {
public:
  LSPDoppler();
  LSPDoppler(const LSPDoppler&) = default;
  [[nodiscard]] LSoundSource OpenSource(LSoundSource& input) override;
  [[nodiscard]] LSoundProcess* GetNewCopy() const override { return new LSPDoppler(*this); }
};

// The channels are mixed to one moving source, delayed by its travel time beyond
// the nearest point and weakened by its distance. The path is a function of the
// frame position; Seek refills the delay line over as much as the delay there.
class LSRCDoppler final : public LSoundProcessBase {
public:
  LSRCDoppler(const LSoundSource& input, double kmh, double distance, double passPercent);

  void Read(float* buffer, long long frames) override;
  void Seek(long long frame) override;

private:
  struct Place {
    double delay;  // frames
    double gain;
    double pan;  // -1 left ... 1 right
  };
  Place PlaceAt(long long frame) const;

  double speed_, distance_, passFrame_;
  long long position_ = 0;
  std::vector<float> line_;  // a power of two, indexed by frame
  long long mask_;
};
