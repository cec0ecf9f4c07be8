#pragma once
// LOversampler: one or two interleaved channels taken up eight times their rate
// and back down again through three half-band stages, so a curve bent at the
// high rate leaves no aliases behind in the audible band.
//
// Each stage is a pair of all-pass chains, one running a sample behind the
// other (elliptic half-bands): a handful of multiplications per sample where a
// linear-phase filter needs dozens. The first stage holds the band to 20 kHz
// (at 44.1 kHz) and stops from the mirror of 20 kHz on by 85 dB, the second by
// 77 dB. The last, with a single section a chain, stops by only 50 dB, but what
// it lets fold back is the curve's harmonics far up, which the mean over a step
// has already made small (64 dB and more below a tone at the highest drive).
// The phase is not linear: low frequencies come back Delay() frames late, a
// fraction that Latency() rounds.
#include <vector>

inline constexpr int kLOversampleStages = 3;
inline constexpr int kLOversampleFactor = 1 << kLOversampleStages;

class LOversampler {
public:
  // `channels` 1 or 2: the samples Up and Down take and give are interleaved.
  explicit LOversampler(int channels = 1);

  // n base-rate frames in, n * 8 high-rate frames out.
  void Up(const float* in, int n, float* out);
  // n * 8 high-rate frames in, n base-rate frames out.
  void Down(const float* in, int n, float* out);
  void Reset();

  double Delay() const { return delay_; }
  int Latency() const { return latency_; }

  // Four lanes: each channel's two chains side by side.
  using Lanes = float __attribute__((vector_size(16)));

private:
  int channels_;
  double delay_ = 0;
  int latency_ = 0;
  // Per stage, lowest rate first: the coefficients as lanes, and the state: the
  // last input and the last output of each section.
  std::vector<Lanes> coefficients_[3];
  std::vector<Lanes> upState_[3], downState_[3];
  Lanes held_[3] = {};  // Down's last odd sample, which the late chain meets next
  std::vector<float> a_, b_;  // scratch between stages
};
