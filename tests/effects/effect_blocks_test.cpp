// The dynamics and equalisers read the same sound whatever the block size, and a
// seek lands where reading straight through does.
#include <gtest/gtest.h>

#include <memory>

#include "effect_test_levels.h"
#include "effect_test_sources.h"
#include "effects/sound_process_table.h"
#include "effects/sound_process_type.h"

namespace {

constexpr std::uint32_t kRate = 44100;
constexpr long long kFrames = 3 * kRate;

class EffectBlocks : public testing::TestWithParam<int> {};

}  // namespace

TEST_P(EffectBlocks, OddBlocksGiveWhatOneBlockGivesAndASeekLandsInPlace) {
  std::unique_ptr<LSoundProcess> effect = LSoundProcessTypeRowOf(GetParam())->make();
  effect->SetPreset(0);
  std::vector<float> x = Sine(440.0, 0.3, kRate, kFrames, 2);
  const std::vector<float> hiss = Noise(0.05, x.size(), 5);
  for (std::size_t i = 0; i < x.size(); ++i) x[i] += hiss[i];

  LSoundSource whole = MakeBufferSource(x, kRate, 2);
  LSoundSource a = effect->OpenSource(whole);
  const std::vector<float> y = ReadAll(a, kFrames, kFrames);
  LSoundSource blocks = MakeBufferSource(x, kRate, 2);
  LSoundSource b = effect->OpenSource(blocks);
  EXPECT_EQ(ReadAll(b, kFrames, 234), y);

  const long long at = 2 * kRate + 17;
  b.Seek(at);
  const std::vector<float> part = ReadAll(b, 4000, 1000);
  EXPECT_EQ(b.GetPositionSample(), at + 4000);
  for (std::size_t i = 0; i < part.size(); ++i) ASSERT_NEAR(part[i], y[2 * at + i], 1e-3) << i;
}

INSTANTIATE_TEST_SUITE_P(Dynamics, EffectBlocks,
                         testing::Values(kLSPTypeDRCPointLine, kLSPTypeMultiBandNoiseGating, kLSPTypeDeesser2));
INSTANTIATE_TEST_SUITE_P(Equalisers, EffectBlocks, testing::Values(kLSPTypeGraphicEqBand, kLSPTypeEqPointLine));
INSTANTIATE_TEST_SUITE_P(Modulation, EffectBlocks,
                         testing::Values(kLSPTypeDoppler, kLSPTypeWahwah, kLSPTypePhaser, kLSPTypeAMRadio,
                                         kLSPTypeTelephone, kLSPTypeVoicePitch, kLSPTypeChorus, kLSPTypeFlanger,
                                         kLSPTypeTremolo, kLSPTypeVibrato));
INSTANTIATE_TEST_SUITE_P(Character, EffectBlocks, testing::Values(kLSPTypeDistortion, kLSPTypeReverb3));
