// Equaliser: the selection through the point-list curve, at the audio's own rate.
#include <gtest/gtest.h>

#include "app/ef_equaliser.h"
#include "edit_fixture.h"

namespace {

using EfEqualiserTest = EditTest;

TEST_F(EfEqualiserTest, TheCurveShapesTheSelectionOnly) {
  constexpr std::uint32_t kRate = 8000;
  const std::vector<float> signal = Tones({{300, 0.3}, {2500, 0.3}}, 8 * kRate, kRate);
  LCutListAudio list = DocListOf(signal, 1, kRate);
  LPointList curve;
  curve.Add(1000, 0.0);
  curve.Add(1500, -60.0);
  SVSelection selection{kRate, 7 * kRate, 0, 0, 0};
  SVEfEqualiser equaliser(list, selection, curve);
  EXPECT_STREQ(equaliser.GetEffectName(), "Entzerren");
  LProcessInterfaceQuiet process;
  ASSERT_EQ(equaliser.ProcessAndInsertCutList(process), 0);
  const std::vector<float> after = DocReadAll(list);
  EXPECT_NEAR(ToneAmplitude(after, 3 * kRate, 2 * kRate, 300, kRate), 0.3, 0.3 * 1e-3);
  EXPECT_NEAR(ToneAmplitude(after, 3 * kRate, 2 * kRate, 2500, kRate), 0.0, 0.3 * 2e-3);
  EXPECT_EQ(Frames(after, 1, 0, kRate), Frames(signal, 1, 0, kRate));
}

}  // namespace
