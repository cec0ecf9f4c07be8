#include "effects/eq.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <memory>

#include "effect_test_sdf.h"
#include "effect_test_sources.h"
#include "effects/eq_point_line.h"
#include "effects/mix_simple.h"
#include "effects/point_list.h"
#include "effects/sound_process_by_name.h"
#include "effects/sound_process_setting_text.h"

namespace {

constexpr std::uint32_t kRate = 44100;
constexpr long long kFrames = 8 * kRate;
// Levels are measured here, well clear of the filter's reach from both ends.
constexpr long long kFrom = 2 * kRate;
constexpr long long kTo = 6 * kRate;

LSPEq Mapped(std::initializer_list<LPoint> points) {
  LPointList list;
  for (const LPoint& p : points) list.Add(p.frequency, p.gainDb);
  LSPEq eq;
  list.MapPointListToEq(eq, kRate);
  return eq;
}

LSPEq BandPass() { return Mapped({{10, -60}, {999, -60}, {1000, 0}, {2000, 0}, {2001, -60}, {20000, -60}}); }
LSPEq BandStop() { return Mapped({{10, 0}, {999, 0}, {1000, -60}, {2000, -60}, {2001, 0}, {20000, 0}}); }

std::vector<float> Filter(LSoundProcess& eq, const std::vector<float>& x, int channels = 1, long long block = kFrames) {
  LSoundSource input = MakeBufferSource(x, kRate, static_cast<std::uint8_t>(channels));
  LSoundSource s = eq.OpenSource(input);
  return ReadAll(s, static_cast<long long>(x.size()) / channels, block);
}

// Energy of a relative to b over the measured frames of one channel, in dB.
double RelativeDb(const std::vector<float>& a, const std::vector<float>& b, int channels = 1, int channel = 0) {
  double ea = 0, eb = 0;
  for (long long i = kFrom; i < kTo; ++i) {
    ea += static_cast<double>(a[i * channels + channel]) * a[i * channels + channel];
    eb += static_cast<double>(b[i * channels + channel]) * b[i * channels + channel];
  }
  return 10.0 * std::log10(ea / eb);
}

std::vector<float> Difference(const std::vector<float>& a, const std::vector<float>& b) {
  std::vector<float> d(a.size());
  for (std::size_t i = 0; i < a.size(); ++i) d[i] = a[i] - b[i];
  return d;
}

std::vector<float> Sum(std::initializer_list<std::vector<float>> parts) {
  std::vector<float> s(parts.begin()->size());
  for (const auto& p : parts)
    for (std::size_t i = 0; i < s.size(); ++i) s[i] += p[i];
  return s;
}

}  // namespace

TEST(Eq, TheBandPassKeepsItsBandAndTakesSixtyDecibelsOffTheRestAndTheBandStopTheOpposite) {
  for (bool pass : {true, false}) {
    LSPEq eq = pass ? BandPass() : BandStop();
    for (double hz : {1500.0, 500.0, 4000.0, 15000.0}) {
      std::vector<float> x = Sine(hz, 0.5, kRate, kFrames);
      const double db = RelativeDb(Filter(eq, x), x);
      if (pass == (hz == 1500.0)) {
        EXPECT_NEAR(db, 0.0, 0.1) << hz;
      } else {
        EXPECT_LE(db, -59.0) << hz;
        EXPECT_GE(db, -61.0) << hz;  // the floor: nothing goes further
      }
    }
  }
}

TEST(Eq, BandPassPlusBandStopGiveTheInputBackUpToTheFloor) {
  std::vector<float> x = Sum({Sine(500, 0.2, kRate, kFrames), Sine(1500, 0.2, kRate, kFrames),
                              Sine(4000, 0.2, kRate, kFrames), Sine(12000, 0.2, kRate, kFrames)});
  LSPEq pass = BandPass();
  LSPEq stop = BandStop();
  LSoundSource input = MakeBufferSource(x, kRate, 1);
  LSoundSource rest = stop.OpenSource(input);
  LSPMixSimple mix(rest);
  LSoundSource band = pass.OpenSource(input);
  LSoundSource both = mix.OpenSource(band);
  std::vector<float> y = ReadAll(both, kFrames, 8192);
  // Each tone passes once at 0 dB and once at the -60 dB floor: a residue of 1/1000.
  EXPECT_LE(RelativeDb(Difference(y, x), x), -59.9);
}

