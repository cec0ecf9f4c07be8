#include "engine/sample_format.h"

// G.711 compression after the ITU-T recommendation, from 16-bit linear values
// (the 516096 working scale divided by 16).
namespace {

int Segment(int value, const short* ends) {
  for (int i = 0; i < 8; ++i) {
    if (value <= ends[i]) return i;
  }
  return 8;
}

unsigned char LinearToALaw(int pcm) {
  static const short kEnds[8] = {0x1F, 0x3F, 0x7F, 0xFF, 0x1FF, 0x3FF, 0x7FF, 0xFFF};
  int mask;
  pcm >>= 3;
  if (pcm >= 0) {
    mask = 0xD5;
  } else {
    mask = 0x55;
    pcm = -pcm - 1;
  }
  int seg = Segment(pcm, kEnds);
  if (seg >= 8) return static_cast<unsigned char>(0x7F ^ mask);
  int code = seg << 4;
  code |= (seg < 2) ? ((pcm >> 1) & 0x0F) : ((pcm >> seg) & 0x0F);
  return static_cast<unsigned char>(code ^ mask);
}

unsigned char LinearToULaw(int pcm) {
  static const short kEnds[8] = {0x3F, 0x7F, 0xFF, 0x1FF, 0x3FF, 0x7FF, 0xFFF, 0x1FFF};
  int mask;
  pcm >>= 2;
  if (pcm < 0) {
    pcm = -pcm;
    mask = 0x7F;
  } else {
    mask = 0xFF;
  }
  if (pcm > 8159) pcm = 8159;
  pcm += 0x84 >> 2;
  int seg = Segment(pcm, kEnds);
  if (seg >= 8) return static_cast<unsigned char>(0x7F ^ mask);
  int code = (seg << 4) | ((pcm >> (seg + 1)) & 0x0F);
  return static_cast<unsigned char>(code ^ mask);
}

constexpr double kWorkingScale = 516096.0;

// Float to the 16-bit linear input of the compressors, clamped (NaN is silence).
int ToLinear16(float v) {
  if (std::isnan(v)) return 0;
  double s = static_cast<double>(v) * kWorkingScale / 16.0;
  if (s > 32767.0) return 32767;
  if (s < -32768.0) return -32768;
  return static_cast<int>(lsf_detail::RoundHalfAway64(s));
}

}  // namespace

namespace lsf_detail {

unsigned char FloatToALaw(float v) { return LinearToALaw(ToLinear16(v)); }
unsigned char FloatToULaw(float v) { return LinearToULaw(ToLinear16(v)); }

}  // namespace lsf_detail
