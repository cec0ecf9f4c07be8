#pragma once
// Stored sample layouts and their conversion to and from float.
//
// Each layout is a tag type with the size of one stored value and two scalar
// conversions; ConvertSamplesIn/Out run them over whole runs of values (frames x
// channels) in groups of eight, so the compiler vectorises them. Results do not
// depend on the grouping. Integer formats scale by 2^(bits-1)-1 both ways, so
// -1.0 writes as -32767 in 16 bits and -32768 reads slightly below -1.0; only
// the 16-bit writer clamps, 8, 24 and 32 bits wrap. These quirks are deliberate:
// files written by earlier versions must read back the same.
#include <cmath>
#include <cstdint>
#include <cstring>
#include <type_traits>

namespace lsf_detail {

inline std::int32_t RoundHalfAway(float v) { return static_cast<std::int32_t>(v >= 0.0f ? v + 0.5f : v - 0.5f); }
inline std::int64_t RoundHalfAway64(double v) { return static_cast<std::int64_t>(v >= 0.0 ? v + 0.5 : v - 0.5); }
// Integer casts of NaN or huge values are undefined; stored formats take 0 and the limits instead.
inline float Finite(float v) { return std::isnan(v) ? 0.0f : v; }
inline double ClampForInt64(double v) {
  if (std::isnan(v)) return 0.0;
  if (v > 9.0e18) return 9.0e18;
  if (v < -9.0e18) return -9.0e18;
  return v;
}
// The low byte of a value already rounded or truncated: the 8-bit writers wrap, as 24 and 32 bits do.
inline unsigned char LowByte(double v) {
  return static_cast<unsigned char>(static_cast<std::uint64_t>(static_cast<std::int64_t>(ClampForInt64(v))));
}

template <class T>
inline T Load(const unsigned char* p) {
  T v;
  std::memcpy(&v, p, sizeof v);
  return v;
}
template <class T>
inline void Store(unsigned char* p, T v) {
  std::memcpy(p, &v, sizeof v);
}

// G.711 expansion after the ITU-T recommendation, to 16-bit linear values.
constexpr int ALawToLinear(unsigned char code) {
  code ^= 0x55;
  int t = (code & 0x0F) << 4;
  int seg = (code & 0x70) >> 4;
  if (seg == 0) {
    t += 8;
  } else {
    t += 0x108;
    if (seg > 1) t <<= seg - 1;
  }
  return (code & 0x80) ? t : -t;
}

constexpr int ULawToLinear(unsigned char code) {
  code = static_cast<unsigned char>(~code);
  int t = ((code & 0x0F) << 3) + 0x84;
  t <<= (code & 0x70) >> 4;
  return (code & 0x80) ? (0x84 - t) : (t - 0x84);
}

// 16-bit linear is the 516096 working scale divided by 16.
struct G711Table {
  float v[256];
};
template <int (*Expand)(unsigned char)>
constexpr G711Table MakeG711Table() {
  G711Table t{};
  for (int i = 0; i < 256; ++i) t.v[i] = static_cast<float>(Expand(static_cast<unsigned char>(i)) * 16 / 516096.0);
  return t;
}
inline constexpr G711Table kALawToFloat = MakeG711Table<ALawToLinear>();
inline constexpr G711Table kULawToFloat = MakeG711Table<ULawToLinear>();

unsigned char FloatToALaw(float v);
unsigned char FloatToULaw(float v);

}  // namespace lsf_detail

struct LSF16 {
  static constexpr int kBytes = 2;
  // The same float as dividing by 32767 for every code (the tests check all of
  // them), without a division per sample.
  static float In(const unsigned char* p) {
    return static_cast<float>(static_cast<double>(lsf_detail::Load<std::int16_t>(p)) * (1.0 / 32767.0));
  }
  static void Out(unsigned char* p, float v) {
    float s = lsf_detail::Finite(v) * 32767.0f;
    if (s > 32767.0f) s = 32767.0f;
    if (s < -32768.0f) s = -32768.0f;
    lsf_detail::Store<std::int16_t>(p, static_cast<std::int16_t>(lsf_detail::RoundHalfAway(s)));
  }
};

struct LSFBE16 {
  static constexpr int kBytes = 2;
  static float In(const unsigned char* p) {
    unsigned char s[2] = {p[1], p[0]};
    return LSF16::In(s);
  }
  static void Out(unsigned char* p, float v) {
    unsigned char s[2];
    LSF16::Out(s, v);
    p[0] = s[1];
    p[1] = s[0];
  }
};

struct LSFLE24 {
  static constexpr int kBytes = 3;
  static float In(const unsigned char* p) {
    std::int32_t v = static_cast<std::int32_t>((static_cast<std::uint32_t>(p[0]) << 8) |
                                               (static_cast<std::uint32_t>(p[1]) << 16) |
                                               (static_cast<std::uint32_t>(p[2]) << 24));
    // Equal to the division for every 24-bit code (checked by the tests).
    return static_cast<float>(static_cast<double>(v) * (1.0 / 2147483647.0));
  }
  static void Out(unsigned char* p, float v) {
    auto q = static_cast<std::uint64_t>(
        lsf_detail::RoundHalfAway64(lsf_detail::ClampForInt64(static_cast<double>(v) * 2147483647.0)));
    p[0] = static_cast<unsigned char>(q >> 8);
    p[1] = static_cast<unsigned char>(q >> 16);
    p[2] = static_cast<unsigned char>(q >> 24);
  }
};

struct LSFBE24 {
  static constexpr int kBytes = 3;
  static float In(const unsigned char* p) {
    unsigned char s[3] = {p[2], p[1], p[0]};
    return LSFLE24::In(s);
  }
  static void Out(unsigned char* p, float v) {
    unsigned char s[3];
    LSFLE24::Out(s, v);
    p[0] = s[2];
    p[1] = s[1];
    p[2] = s[0];
  }
};

