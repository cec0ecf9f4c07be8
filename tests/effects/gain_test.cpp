#include "effects/gain.h"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>

#include "effect_test_sdf.h"
#include "effect_test_sources.h"

TEST(Gain, MultipliesEverySampleByTheFactorOfItsDecibelsUnlessTheyAreNotANumber) {
  std::vector<float> x = Staircase(1000, 2, 1000.0f);
  LSoundSource input = MakeBufferSource(x, 44100, 2);
  LSPGain gain(-6.0);
  LSoundSource s = gain.OpenSource(input);
  const float factor = static_cast<float>(std::pow(10.0, -6.0 / 20.0));
  EXPECT_FLOAT_EQ(dynamic_cast<LSRCGain*>(s.Get())->GetFactor(), 0.50118723f);
  std::vector<float> out = ReadAll(s, 1000, 234);
  for (std::size_t i = 0; i < x.size(); ++i) ASSERT_EQ(out[i], x[i] * factor) << i;
  EXPECT_EQ(s.GetEndSample(), 1000);

  // Beyond the parameter's range the source clamps; the output is never clamped.
  LSPGain loud(100.0);
  LSoundSource half = MakeBufferSource({0.5f}, 44100, 1);
  LSoundSource s2 = loud.OpenSource(half);
  float y = 0;
  s2.Read(&y, 1);
  EXPECT_NEAR(y, 0.5f * std::pow(10.0f, 30.0f / 20.0f), 1e-3);

  LSPGain nan(std::nan(""));
  EXPECT_FALSE(nan.IsValid());
  LSoundSource pair = MakeBufferSource({0.25f, -0.5f}, 8000, 1);
  LSoundSource s3 = nan.OpenSource(pair);
  EXPECT_EQ(ReadAll(s3, 2, 2), (std::vector<float>{0.25f, -0.5f}));
}

TEST(Gain, ItsParameterSetsTheDecibelsAndEveryPresetIsRecognisedAgain) {
  LSPGain gain;
  double value = 4.25;
  gain.SetParameterByIndex(0, &value);
  EXPECT_EQ(gain.GetGainDb(), 4.25);

  ASSERT_GT(gain.GetNumPresets(), 0);
  for (int i = 0; i < gain.GetNumPresets(); ++i) {
    gain.SetPreset(i);
    EXPECT_EQ(gain.GetIndexInPreset(), i);
  }
  double before = gain.GetGainDb();
  gain.SetPreset(gain.GetNumPresets());
  EXPECT_EQ(gain.GetGainDb(), before);
  gain.ResetToDefault();
  EXPECT_EQ(gain.GetGainDb(), 0.0);
  EXPECT_EQ(gain.GetIndexInPreset(), -1);
}

TEST(Gain, SavesAndLoadsTheExactDecibelsAndAShortValueKeepsTheSetting) {
  LSPGain gain(-0.1);
  gain.bDisabled = true;
  LSPGain loaded;
  LoadEffect(loaded, SaveEffect(gain));
  EXPECT_EQ(loaded.GetGainDb(), -0.1);
  EXPECT_TRUE(loaded.bDisabled);
  std::unique_ptr<LSoundProcess> copy(loaded.GetNewCopy());
  EXPECT_EQ(static_cast<LSPGain*>(copy.get())->GetGainDb(), -0.1);
  EXPECT_FALSE(copy->bDisabled);

  LSPGain kept(3.0);
  LoadEffect(kept, MakeChainFile([](LSDFWriter& w) {
               w.StartContainer(0x1000);
               w.WriteInt(kLSPGainChunkDb, 1);
               w.EndContainer(0x1000);
             }));
  EXPECT_EQ(kept.GetGainDb(), 3.0);
}
