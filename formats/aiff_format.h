#pragma once
// The fixed parts of AIFF and AIFF-C files that the reader, the writer and the
// chunk walker share. All values are on disk: never change them.
#include <cstdint>

#include "base/array.h"

// A four-character id as the big-endian value read from a file.
constexpr std::uint32_t LAiffId(const char (&id)[5]) {
  return static_cast<std::uint32_t>(static_cast<unsigned char>(id[0])) << 24 |
         static_cast<std::uint32_t>(static_cast<unsigned char>(id[1])) << 16 |
         static_cast<std::uint32_t>(static_cast<unsigned char>(id[2])) << 8 |
         static_cast<std::uint32_t>(static_cast<unsigned char>(id[3]));
}

inline constexpr std::uint32_t kLAiffIdForm = LAiffId("FORM");
inline constexpr std::uint32_t kLAiffIdAiff = LAiffId("AIFF");
inline constexpr std::uint32_t kLAiffIdAifc = LAiffId("AIFC");
inline constexpr std::uint32_t kLAiffIdComm = LAiffId("COMM");
inline constexpr std::uint32_t kLAiffIdSsnd = LAiffId("SSND");
inline constexpr std::uint32_t kLAiffIdName = LAiffId("NAME");
inline constexpr std::uint32_t kLAiffIdAuth = LAiffId("AUTH");
inline constexpr std::uint32_t kLAiffIdCopyright = LAiffId("(c) ");
inline constexpr std::uint32_t kLAiffIdAnno = LAiffId("ANNO");
inline constexpr std::uint32_t kLAiffIdMark = LAiffId("MARK");

inline constexpr int kLAiffChunkHeaderBytes = 8;
inline constexpr int kLAiffFormHeaderBytes = 12;
inline constexpr int kLAiffCommBytes = 18;      // channels, frames, bits, rate
inline constexpr int kLAiffCommAifcBytes = 22;  // and the compression type
inline constexpr int kLAiffSsndFixedBytes = 8;  // offset and block size
// Text chunks longer than this are left out by the reader and cut by the writer.
inline constexpr std::uint32_t kLAiffMaxTextBytes = 65536;

inline std::uint16_t LAiffGetBE16(const unsigned char* p) { return static_cast<std::uint16_t>(p[0] << 8 | p[1]); }
inline std::uint32_t LAiffGetBE32(const unsigned char* p) {
  return static_cast<std::uint32_t>(p[0]) << 24 | static_cast<std::uint32_t>(p[1]) << 16 |
         static_cast<std::uint32_t>(p[2]) << 8 | p[3];
}
inline void LAiffPutBE16(LArray<unsigned char>& out, std::uint16_t v) {
  out.push_back(static_cast<unsigned char>(v >> 8));
  out.push_back(static_cast<unsigned char>(v));
}
inline void LAiffPutBE32(LArray<unsigned char>& out, std::uint32_t v) {
  for (int shift = 24; shift >= 0; shift -= 8) out.push_back(static_cast<unsigned char>(v >> shift));
}
