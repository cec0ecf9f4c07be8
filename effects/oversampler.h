#pragma once
// LOversampler: one channel taken up eight times its rate and back down again
// through three half-band stages of linear-phase FIR filters, so a curve bent
// at the high rate leaves no aliases behind in the audible band.
//
// The first stage holds the band to 20 kHz (at 44.1 kHz) and stops from the
// mirror of 20 kHz on by 90 dB; the later stages have room to spare and are
// short. The round trip delays the sound by Latency() frames of the base rate, a
// whole number: the high-rate stream is delayed on its way down to a multiple of eight.
#include <vector>

inline constexpr int kLOversampleFactor = 8;

class LOversampler {
public:
  LOversampler();

  // n base-rate samples in, n * 8 high-rate samples out.
  void Up(const float* in, int n, float* out);
  // n * 8 high-rate samples in, n base-rate samples out.
  void Down(const float* in, int n, float* out);
  void Reset();

  int Latency() const { return latency_; }

  // One half-band stage: doubling or halving the rate of one stream. It works on
  // whole runs, tap by tap across the run, which the compiler turns into vector code.
  class Stage {
  public:
    // `half` taps either side of the middle, odd.
    explicit Stage(int half);
    void Up(const float* in, int n, float* out);
    void Down(const float* in, int n, float* out);
    void Reset();
    int Half() const { return half_; }
    // Delays what Down takes by `lead` (up to 2 * n) samples of its input rate.
    void SetLead(int lead) { lead_.assign(static_cast<std::size_t>(lead), 0.0f); }

  private:
    int half_;
    std::vector<float> taps_;  // the even taps of the causal filter, the odd ones lie on zeros
    // Each run of samples with the history the filter reaches back into before it.
    std::vector<float> up_, even_, odd_, sum_;
    std::vector<float> lead_;  // the last `lead` samples Down was given
  };

private:
  std::vector<Stage> stages_;  // lowest rate first
  std::vector<float> a_, b_;   // scratch between stages
  int latency_ = 0;
};
