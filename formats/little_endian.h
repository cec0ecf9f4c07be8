#pragma once
// Little-endian fields of RIFF headers, read and written byte by byte so that
// the layout does not depend on the host.
#include <cstdint>

inline std::uint16_t LGetLE16(const unsigned char* p) { return static_cast<std::uint16_t>(p[0] | p[1] << 8); }
inline std::uint32_t LGetLE32(const unsigned char* p) {
  return static_cast<std::uint32_t>(p[0]) | static_cast<std::uint32_t>(p[1]) << 8 |
         static_cast<std::uint32_t>(p[2]) << 16 | static_cast<std::uint32_t>(p[3]) << 24;
}
inline void LPutLE16(unsigned char* p, std::uint16_t v) {
  p[0] = static_cast<unsigned char>(v);
  p[1] = static_cast<unsigned char>(v >> 8);
}
inline void LPutLE32(unsigned char* p, std::uint32_t v) {
  for (int i = 0; i < 4; ++i) p[i] = static_cast<unsigned char>(v >> (8 * i));
}