struct LSF32 {
  static constexpr int kBytes = 4;
  static float In(const unsigned char* p) {
    return static_cast<float>(static_cast<double>(lsf_detail::Load<std::int32_t>(p)) / 2147483647.0);
  }
  static void Out(unsigned char* p, float v) {
    auto q = static_cast<std::uint64_t>(
        lsf_detail::RoundHalfAway64(lsf_detail::ClampForInt64(static_cast<double>(v) * 2147483647.0)));
    lsf_detail::Store<std::uint32_t>(p, static_cast<std::uint32_t>(q));
  }
};

struct LSFBE32 {
  static constexpr int kBytes = 4;
  static float In(const unsigned char* p) {
    unsigned char s[4] = {p[3], p[2], p[1], p[0]};
    return LSF32::In(s);
  }
  static void Out(unsigned char* p, float v) {
    unsigned char s[4];
    LSF32::Out(s, v);
    for (int i = 0; i < 4; ++i) p[i] = s[3 - i];
  }
};

struct LSFU8 {
  static constexpr int kBytes = 1;
  static float In(const unsigned char* p) {
    return static_cast<float>(static_cast<std::int8_t>(p[0] ^ 0x80)) / 127.0f;
  }
  // Truncates after the offset, unlike LSFS8, which rounds.
  static void Out(unsigned char* p, float v) { p[0] = lsf_detail::LowByte(lsf_detail::Finite(v) * 127.0f + 128.0f); }
};

struct LSFS8 {
  static constexpr int kBytes = 1;
  static float In(const unsigned char* p) { return static_cast<float>(static_cast<std::int8_t>(p[0])) / 127.0f; }
  static void Out(unsigned char* p, float v) {
    const double s = static_cast<double>(lsf_detail::Finite(v) * 127.0f);
    p[0] = lsf_detail::LowByte(s >= 0.0 ? s + 0.5 : s - 0.5);
  }
};

struct LSFBE8 {
  static constexpr int kBytes = 1;
  static float In(const unsigned char* p) { return LSFS8::In(p); }
  static void Out(unsigned char* p, float v) { p[0] = lsf_detail::LowByte(lsf_detail::Finite(v) * 127.0f); }
};

struct LSFF32 {
  static constexpr int kBytes = 4;
  static float In(const unsigned char* p) { return lsf_detail::Load<float>(p); }
  static void Out(unsigned char* p, float v) { lsf_detail::Store<float>(p, v); }
};

struct LSFF64 {
  static constexpr int kBytes = 8;
  static float In(const unsigned char* p) { return static_cast<float>(lsf_detail::Load<double>(p)); }
  static void Out(unsigned char* p, float v) { lsf_detail::Store<double>(p, static_cast<double>(v)); }
};

struct LSFFRE32 {
  static constexpr int kBytes = 4;
  static float In(const unsigned char* p) {
    unsigned char s[4] = {p[3], p[2], p[1], p[0]};
    return LSFF32::In(s);
  }
  static void Out(unsigned char* p, float v) {
    unsigned char s[4];
    LSFF32::Out(s, v);
    for (int i = 0; i < 4; ++i) p[i] = s[3 - i];
  }
};

struct LSFFRE64 {
  static constexpr int kBytes = 8;
  static float In(const unsigned char* p) {
    unsigned char s[8];
    for (int i = 0; i < 8; ++i) s[i] = p[7 - i];
    return LSFF64::In(s);
  }
  static void Out(unsigned char* p, float v) {
    unsigned char s[8];
    LSFF64::Out(s, v);
    for (int i = 0; i < 8; ++i) p[i] = s[7 - i];
  }
};

// G.711: the linear side works in a scale whose full scale is 516096.
struct LSFALAW {
  static constexpr int kBytes = 1;
  static float In(const unsigned char* p) { return lsf_detail::kALawToFloat.v[p[0]]; }
  static void Out(unsigned char* p, float v) { p[0] = lsf_detail::FloatToALaw(v); }
};

struct LSFULAW {
  static constexpr int kBytes = 1;
  static float In(const unsigned char* p) { return lsf_detail::kULawToFloat.v[p[0]]; }
  static void Out(unsigned char* p, float v) { p[0] = lsf_detail::FloatToULaw(v); }
};

// Stored values to float; count is frames x channels.
template <class Tag>
void ConvertSamplesIn(float* out, const void* in, long long count) {
  if constexpr (std::is_same_v<Tag, LSFF32>) {
    // Stored in the machine's own order: a copy.
    if (count > 0) std::memcpy(out, in, static_cast<size_t>(count) * sizeof(float));
    return;
  }
  const auto* src = static_cast<const unsigned char*>(in);
  long long i = 0;
  for (; i + 8 <= count; i += 8) {
    for (int k = 0; k < 8; ++k) out[i + k] = Tag::In(src + (i + k) * Tag::kBytes);
  }
  for (; i < count; ++i) out[i] = Tag::In(src + i * Tag::kBytes);
}

// Float to stored values; count is frames x channels.
template <class Tag>
void ConvertSamplesOut(void* out, const float* in, long long count) {
  if constexpr (std::is_same_v<Tag, LSFF32>) {
    if (count > 0) std::memcpy(out, in, static_cast<size_t>(count) * sizeof(float));
    return;
  }
  auto* dst = static_cast<unsigned char*>(out);
  long long i = 0;
  for (; i + 8 <= count; i += 8) {
    for (int k = 0; k < 8; ++k) Tag::Out(dst + (i + k) * Tag::kBytes, in[i + k]);
  }
  for (; i < count; ++i) Tag::Out(dst + i * Tag::kBytes, in[i]);
}