TEST(Eq, TheOutputIsAlignedWithTheInput) {
  LSPEq eq = BandPass();
  std::vector<float> x = Sine(1500, 0.5, kRate, kFrames);
  LSoundSource input = MakeBufferSource(x, kRate, 1);
  LSoundSource s = eq.OpenSource(input);
  EXPECT_EQ(s.GetEndSample(), kFrames);
  EXPECT_EQ(s.GetPositionSample(), 0);
  std::vector<float> y = ReadAll(s, kFrames + 100, 10000);
  EXPECT_EQ(s.GetPositionSample(), kFrames + 100);
  // A delay of one frame would differ by 0.1 at this frequency.
  float worst = 0;
  for (long long i = kFrom; i < kTo; ++i) worst = std::max(worst, std::abs(y[i] - x[i]));
  EXPECT_LT(worst, 1e-3f);
  for (long long i = kFrames; i < kFrames + 100; ++i) ASSERT_EQ(y[i], 0.0f);
  // The grid is finer than one hertz.
  EXPECT_LT(static_cast<double>(kRate) / dynamic_cast<LSRCEq*>(s.Get())->GetFilterLength(), 1.0);
}

TEST(Eq, ReadingInOddBlocksEqualsReadingWholeAndSeeksLandWhereAsked) {
  const long long frames = 3 * kRate;
  std::vector<float> x(static_cast<std::size_t>(frames * 2));
  std::vector<float> left = Sine(1500, 0.4, kRate, frames);
  std::vector<float> right = Sum({Sine(700, 0.3, kRate, frames), Sine(1200, 0.3, kRate, frames)});
  for (long long i = 0; i < frames; ++i) {
    x[i * 2] = left[i];
    x[i * 2 + 1] = right[i];
  }
  LSPEq eq = BandPass();
  std::vector<float> whole = Filter(eq, x, 2);
  EXPECT_EQ(Filter(eq, x, 2, 234), whole);
  EXPECT_EQ(Filter(eq, x, 2, 65537), whole);

  LSoundSource input = MakeBufferSource(x, kRate, 2);
  LSoundSource s = eq.OpenSource(input);
  s.Seek(-50);
  std::vector<float> head = ReadAll(s, 150, 33);
  for (long long i = 0; i < 100; ++i) ASSERT_EQ(head[i], 0.0f);
  for (long long i = 0; i < 100; ++i) ASSERT_EQ(head[100 + i], whole[i]);
  s.Seek(100000);
  std::vector<float> middle = ReadAll(s, 5000, 999);
  for (long long i = 0; i < 5000 * 2; ++i) ASSERT_NEAR(middle[i], whole[100000 * 2 + i], 1e-5) << i;
  // The channels are filtered apart: the right one loses its 700 Hz tone only.
  std::vector<float> rightIn1200 = Sine(1200, 0.3, kRate, frames);
  double err = 0;
  for (long long i = kRate; i < 2 * kRate; ++i) err = std::max(err, std::abs(double(whole[i * 2 + 1]) - rightIn1200[i]));
  EXPECT_LT(err, 2e-3);
}

