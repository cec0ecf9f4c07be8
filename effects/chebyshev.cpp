#include "effects/chebyshev.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace {

// The bilinear transform of (b2 s^2 + b1 s + b0) / (a2 s^2 + a1 s + a0), s taken
// in units of the edge frequency, prewarped so the edge lands where it is asked.
LBiquad Bilinear(double k, double b2, double b1, double b0, double a2, double a1, double a0) {
  const double k2 = k * k;
  const double n0 = b2 * k2 + b1 * k + b0, n1 = 2 * (b0 - b2 * k2), n2 = b2 * k2 - b1 * k + b0;
  const double d0 = a2 * k2 + a1 * k + a0, d1 = 2 * (a0 - a2 * k2), d2 = a2 * k2 - a1 * k + a0;
  return {n0 / d0, n1 / d0, n2 / d0, d1 / d0, d2 / d0};
}

}  // namespace

std::vector<LBiquad> LBiquadChebyshev(double rate, double hz, int order, bool highPass, double rippleDb) {
  order = std::clamp(order / 2 * 2, 2, 16);
  const double edge = std::clamp(hz, 1.0, rate * 0.49);
  const double k = 1.0 / std::tan(std::numbers::pi * edge / rate);
  const double eps = std::sqrt(std::pow(10.0, std::max(rippleDb, 0.01) / 10.0) - 1.0);
  const double v = std::asinh(1.0 / eps) / order;
  std::vector<LBiquad> sections;
  for (int i = 0; i < order / 2; ++i) {
    const double theta = std::numbers::pi * (2 * i + 1) / (2.0 * order);
    const double re = -std::sinh(v) * std::sin(theta);
    const double im = std::cosh(v) * std::cos(theta);
    const double m2 = re * re + im * im;
    // A conjugate pole pair; the high-pass takes s to 1/s.
    sections.push_back(highPass ? Bilinear(k, 1, 0, 0, 1, -2 * re / m2, 1 / m2)
                                : Bilinear(k, 0, 0, m2, 1, -2 * re, m2));
  }
  // An even order starts at the bottom of the ripple; lift it so the peaks sit at 0 dB.
  const double lift = 1.0 / std::sqrt(1.0 + eps * eps);
  sections.front().b0 *= lift;
  sections.front().b1 *= lift;
  sections.front().b2 *= lift;
  return sections;
}
