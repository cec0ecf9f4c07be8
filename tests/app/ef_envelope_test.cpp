// Envelope: level curves over the selection; fades are straight ramps that
// span the selection exactly.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "app/ef_envelope.h"
#include "edit_fixture.h"

namespace {

using EfEnvelopeTest = EditTest;

constexpr long long kFrames = 10000;
constexpr long long kStart = 2000;
constexpr long long kEnd = 7001;  // 5001 frames: the ramp has 5000 steps

std::vector<float> Enveloped(const std::vector<float>& before, int channels, float (*gain)(long long)) {
  std::vector<float> out = before;
  for (long long f = kStart; f < kEnd; ++f)
    for (int c = 0; c < channels; ++c) out[static_cast<std::size_t>(f * channels + c)] *= gain(f - kStart);
  return out;
}

void ExpectNear(const std::vector<float>& actual, const std::vector<float>& expected) {
  ASSERT_EQ(actual.size(), expected.size());
  for (std::size_t i = 0; i < actual.size(); ++i)
    ASSERT_NEAR(actual[i], expected[i], 1e-6 * std::max(1.0f, std::fabs(expected[i]))) << "sample " << i;
}

TEST_F(EfEnvelopeTest, FadesAreLinearRampsOverTheWholeSelection) {
  for (bool fadeIn : {true, false}) {
    LCutListAudio list = DocListOf(std::vector<float>(kFrames * 2, 0.5f), 2);
    const std::vector<float> before = DocReadAll(list);
    Apply<SVEfEnvelope>(list, {kStart, kEnd, 0, 0, 0}, "Hüllkurve",
                        fadeIn ? SVEfEnvelope::FadeIn() : SVEfEnvelope::FadeOut());
    const std::vector<float> after = DocReadAll(list);
    ExpectNear(after, Enveloped(before, 2,
                                fadeIn ? +[](long long f) { return static_cast<float>(f / 5000.0); }
                                       : +[](long long f) { return static_cast<float>(1.0 - f / 5000.0); }));
    // The ramp ends exactly on the selection's first and last frames.
    EXPECT_EQ(after[2 * kStart], fadeIn ? 0.0f : 0.5f);
    EXPECT_EQ(after[2 * (kEnd - 1)], fadeIn ? 0.5f : 0.0f);
    EXPECT_EQ(after[2 * kEnd], 0.5f);
  }
}

TEST_F(EfEnvelopeTest, ACurveOfSeveralPointsRunsStraightBetweenThem) {
  LCutListAudio list = StaircaseList(kFrames, 1);
  const std::vector<float> before = DocReadAll(list);
  SVSelection selection{kStart, kEnd, 0, 0, 0};
  SVEfEnvelope envelope(list, selection, {{0.0, 1.0f}, {0.5, 0.0f}, {1.0, 0.5f}});
  LProcessInterfaceQuiet process;
  ASSERT_EQ(envelope.ProcessAndInsertCutList(process), 0);
  ExpectNear(DocReadAll(list), Enveloped(before, 1, [](long long f) {
               return static_cast<float>(f <= 2500 ? 1.0 - f / 2500.0 : 0.5 * (f - 2500) / 2500.0);
             }));
}

}  // namespace
