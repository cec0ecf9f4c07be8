#pragma once
// LSPNoiseGate (type 30, "Noise-Gate"): lowers the sound by a fixed range while
// its level stays below a threshold; LSRCNoiseGate is its processing source.
//
// Settings: "Schwelle" (dB), "Dämpfung" (dB taken off while closed), "Angriff"
// (ms to open), "Haltezeit" (ms it stays open after the level fell) and
// "Freigabe" (ms to close); the times are time constants of the gain in dB.
// Saved layout: as every LSoundProcessValues, chunks 0x2001 to 0x2005 in that order.
#include "effects/sound_process_base.h"
#include "effects/sound_process_values.h"

inline constexpr int kLSPGateThreshold = 0;
inline constexpr int kLSPGateRange = 1;
inline constexpr int kLSPGateAttack = 2;
inline constexpr int kLSPGateHold = 3;
inline constexpr int kLSPGateRelease = 4;


class LSPNoiseGate final : public LSoundProcessValues {
public:
  LSPNoiseGate();
  LSPNoiseGate(const LSPNoiseGate&) = default;
  [[nodiscard]] LSoundSource OpenSource(LSoundSource& input) override;
  [[nodiscard]] LSoundProcess* GetNewCopy() const override { return new LSPNoiseGate(*this); }
};

// One gain for all channels. The detector follows the loudest channel's peaks and
// decays over 5 ms, so it stays steady over a cycle down to 100 Hz or so; the hold
// bridges the rest.
class LSRCNoiseGate final : public LSoundProcessBase {
public:
  LSRCNoiseGate(const LSoundSource& input, double thresholdDb, double rangeDb, double attackMs, double holdMs,
                double releaseMs);

  void Read(float* buffer, long long frames) override;
  // Closes the gate and settles it again over a pre-roll.
  void Seek(long long frame) override;

private:
  double threshold_;  // linear
  double rangeDb_;
  double attack_, release_, decay_;
  long long holdFrames_;
  double level_ = 0, gainDb_;
  long long holdLeft_ = 0;
};
