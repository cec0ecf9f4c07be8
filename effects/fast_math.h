#pragma once
// Base-2 logarithm and power for the detectors that turn every sample into
// decibels and back: a few multiplications in place of the library's calls, in
// loops over runs that the compiler turns into vector code. Both are good to
// about 1e-9 relative, far below anything a gain can be heard by.
#include <bit>
#include <cstdint>
#include <numbers>

// Marks a function with hot loops: where the machine has wider vectors, a copy
// is built for them too and the faster one is chosen when the program starts.
// Without fused multiply-add, so both give the same samples. Not under the
// sanitizers: the chooser runs before their runtime is up and would crash.
#if defined(__x86_64__) && defined(__GNUC__) && !defined(__clang__) && !defined(__SANITIZE_THREAD__) && \
    !defined(__SANITIZE_ADDRESS__)
#define SONVALE_WIDE_VECTORS __attribute__((target_clones("avx2", "default")))
#else
#define SONVALE_WIDE_VECTORS
#endif

// log2(x) for a positive, normal x.
inline double LFastLog2(double x) {
  constexpr std::uint64_t kMantissa = (1ull << 52) - 1;
  constexpr std::uint64_t kOne = 1023ull << 52;
  const std::uint64_t bits = std::bit_cast<std::uint64_t>(x);
  // x = 2^e * m with m in [sqrt(1/2), sqrt(2)), so the series below converges fast.
  const std::uint64_t high = (bits & kMantissa) > 0x6A09E667F3BCDull ? 1 : 0;  // mantissa of sqrt(2)
  const double e = static_cast<double>(static_cast<std::int64_t>(bits >> 52) - 1023 + static_cast<std::int64_t>(high));
  const double m = std::bit_cast<double>((bits & kMantissa) | (kOne - (high << 52)));
  // log2(m) = 2 / ln 2 * atanh(z), z = (m - 1) / (m + 1), |z| <= 0.172.
  const double z = (m - 1.0) / (m + 1.0), z2 = z * z;
  constexpr double k = 2.0 / std::numbers::ln2;
  const double series = 1.0 + z2 * (1.0 / 3 + z2 * (1.0 / 5 + z2 * (1.0 / 7 + z2 * (1.0 / 9 + z2 * (1.0 / 11)))));
  return e + k * z * series;
}

// 2^y for |y| < 1000.
inline double LFastExp2(double y) {
  // Adding 1.5 * 2^52 rounds y to the nearest whole number n, which then sits in the low bits.
  constexpr double kRound = 6755399441055744.0;
  const double shifted = y + kRound;
  const double n = shifted - kRound;
  const std::int64_t whole = std::bit_cast<std::int64_t>(shifted) - std::bit_cast<std::int64_t>(kRound);
  // 2^f = e^(f ln 2) for |f| <= 1/2 by its series.
  const double t = (y - n) * std::numbers::ln2;
  const double high = 1.0 / 720 + t * (1.0 / 5040 + t * (1.0 / 40320 + t * (1.0 / 362880 + t * (1.0 / 3628800))));
  const double p = 1.0 + t * (1.0 + t * (1.0 / 2 + t * (1.0 / 6 + t * (1.0 / 24 + t * (1.0 / 120 + t * high)))));
  return std::bit_cast<double>(std::bit_cast<std::int64_t>(p) + (whole << 52));
}
