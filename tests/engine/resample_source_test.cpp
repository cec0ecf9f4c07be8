#include "engine/resample_source.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

namespace {

// A seekable sine of the given frequency on every channel, channel c shifted by c radians.
class SineSource final : public LSoundSourceBase {
public:
  SineSource(std::uint32_t rate, int channels, double hz, long long frames)
      : LSoundSourceBase(rate, static_cast<std::uint8_t>(channels)), hz_(hz), frames_(frames) {}
  void Read(float* out, long long n) override {
    const int ch = GetChannels();
    for (long long i = 0; i < n; ++i, ++pos_) {
      for (int c = 0; c < ch; ++c) {
        out[i * ch + c] = pos_ >= 0 && pos_ < frames_ ? static_cast<float>(Value(pos_, c)) : 0.0f;
      }
    }
  }
  double Value(long long f, int c) const { return 0.5 * std::sin(2.0 * M_PI * hz_ * f / GetSampleRate() + c); }
  long long GetPositionSample() const override { return pos_; }
  long long GetEndSample() const override { return frames_; }
  void Seek(long long frame) override { pos_ = frame; }

private:
  double hz_;
  long long frames_;
  long long pos_ = 0;
};

// From the source's position, with no seek first: a fresh converter's start is a path of its own.
std::vector<float> ReadAll(LSoundSource& s, long long block) {
  std::vector<float> all(static_cast<size_t>(s.GetEndSample() * s.GetChannels()));
  for (long long at = 0; at < s.GetEndSample(); at += block)
    s.Read(all.data() + at * s.GetChannels(), std::min(block, s.GetEndSample() - at));
  return all;
}

}  // namespace

#ifdef SONVALE_HAVE_SOXR

TEST(ResampleSource, EndIsTheRoundedScaledLengthReadsPastItAreSilentAndTheSameRatePassesThrough) {
  LSoundSource s = LSRCResample::Convert(LMakeSource<SineSource>(44100, 1, 440.0, 1001), 48000);
  EXPECT_EQ(s.GetSampleRate(), 48000u);
  EXPECT_EQ(s.GetEndSample(), 1090);  // 1089.52
  LSoundSource t = LSRCResample::Convert(LMakeSource<SineSource>(48000, 2, 440.0, 1000), 44100);
  EXPECT_EQ(t.GetEndSample(), 919);  // 918.75
  EXPECT_EQ(t.GetChannels(), 2);
  std::vector<float> tail(40, 1.0f);
  t.Seek(900);
  t.Read(tail.data(), 20);
  for (size_t i = 38; i < 40; ++i) EXPECT_EQ(tail[i], 0.0f) << i;
  EXPECT_EQ(t.GetPositionSample(), 920);
  // The same rate gives the input back; a failed input fails.
  LSoundSource same = LSRCResample::Convert(s, 48000);
  EXPECT_EQ(same.Get(), s.Get());
  LSoundSource failed = LSRCResample::Convert(LSoundSource::Error(kLSourceDamaged), 44100);
  EXPECT_TRUE(failed.IsError());
  EXPECT_EQ(failed.GetEndSample(), 0);
}

TEST(ResampleSource, EitherWayEachOutputFrameHoldsTheInputsValueAtItsOwnTime) {
  for (const auto& [from, to] : {std::pair{48000u, 44100u}, {44100u, 48000u}}) {
    LSoundSource s = LSRCResample::Convert(LMakeSource<SineSource>(from, 2, 1000.0, from / 2), to);
    std::vector<float> out = ReadAll(s, 8192);
    SineSource at(to, 2, 1000.0, to / 2);
    double worst = 0.0;
    for (long long f = 1000; f < to / 2 - 1000; ++f) {
      for (int c = 0; c < 2; ++c) worst = std::max(worst, std::fabs(out[f * 2 + c] - at.Value(f, c)));
    }
    EXPECT_LT(worst, 1e-5) << from << " to " << to;
  }
}

TEST(ResampleSource, OddBlocksSeeksAndNegativePositionsGiveTheSameFrames) {
  LSoundSource whole = LSRCResample::Convert(LMakeSource<SineSource>(48000, 2, 997.0, 100000), 44100);
  std::vector<float> ref = ReadAll(whole, 100000);
  LSoundSource odd = LSRCResample::Convert(LMakeSource<SineSource>(48000, 2, 997.0, 100000), 44100);
  EXPECT_EQ(ReadAll(odd, 234), ref);

  // Seeks backwards and forwards land on the frames that a reading from the start gives.
  for (long long target : {70000LL, 123LL, 40000LL, 91000LL}) {
    odd.Seek(target);
    std::vector<float> got(2 * 500);
    odd.Read(got.data(), 500);
    EXPECT_EQ(odd.GetPositionSample(), target + 500);
    for (size_t i = 0; i < got.size(); ++i) ASSERT_NEAR(got[i], ref[target * 2 + i], 1e-6) << target << " " << i;
  }

  odd.Seek(-10);
  std::vector<float> head(2 * 30);
  odd.Read(head.data(), 30);
  for (int i = 0; i < 20; ++i) EXPECT_EQ(head[i], 0.0f);
  for (int i = 20; i < 60; ++i) EXPECT_NEAR(head[i], ref[i - 20], 1e-6);
}

#else

TEST(ResampleSource, WithoutTheConverterTheSourceAnswersCodecMissingButTheSameRatePassesThrough) {
  LSoundSource s = LSRCResample::Convert(LMakeSource<SineSource>(44100, 1, 440.0, 100), 48000);
  EXPECT_EQ(s.GetErrorCode(), kLSourceCodecMissing);
  LSoundSource in = LMakeSource<SineSource>(44100, 1, 440.0, 100);
  EXPECT_EQ(LSRCResample::Convert(in, 44100).Get(), in.Get());
  EXPECT_TRUE(LSRCResample::Convert(LSoundSource::Error(kLSourceDamaged), 44100).IsError());
}

#endif
