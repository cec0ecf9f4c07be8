#pragma once
// Chebyshev (type I) low- and high-pass sections: a ripple in the pass band buys
// a far steeper edge than Butterworth sections of the same count, which is what
// a telephone's band needs.
#include <vector>

#include "effects/biquad.h"

// Sections of an even `order` (2 ... 16) poles, flat to within `rippleDb` up to
// (or down to) hz and falling from there; the pass band peaks at 0 dB.
std::vector<LBiquad> LBiquadChebyshev(double rate, double hz, int order, bool highPass, double rippleDb);
