#pragma once
// LSPVoicePitch (type 24, "Pitch Shifter für Stimme"): the voice changer. It moves
// a voice's pitch, colours its formants darker or brighter and can ring-modulate
// it into a robot; LSRCVoicePitch is its processing source.
//
// Settings: "Tonhöhe" (semitones), "Formant" (dB: the highs raised and the lows
// lowered by half of it each, or the reverse), "Roboter" (Hz of the ring
// modulator, 0 = off) and "Mischung" (% of the changed voice).
// Saved layout: as every LSoundProcessValues, chunks 0x2001 to 0x2004 in that order.
#include <vector>

#include "effects/biquad.h"
#include "effects/sound_process_base.h"
#include "effects/sound_process_values.h"

inline constexpr int kLSPVoiceSemitones = 0;
inline constexpr int kLSPVoiceFormantDb = 1;
inline constexpr int kLSPVoiceRobotHz = 2;
inline constexpr int kLSPVoiceMix = 3;

class LSPVoicePitch final : public LSoundProcessValues {
public:
  LSPVoicePitch();
  LSPVoicePitch(const LSPVoicePitch&) = default;
  [[nodiscard]] LSoundSource OpenSource(LSoundSource& input) override;
  [[nodiscard]] LSoundProcess* GetNewCopy() const override { return new LSPVoicePitch(*this); }
};

// The pitch moves by two read heads sliding through a delay line of 40 ms, half a
// window apart and cross-faded so neither is heard where it jumps back. The heads,
// the ring modulator and the line are functions of the frame position; Seek
// clears the line and the formant filters and settles both over a pre-roll.
class LSRCVoicePitch final : public LSoundProcessBase {
public:
  LSRCVoicePitch(const LSoundSource& input, double semitones, double formantDb, double robotHz, double mixPercent);

  void Read(float* buffer, long long frames) override;
  void Seek(long long frame) override;

private:
  double slide_;   // window turns per frame: (1 - ratio) / window
  double window_;  // frames
  double robotHz_, mix_;
  long long position_ = 0;
  std::vector<float> line_;  // per channel, a power of two of frames each
  long long mask_;
  LBiquadCascade formant_;
  std::vector<float> dry_;
};
