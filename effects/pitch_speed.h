#pragma once
// LSPPitchSpeed (type 13) and LSPPitch (type 14), both "Pitch Shifter".
//
// LSPPitchSpeed: "Tempo" (% of the original pace, pitch kept), "Halbtöne" and
// "Cent" (pitch, pace kept) and "Geschwindigkeit" (% by resampling: pace and
// pitch together, as a tape played faster). The length becomes the input's
// divided by tempo and speed.
// LSPPitch: "Halbtöne", "Cent" and "Formanten erhalten" (0 or 1, so a voice
// keeps its timbre); the length stays the input's to the frame.
// Saved layout: as every LSoundProcessValues, chunks 0x2001 on in that order.
//
// Stretching and shifting run in librubberband, resampling in libsoxr. A
// preview setting (not saved) picks rubberband's faster engine.
#include <memory>
#include <vector>

#include "effects/sound_process_base.h"
#include "effects/sound_process_values.h"

inline constexpr int kLSPPitchSpeedTempo = 0;
inline constexpr int kLSPPitchSpeedSemitones = 1;
inline constexpr int kLSPPitchSpeedCents = 2;
inline constexpr int kLSPPitchSpeedSpeed = 3;

inline constexpr int kLSPPitchSemitones = 0;
inline constexpr int kLSPPitchCents = 1;
inline constexpr int kLSPPitchFormants = 2;

class LSPPitchSpeed final : public LSoundProcessValues {
public:
  LSPPitchSpeed();
  LSPPitchSpeed(const LSPPitchSpeed&) = default;
  [[nodiscard]] LSoundSource OpenSource(LSoundSource& input) override;
  [[nodiscard]] LSoundProcess* GetNewCopy() const override { return new LSPPitchSpeed(*this); }
  void SetPreview(bool preview) { preview_ = preview; }

private:
  bool preview_ = false;
};

class LSPPitch final : public LSoundProcessValues {
public:
  LSPPitch();
  LSPPitch(const LSPPitch&) = default;
  [[nodiscard]] LSoundSource OpenSource(LSoundSource& input) override;
  [[nodiscard]] LSoundProcess* GetNewCopy() const override { return new LSPPitch(*this); }
  void SetPreview(bool preview) { preview_ = preview; }

private:
  bool preview_ = false;
};

// One point of a tempo and pitch curve: at a share of the input (0 ... 1), the
// tempo in percent and the pitch in semitones; between points both go straight.
struct LStretchPoint {
  double at;
  double tempoPercent;
  double semitones;
};

struct LStretchSettings {
  double timeRatio = 1.0;   // output length / input length
  double pitchScale = 1.0;  // frequency factor
  bool formants = false;
  bool preview = false;
  // When not empty, tempo and pitch follow it instead, set anew for every block fed.
  std::vector<LStretchPoint> profile;
};

// Input through a rubberband stretcher in its real-time mode, fed in blocks of
// its own size whatever the reader asks for, so the sound does not depend on
// the reader's blocks. The stretcher's start delay is read away, so output frame
// k stands for input frame k / timeRatio; past the input the stretcher hears
// silence until the end, round(input frames x timeRatio), is reached.
// Seek restarts the stretcher at the input frame that the target stands for.
class LSRCStretch final : public LSoundProcessBase {
public:
  LSRCStretch(const LSoundSource& input, const LStretchSettings& settings);
  ~LSRCStretch() override;

  void Read(float* buffer, long long frames) override;
  long long GetPositionSample() const override { return position_; }
  long long GetEndSample() const override;
  void Seek(long long frame) override;

private:
  void Restart(long long inputFrame);
  // Feeds one block to the stretcher (silence past the input's end).
  void Feed();
  // The time ratio and pitch scale for the block starting at input frame at.
  void SetBlockRatios(long long at);
  // Output frame where each input block starts; the last entry is the end.
  std::vector<double> blockOut_;

  struct Engine;
  LStretchSettings s_;
  std::unique_ptr<Engine> engine_;
  long long position_ = 0;
  long long inputAt_ = 0;
  long long discard_ = 0;  // output frames still to drop after a restart
  std::vector<float> interleaved_;
  std::vector<std::vector<float>> planes_;
};

// Opens input at a tempo (time ratio), pitch and speed; the input itself when all are neutral.
[[nodiscard]] LSoundSource LOpenPitchSpeed(LSoundSource& input, const LStretchSettings& stretch, double speed);
