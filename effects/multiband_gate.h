#pragma once
// LSPMultiBandNoiseGating (type 31, "Multiband Noise Gating"): a noise gate per
// frequency band; LSRCMultiBandGate is its processing source.
//
// Settings: "Dämpfung" (dB a closed band is lowered by), "Angriff" and "Freigabe"
// (ms to open and to close), and the thresholds as a curve of points (frequency
// in Hz, threshold in dB; straight between points on a logarithmic frequency
// axis). A band is open while its level, the RMS of its part of the sound over
// all channels, is at or above the curve at the band's centre.
// LearnNoise sets the curve from a stretch of noise: one point per band, at the
// noise's level there and a margin above it.
// Saved layout: as every LSoundProcessCurve, chunks 0x2001 to 0x2003, then the points.
#include <memory>
#include <vector>

#include "effects/sound_process_base.h"
#include "effects/sound_process_curve.h"

inline constexpr int kLSPBandGateRange = 0;
inline constexpr int kLSPBandGateAttack = 1;
inline constexpr int kLSPBandGateRelease = 2;

// How far above the noise's level in a band the learned threshold lies.
inline constexpr double kLBandGateLearnMarginDb = 6.0;

class LSPMultiBandNoiseGating final : public LSoundProcessCurve {
public:
  LSPMultiBandNoiseGating();
  LSPMultiBandNoiseGating(const LSPMultiBandNoiseGating&) = default;
  [[nodiscard]] LSoundSource OpenSource(LSoundSource& input) override;
  [[nodiscard]] LSoundProcess* GetNewCopy() const override { return new LSPMultiBandNoiseGating(*this); }

  // Reads the noise from its position to its end and sets the thresholds to its
  // level per band plus the margin. False, with the curve unchanged, when the
  // source is in error or holds less than one analysis frame (about 46 ms).
  [[nodiscard]] bool LearnNoise(LSoundSource& noise, double marginDb = kLBandGateLearnMarginDb);
};

// The sound is cut into frames of about 46 ms that overlap by half, each turned
// into its spectrum (a square-root Hann window on both sides, so the frames add up
// to the input again); a band's bins are scaled by the band's gain in dB, which
// moves toward 0 while the band is open and toward minus the range while it is
// closed. The output is aligned with the input: the source reads ahead by a frame
// and answers positions of its own, equal to the input's. Frames past the end
// read as silence.
class LSRCMultiBandGate final : public LSoundProcessBase {
public:
  LSRCMultiBandGate(const LSoundSource& input, const LSPMultiBandNoiseGating& settings);
  ~LSRCMultiBandGate() override;

  void Read(float* buffer, long long frames) override;
  long long GetPositionSample() const override { return position_; }
  // Settles the gates again over a pre-roll from where the seek lands.
  void Seek(long long frame) override;

  struct Bank;

private:
  // Makes the output block `block` (hop frames) current, stepping from the last
  // one or starting afresh a pre-roll earlier.
  void MakeBlock(long long block);
  // Analyses the frame before `block`: its tail is the first half of the block.
  void StartAt(long long block);
  void Step();
  // Reads input frames into every channel's analysis frame at `offset`; frames
  // before 0 are silence (the input is not asked for them).
  void ReadFrames(long long frame, long long count, long long offset);
  // Gates the current analysis frame and adds it to the output.
  void Process();

  std::unique_ptr<Bank> bank_;
  std::vector<double> thresholds_;  // power per band
  std::vector<double> levels_;      // smoothed power per band
  std::vector<double> gainsDb_;     // per band
  std::vector<float> factors_;      // per band, the gains as factors
  double range_, attack_, release_, level_;
  long long position_ = 0;
  long long block_ = 0;  // the last block made
  bool started_ = false;
  bool outputValid_ = false;
};
