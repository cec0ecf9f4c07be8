#pragma once
// The 80-bit IEEE 754 extended float (big-endian: sign and 15-bit exponent, then
// a 64-bit mantissa with an explicit integer bit) in which AIFF keeps its sample
// rate. Whole rates convert exactly both ways.

// Ten bytes to a double; infinities, NaNs and denormals read as 0.
[[nodiscard]] double LExtendedToDouble(const unsigned char bytes[10]);
// A finite double to ten bytes (0 for anything that is not finite).
void LDoubleToExtended(double value, unsigned char bytes[10]);