TEST(Eq, GainsAreKeptWithinTheFloorAndCeilingRoundTripThroughSavingAndAFlatCurveDoesNothing) {
  LSPEq eq = Mapped({{100, -90}, {200, 50}});
  EXPECT_EQ(eq.GetGains().size(), kRate / 2 + 1);
  EXPECT_EQ(eq.GainAt(50), kLEqFloorDb);
  EXPECT_EQ(eq.GainAt(10000), kLEqCeilingDb);

  LSPEq pass = BandPass();
  EXPECT_EQ(pass.GainAt(999), -60.0);
  EXPECT_EQ(pass.GainAt(1000), 0.0);
  EXPECT_EQ(pass.GainAt(999.5), -30.0);
  LSPEq loaded;
  LoadEffect(loaded, SaveEffect(pass));
  EXPECT_EQ(loaded.GetGains(), pass.GetGains());
  std::unique_ptr<LSoundProcess> copy(loaded.GetNewCopy());
  EXPECT_EQ(static_cast<LSPEq*>(copy.get())->GetGains(), pass.GetGains());

  LSPEq flat;
  LSoundSource input = MakeBufferSource(Staircase(10, 1), kRate, 1);
  EXPECT_EQ(flat.OpenSource(input).Get(), input.Get());
  LSPEq zeros = Mapped({{100, 0}, {5000, 0}});
  EXPECT_EQ(zeros.OpenSource(input).Get(), input.Get());
}

TEST(EqPointLine, FollowsItsDrawnCurveAtThePointsBetweenThemAndHasLinearPhase) {
  LSPEqPointLine eq;
  std::string message;
  for (const char* point : {"200=0", "1000 Hz=12", "5000=-6", "20000=-6"})
    ASSERT_EQ(LSoundProcessSetFromText(eq, point, &message), LSPSettingTextResult::kOK) << point << message;
  // Points, the log-frequency middle of a segment, and beyond the last point.
  for (auto [hz, db] : {std::pair{1000.0, 12.0}, {5000.0, -6.0}, {100.0, 0.0}, {std::sqrt(5e6), 3.0}, {15000.0, -6.0}}) {
    std::vector<float> x = Sine(hz, 0.25, kRate, kFrames);
    EXPECT_NEAR(RelativeDb(Filter(eq, x), x), db, 0.5) << hz;
  }
  // An impulse comes out symmetric about where it went in.
  std::vector<float> impulse(static_cast<std::size_t>(kFrames));
  const std::size_t at = kFrames / 2;
  impulse[at] = 1.0f;
  std::vector<float> h = Filter(eq, impulse);
  const auto peak = std::max_element(h.begin(), h.end(), [](float a, float b) { return std::abs(a) < std::abs(b); });
  EXPECT_EQ(static_cast<std::size_t>(peak - h.begin()), at);
  for (std::size_t k = 1; k < 20000; ++k) ASSERT_NEAR(h[at + k], h[at - k], 1e-5) << k;
}

TEST(Eq, TheCommandsEqualizerTakesItsPointsAsParameters) {
  std::unique_ptr<LSoundProcess> eq = LSoundProcessCreateByName("equalizer");
  ASSERT_NE(eq, nullptr);
  std::string message;
  for (const char* point : {"100=-12", "1000Hz=6", "1000 Hz=0", "3000=0"})
    ASSERT_EQ(LSoundProcessSetFromText(*eq, point, &message), LSPSettingTextResult::kOK) << point << message;
  ASSERT_EQ(eq->GetNumParameters(), 3);
  LSoundProcessParameter p;
  eq->GetParameterByIndex(1, &p);
  EXPECT_STREQ(p.szName, "1000 Hz");
  for (auto [hz, db] : {std::pair{50.0, -12.0}, {550.0, -6.0}, {5000.0, 0.0}}) {
    std::vector<float> x = Sine(hz, 0.25, kRate, kFrames);
    EXPECT_NEAR(RelativeDb(Filter(*eq, x), x), db, 0.2) << hz;
  }
  EXPECT_EQ(LSoundProcessSetFromText(*eq, "50000=3", &message), LSPSettingTextResult::kOutOfRange);
  EXPECT_NE(message.find("Frequenz muss zwischen 0 und 48000 Hz liegen"), std::string::npos) << message;
}
