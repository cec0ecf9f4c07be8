#include "engine/sample_format.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <vector>

namespace {

template <class Tag>
std::vector<unsigned char> Out(const std::vector<float>& in) {
  std::vector<unsigned char> bytes(in.size() * Tag::kBytes);
  ConvertSamplesOut<Tag>(bytes.data(), in.data(), static_cast<long long>(in.size()));
  return bytes;
}

template <class Tag>
std::vector<float> In(const std::vector<unsigned char>& bytes) {
  std::vector<float> out(bytes.size() / Tag::kBytes);
  ConvertSamplesIn<Tag>(out.data(), bytes.data(), static_cast<long long>(out.size()));
  return out;
}

// Little-endian signed integers of the given width, one per sample.
template <class Int>
std::vector<long long> Ints(const std::vector<unsigned char>& b) {
  std::vector<long long> v;
  for (std::size_t at = 0; at + sizeof(Int) <= b.size(); at += sizeof(Int)) {
    Int x;
    std::memcpy(&x, b.data() + at, sizeof x);
    v.push_back(x);
  }
  return v;
}

using Codes = std::vector<unsigned char>;

}  // namespace

TEST(SampleFormat, IntegerWritingRoundsHalfAwayAndClampsOrWrapsAsEachWidthDoes) {
  // Sixteen bits clamp only at the top.
  EXPECT_EQ(Ints<std::int16_t>(Out<LSF16>({1.0f, -1.0f, 0.49f / 32767.0f, 2.0f, -2.0f, 0.5f / 32767.0f,
                                            -0.5f / 32767.0f})),
            (std::vector<long long>{32767, -32767, 0, 32767, -32768, 1, -1}));
  EXPECT_EQ(In<LSF16>({0x00, 0x80})[0], -32768.0f / 32767.0f);
  // Unsigned eight bits truncate after the offset (128.508 gives 128) while signed ones round.
  EXPECT_EQ(Out<LSFU8>({0.0f, 1.0f, -1.0f, 0.004f}), (Codes{128, 255, 1, 128}));
  EXPECT_EQ(Ints<std::int8_t>(Out<LSFS8>({0.004f, -0.004f, 1.0f})), (std::vector<long long>{1, -1, 127}));
  EXPECT_EQ(Out<LSFBE8>({0.004f}), Codes{0});
  EXPECT_EQ(In<LSFU8>({128, 255}), (std::vector<float>{0.0f, 1.0f}));
  // Eight bits wrap beyond full scale like the wide integers: 318.5 keeps 62, 190.5 rounds to -65 or cuts to -66.
  EXPECT_EQ(Out<LSFU8>({1.5f, -1.5f}), (Codes{62, 194}));
  EXPECT_EQ(Ints<std::int8_t>(Out<LSFS8>({1.5f, -1.5f})), (std::vector<long long>{-65, 65}));
  EXPECT_EQ(Ints<std::int8_t>(Out<LSFBE8>({1.5f})), (std::vector<long long>{-66}));
  // Wide integers wrap beyond full scale.
  EXPECT_EQ(Ints<std::int32_t>(Out<LSF32>({1.5f, 1.0f})), (std::vector<long long>{-1073741825, 2147483647}));
  const Codes t = Out<LSFLE24>({1.0f, -1.0f, 0.0f});
  EXPECT_EQ(t, (Codes{0xFF, 0xFF, 0x7F, 0x00, 0x00, 0x80, 0, 0, 0}));
  auto back = In<LSFLE24>(t);
  EXPECT_NEAR(back[0], 1.0f, 1e-6);
  EXPECT_NEAR(back[1], -1.0f, 1e-6);
}

TEST(SampleFormat, ByteSwappedFormatsMirrorTheirLittleEndianTwins) {
  std::vector<float> ramp;
  for (int i = 0; i < 37; ++i) ramp.push_back(-1.0f + i * 0.054f);
  auto le16 = Out<LSF16>(ramp), be16 = Out<LSFBE16>(ramp);
  auto le24 = Out<LSFLE24>(ramp), be24 = Out<LSFBE24>(ramp);
  auto le32 = Out<LSF32>(ramp), be32 = Out<LSFBE32>(ramp);
  auto f32 = Out<LSFF32>(ramp), fre32 = Out<LSFFRE32>(ramp);
  auto f64 = Out<LSFF64>(ramp), fre64 = Out<LSFFRE64>(ramp);
  for (size_t i = 0; i < ramp.size(); ++i) {
    for (int k = 0; k < 2; ++k) EXPECT_EQ(le16[2 * i + k], be16[2 * i + 1 - k]);
    for (int k = 0; k < 3; ++k) EXPECT_EQ(le24[3 * i + k], be24[3 * i + 2 - k]);
    for (int k = 0; k < 4; ++k) EXPECT_EQ(le32[4 * i + k], be32[4 * i + 3 - k]);
    for (int k = 0; k < 4; ++k) EXPECT_EQ(f32[4 * i + k], fre32[4 * i + 3 - k]);
    for (int k = 0; k < 8; ++k) EXPECT_EQ(f64[8 * i + k], fre64[8 * i + 7 - k]);
  }
  EXPECT_EQ(In<LSFBE16>(be16), In<LSF16>(le16));
  EXPECT_EQ(In<LSFBE24>(be24), In<LSFLE24>(le24));
  EXPECT_EQ(In<LSFBE32>(be32), In<LSF32>(le32));
  EXPECT_EQ(In<LSFFRE32>(fre32), ramp);
  EXPECT_EQ(In<LSFFRE64>(fre64), ramp);
}

