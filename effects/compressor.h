#pragma once
// LSPDRCSimple (type 2, "Kompressor"): a compressor and, with look-ahead, a
// limiter; LSRCCompressor is its processing source.
//
// Settings: "Schwelle" (dB), "Verhältnis" (n:1), "Angriff" and "Freigabe" (ms, the
// time constants of the gain reduction), "Aufholverstärkung" (dB), "Knie" (dB,
// the width of a soft knee), "Erkennung" (whole: 0 peak, 1 RMS over 10 ms) and
// "Vorausschau" (ms the detector runs ahead of the sound).
// Saved layout: as every LSoundProcessValues, chunks 0x2001 to 0x2008 in that order.
#include <vector>

#include "effects/sound_process_base.h"
#include "effects/sound_process_values.h"

inline constexpr int kLSPDRCThreshold = 0;
inline constexpr int kLSPDRCRatio = 1;
inline constexpr int kLSPDRCAttack = 2;
inline constexpr int kLSPDRCRelease = 3;
inline constexpr int kLSPDRCMakeup = 4;
inline constexpr int kLSPDRCKnee = 5;
inline constexpr int kLSPDRCDetection = 6;
inline constexpr int kLSPDRCLookAhead = 7;

// Detection modes. Saved as the value of "Erkennung": never change.
inline constexpr int kLSPDRCPeak = 0;
inline constexpr int kLSPDRCRms = 1;

class LSPDRCSimple final : public LSoundProcessValues {
public:
  LSPDRCSimple();
  LSPDRCSimple(const LSPDRCSimple&) = default;
  [[nodiscard]] LSoundSource OpenSource(LSoundSource& input) override;
  [[nodiscard]] LSoundProcess* GetNewCopy() const override { return new LSPDRCSimple(*this); }
};

struct LCompressorSettings {
  double thresholdDb, ratio, attackMs, releaseMs, makeupDb, kneeDb;
  bool rms;
  double lookAheadMs;
};

// One gain for all channels, from the loudest: the detector's level (peak, or RMS)
// goes through the static curve, the reduction in dB follows rises at once and
// falls with the release, and is then smoothed with the attack. With look-ahead
// the sound is delayed inside the source while the detector reads ahead on the
// input, so positions and length stay the input's; frames past the input's end
// read as silence.
class LSRCCompressor final : public LSoundProcessBase {
public:
  LSRCCompressor(const LSoundSource& input, const LCompressorSettings& settings);

  void Read(float* buffer, long long frames) override;
  // Clears the detector and the delay and settles them again over a pre-roll.
  void Seek(long long frame) override;
  long long GetPositionSample() const override;

  // The reduction in dB of the static curve for a level in dB.
  double CurveReductionDb(double levelDb) const;

private:
  // Frames run through the detector at a time.
  static constexpr int kBlock = 256;
  // Feeds n (at most kBlock) input frames to the detector and answers the gains
  // for the frames leaving the delay.
  void Detect(const float* frames, int n, float* gains);

  LCompressorSettings s_;
  double slope_;  // 1 - 1/ratio
  double attack_, release_, rmsCoef_;
  double rmsState_ = 0, peakReduction_ = 0, reduction_ = 0;
  long long delay_;
  bool primed_ = false;
  std::vector<float> line_;  // delay of `delay_` frames
  long long lineIndex_ = 0;
  std::vector<double> level_;  // per frame of a run: the level, then the reduction
  std::vector<float> gains_;
};
