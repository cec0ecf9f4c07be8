// Echo: the selection through the feedback echo of the given settings.
#include <gtest/gtest.h>

#include "app/ef_echo.h"
#include "edit_fixture.h"

namespace {

using EfEchoTest = EditTest;

TEST_F(EfEchoTest, AnImpulseInTheSelectionComesBackAfterTheDelay) {
  constexpr std::uint32_t kRate = 8000;
  std::vector<float> samples(3 * kRate, 0.0f);
  samples[kRate + 10] = 1.0f;
  LCutListAudio list = DocListOf(samples, 1, kRate);
  LSPEcho settings;
  settings.SetGain(50);
  settings.SetTime(100);
  SVSelection selection{kRate, 2 * kRate, 0, 0, 0};
  SVEfEcho echo(list, selection, settings);
  EXPECT_STREQ(echo.GetEffectName(), "Echo");
  settings.SetGain(90);  // the object keeps its own copy
  LProcessInterfaceQuiet process;
  ASSERT_EQ(echo.ProcessAndInsertCutList(process), 0);
  const std::vector<float> after = DocReadAll(list);
  EXPECT_EQ(after[kRate + 10], 1.0f);
  EXPECT_EQ(after[kRate + 10 + 800], 0.5f);
  EXPECT_EQ(after[kRate + 10 + 1600], 0.25f);
  EXPECT_EQ(after[kRate + 10 + 799], 0.0f);
}

}  // namespace