TEST(SampleFormat, G711FollowsTheItuTablesInTheWorkingScale) {
  // Every code expands and compresses back to itself (the negative zero of mu-law aside).
  std::vector<unsigned char> codes(256);
  for (int i = 0; i < 256; ++i) codes[i] = static_cast<unsigned char>(i);
  auto a = In<LSFALAW>(codes);
  auto u = In<LSFULAW>(codes);
  auto a2 = Out<LSFALAW>(a);
  auto u2 = Out<LSFULAW>(u);
  for (int i = 0; i < 256; ++i) {
    EXPECT_EQ(a2[i], i) << i;
    if (i != 0x7F) {
      EXPECT_EQ(u2[i], i) << i;
    }
  }
  // Published values: A-law 0xD5 is +8, 0x2A is -32256; mu-law 0xFF is 0, 0x00 is -32124 (16-bit linear).
  EXPECT_FLOAT_EQ(a[0xD5], 8 * 16 / 516096.0f);
  EXPECT_FLOAT_EQ(a[0x2A], -32256 * 16 / 516096.0f);
  EXPECT_EQ(u[0xFF], 0.0f);
  EXPECT_FLOAT_EQ(u[0x00], -32124 * 16 / 516096.0f);
  // Silence, full scale and values that must not reach an integer cast unchecked.
  const Codes alaw = Out<LSFALAW>({0.0f, 1.0f, -1.0f, std::nanf(""), 1e30f, -1e30f});
  EXPECT_EQ(Codes(alaw.begin(), alaw.begin() + 5), (Codes{0xD5, 0xAA, 0x2A, 0xD5, 0xAA}));
  EXPECT_EQ(Out<LSFULAW>({0.0f, 1.0f, -1.0f, std::nanf("")}), (Codes{0xFF, 0x80, 0x00, 0xFF}));
}

TEST(SampleFormat, ResultsDoNotDependOnTheGrouping) {
  std::vector<float> x;
  for (int i = 0; i < 1001; ++i) x.push_back(static_cast<float>((i * 7919 % 2001) - 1000) / 700.0f);
  auto whole = Out<LSF16>(x);
  std::vector<unsigned char> pieces(whole.size());
  for (size_t at = 0; at < x.size();) {
    size_t n = std::min<size_t>(at % 11 + 1, x.size() - at);
    ConvertSamplesOut<LSF16>(pieces.data() + at * 2, x.data() + at, static_cast<long long>(n));
    at += n;
  }
  EXPECT_EQ(whole, pieces);
  auto bytes = Out<LSFLE24>(x);
  std::vector<float> piecesIn(x.size());
  for (size_t at = 0; at < x.size(); at += 3) {
    size_t n = std::min<size_t>(3, x.size() - at);
    ConvertSamplesIn<LSFLE24>(piecesIn.data() + at, bytes.data() + at * 3, static_cast<long long>(n));
  }
  EXPECT_EQ(In<LSFLE24>(bytes), piecesIn);
}

TEST(SampleFormat, EverySixteenAndTwentyFourBitCodeReadsAsItsQuotientByFullScale) {
  Codes codes16;
  for (int x = -32768; x < 32768; ++x) {
    codes16.insert(codes16.end(), {static_cast<unsigned char>(x), static_cast<unsigned char>(x >> 8)});
  }
  const std::vector<float> got16 = In<LSF16>(codes16);
  for (int x = -32768; x < 32768; ++x) {
    ASSERT_EQ(got16[static_cast<size_t>(x + 32768)], static_cast<float>(x) / 32767.0f) << x;
  }
  Codes codes24;
  for (std::int32_t x = -(1 << 23); x < (1 << 23); ++x) {
    codes24.insert(codes24.end(), {static_cast<unsigned char>(x), static_cast<unsigned char>(x >> 8),
                                   static_cast<unsigned char>(x >> 16)});
  }
  const std::vector<float> got24 = In<LSFLE24>(codes24);
  for (std::int32_t x = -(1 << 23); x < (1 << 23); ++x) {
    const float quotient = static_cast<float>(static_cast<double>(x * 256) / 2147483647.0);
    ASSERT_EQ(got24[static_cast<size_t>(x + (1 << 23))], quotient) << x;
  }
}
