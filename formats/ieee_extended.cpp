#include "formats/ieee_extended.h"

#include <cmath>
#include <cstdint>

namespace {
constexpr int kBias = 16383;
constexpr int kMantissaBits = 64;
}  // namespace

double LExtendedToDouble(const unsigned char b[10]) {
  const bool negative = (b[0] & 0x80) != 0;
  const int exponent = ((b[0] & 0x7F) << 8) | b[1];
  std::uint64_t mantissa = 0;
  for (int i = 0; i < 8; ++i) mantissa = (mantissa << 8) | b[2 + i];
  if (exponent == 0x7FFF || mantissa == 0 || exponent == 0) return 0.0;
  const double value = std::ldexp(static_cast<double>(mantissa), exponent - kBias - (kMantissaBits - 1));
  return negative ? -value : value;
}

void LDoubleToExtended(double value, unsigned char b[10]) {
  for (int i = 0; i < 10; ++i) b[i] = 0;
  if (!std::isfinite(value) || value == 0.0) return;
  const bool negative = value < 0.0;
  int e = 0;
  const double m = std::frexp(std::fabs(value), &e);  // m in [0.5, 1)
  // m x 2^64 fits: the top bit is the explicit integer bit.
  const auto mantissa = static_cast<std::uint64_t>(std::ldexp(m, kMantissaBits));
  const int exponent = e - 1 + kBias;
  b[0] = static_cast<unsigned char>((negative ? 0x80 : 0) | ((exponent >> 8) & 0x7F));
  b[1] = static_cast<unsigned char>(exponent);
  for (int i = 0; i < 8; ++i) b[2 + i] = static_cast<unsigned char>(mantissa >> (56 - 8 * i));
}
