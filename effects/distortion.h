#pragma once
// LSPDistortion (type 5, "Verzerrung"): the sound driven into a bent curve at
// eight times its rate, the curve taken as its mean over each step, so the new
// harmonics above the band are filtered away instead of folding back as
// aliases (60 dB down even at full drive); LSRCDistortion is its processing source.
//
// Settings: "Antrieb" (dB of gain into the curve), "Kurve" (whole: 0 soft, 1
// hard, 2 tube, which bends the two half-waves unequally and so adds even
// harmonics), "Ton" (Hz, a low-pass on the distorted sound), "Mischung" (% of the
// distorted sound in the output) and "Ausgang" (dB on the distorted sound).
// Saved layout: as every LSoundProcessValues, chunks 0x2001 to 0x2005 in that order.
#include <vector>

#include "effects/biquad.h"
#include "effects/oversampler.h"
#include "effects/sound_process_latent.h"
#include "effects/sound_process_values.h"

inline constexpr int kLSPDistortionDrive = 0;
inline constexpr int kLSPDistortionCurve = 1;
inline constexpr int kLSPDistortionTone = 2;
inline constexpr int kLSPDistortionMix = 3;
inline constexpr int kLSPDistortionOutput = 4;

// Curves. Saved as the value of "Kurve": never change.
inline constexpr int kLSPCurveSoft = 0;
inline constexpr int kLSPCurveHard = 1;
inline constexpr int kLSPCurveTube = 2;

class LSPDistortion final : public LSoundProcessValues {
public:
  LSPDistortion();
  LSPDistortion(const LSPDistortion&) = default;
  [[nodiscard]] LSoundSource OpenSource(LSoundSource& input) override;
  [[nodiscard]] LSoundProcess* GetNewCopy() const override { return new LSPDistortion(*this); }
};

struct LDistortionSettings {
  double driveDb;
  int curve;
  double toneHz, mix, outputDb;  // mix 0 ... 1
};

// Each channel: up to the high rate, the curve, back down, then the tone filter
// and a blocker of the direct current the tube curve leaves. The dry sound is
// delayed by the filters' latency so the two mix in step.
class LSRCDistortion final : public LSoundProcessLatent {
public:
  LSRCDistortion(const LSoundSource& input, const LDistortionSettings& settings);

protected:
  void Process(float* buffer, long long frames, long long first) override;
  void Reset() override;

private:
  struct Channel {
    std::vector<float> dry;  // the latency's worth of input
    int dryAt = 0;
    double tone1 = 0, tone2 = 0;  // the low-pass's state
    double dcIn = 0, dcOut = 0;
  };

  // Bends a run of high-rate samples of `stride` interleaved channels by the curve.
  void Shape(float* high, int count, int stride, double* previous);
  // The shaped run of W interleaved channels filtered and mixed into the block's channels from c on.
  template <int W>
  void Finish(const float* shaped, float* block, int stride, int n, Channel* c);

  LDistortionSettings s_;
  double drive_;
  float output_;
  LBiquad tone_;
  double dcPole_;
  std::vector<Channel> channels_;
  std::vector<LOversampler> pairs_;  // the channels two by two, the last one alone if odd
  std::vector<double> shaped_;       // each channel's last driven high-rate sample
  std::vector<float> in_, high_;
  std::vector<double> driven_, integral_;  // a run's driven samples and their antiderivatives
};
