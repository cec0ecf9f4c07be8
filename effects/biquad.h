#pragma once
// LBiquad: second-order (and first-order) filter sections from the well-known
// bilinear designs of the audio EQ cookbook, and LBiquadCascade, a chain of them
// run over interleaved blocks with separate state per channel.
// Coefficients are normalised (a0 = 1); first-order sections have b2 = a2 = 0.
#include <vector>

struct LBiquad {
  double b0 = 1, b1 = 0, b2 = 0, a1 = 0, a2 = 0;

  static LBiquad LowPass(double rate, double hz, double q);
  static LBiquad HighPass(double rate, double hz, double q);
  static LBiquad LowPass1(double rate, double hz);
  static LBiquad HighPass1(double rate, double hz);
  static LBiquad Bell(double rate, double hz, double q, double gainDb);
  static LBiquad LowShelf(double rate, double hz, double q, double gainDb);
  static LBiquad HighShelf(double rate, double hz, double q, double gainDb);
  static LBiquad Notch(double rate, double hz, double q);
};

// Butterworth sections of a low- or high-pass of `order` (1 ... 8) poles, -3 dB at
// hz; `peakFactor` scales the Q of the sharpest section (1 keeps it flat).
std::vector<LBiquad> LBiquadButterworth(double rate, double hz, int order, bool highPass, double peakFactor);

class LBiquadCascade {
public:
  LBiquadCascade(std::vector<LBiquad> sections, int channels);

  void Process(float* buffer, long long frames);
  void Reset();

private:
  std::vector<LBiquad> sections_;
  int channels_;
  std::vector<double> state_;  // two per section and channel
};
