// Source effects: the selection rendered through the effect's source into one
// new cache item; labels; the echo and the equaliser given their settings;
// failures and cancellation leave the document alone.
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <memory>

#include "app/dc_offset_correction.h"
#include "app/ef_echo.h"
#include "app/ef_effect_chain.h"
#include "app/ef_envelope.h"
#include "app/ef_equaliser.h"
#include "app/ef_gain.h"
#include "app/ef_normalize.h"
#include "app/ef_reverse.h"
#include "app/ef_sound_source_process.h"
#include "edit_fixture.h"
#include "engine/channel_map_source.h"
#include "engine/sound_cache.h"

namespace {

using EfSoundSourceProcessTest = EditTest;

class PassThrough final : public SVEfSoundSourceProcess {
public:
  using SVEfSoundSourceProcess::SVEfSoundSourceProcess;
  const char* GetEffectName() const override { return "Durchlass"; }
};

class ToMono final : public SVEfSoundSourceProcess {
public:
  using SVEfSoundSourceProcess::SVEfSoundSourceProcess;
  const char* GetEffectName() const override { return "Mono"; }
  LSoundSource OpenSource(LSoundSource& input) override { return LSRCChannelMap::Convert(input, 1); }
};

TEST_F(EfSoundSourceProcessTest, TheDefaultSourcePassesTheSelectionThroughIntoANewItem) {
  LCutListAudio list = PiecewiseStaircase(20000, 2, 2);
  const std::vector<float> before = DocReadAll(list);
  SVSelection selection{3000, 17000, 0, 0, 0};
  PassThrough effect(list, selection);
  LProcessInterfaceQuiet process;
  ASSERT_EQ(effect.ProcessAndInsertCutList(process), 0);
  EXPECT_EQ(DocReadAll(list), before);
  EXPECT_EQ(process.Status(0), "Durchlass");
  EXPECT_EQ(process.Progress(), 1.0);
  EXPECT_EQ(CacheAudioFiles(), 3);
  ASSERT_EQ(list.SegmentCount(), 3);
  EXPECT_EQ(std::get<1>(ShapeOf(list)[1]), 14000);
}

TEST_F(EfSoundSourceProcessTest, GainsAndChainsCarryTheirLabelsAndRewriteTheSelectionOnly) {
  LCutListAudio list = StaircaseList(10000, 1);
  SVSelection selection{2000, 6000, 0, 0, 0};
  Apply<SVEfGain>(list, selection, "Leiser", -20.0 * std::log10(2.0), "Leiser");
  const std::vector<float> after = DocReadAll(list);
  for (long long f = 0; f < 10000; ++f) {
    const float value = DocStaircaseValue(f, 0);
    if (f >= 2000 && f < 6000)
      ASSERT_NEAR(after[static_cast<std::size_t>(f)], value * 0.5f, value * 1e-6f) << f;
    else
      ASSERT_EQ(after[static_cast<std::size_t>(f)], value) << f;
  }
  EXPECT_STREQ(SVEfGain(list, selection, 1.0).GetEffectName(), "Verstärkung");

  LSoundProcessMulti chain;
  chain.Append(std::make_unique<LSPGain>(-20.0 * std::log10(2.0)));
  chain.Append(std::make_unique<LSPGain>(-20.0 * std::log10(2.0)));
  EXPECT_STREQ(SVEfEffectChain(list, selection, chain).GetEffectName(), "Effektkette");
  EXPECT_STREQ(SVEfEffectChain(list, selection, chain, "").GetEffectName(), "Effektkette");
  Apply<SVEfEffectChain>(list, {0, 10000, 0, 0, 0}, "Meine Kette", chain, "Meine Kette");
  EXPECT_NEAR(DocReadAll(list)[9999], 9999.0f / 4, 9999.0f * 1e-6f);
}

TEST_F(EfSoundSourceProcessTest, ASourceOfAnotherChannelCountFailsWithTheDocumentUntouched) {
  LCutListAudio list = StaircaseList(4000, 2);
  const auto shape = ShapeOf(list);
  SVSelection selection{0, 4000, 0, 0, 0};
  ToMono effect(list, selection);
  LProcessInterfaceQuiet process;
  EXPECT_EQ(effect.ProcessAndInsertCutList(process), kLProcessFailed);
  EXPECT_EQ(ShapeOf(list), shape);
  EXPECT_EQ(CacheAudioFiles(), 1);
}

// The channel effects are counted with their samples elsewhere.
TEST_F(EfSoundSourceProcessTest, EveryEffectAddsExactlyOneCacheItem) {
  using Make = std::function<std::unique_ptr<SVEfCutListProcess>(LCutListAudio&, SVSelection&)>;
  LSoundProcessMulti chain;
  chain.Append(std::make_unique<LSPGain>(-3.0));
  LPointList curve;
  curve.Add(100, 0);
  curve.Add(2000, -12);
  LSPEcho echo;
  echo.SetTime(20);
  const std::vector<Make> makers = {
      [&](LCutListAudio& l, SVSelection& s) { return std::make_unique<SVEfEcho>(l, s, echo); },
      [&](LCutListAudio& l, SVSelection& s) { return std::make_unique<SVEfGain>(l, s, 3.0); },
      [&](LCutListAudio& l, SVSelection& s) { return std::make_unique<SVEfEffectChain>(l, s, chain); },
      [&](LCutListAudio& l, SVSelection& s) { return std::make_unique<SVEfNormalize>(l, s); },
      [&](LCutListAudio& l, SVSelection& s) { return std::make_unique<SVEfEqualiser>(l, s, curve); },
      [&](LCutListAudio& l, SVSelection& s) { return std::make_unique<SVEfEnvelope>(l, s, SVEfEnvelope::FadeIn()); },
      [&](LCutListAudio& l, SVSelection& s) { return std::make_unique<SVEfReverse>(l, s); },
      [&](LCutListAudio& l, SVSelection& s) { return std::make_unique<SVDCOffsetCorrection>(l, s); },
  };
  LCutListAudio list = StaircaseList(30000, 2, 8000);
  int files = CacheAudioFiles();
  std::vector<LCutListAudio> kept;  // every state's items, as the undo ring holds them
  for (const Make& make : makers) {
    kept.push_back(list);
    SVSelection selection{5000, 25000, 0, 0, 0};
    const std::unique_ptr<SVEfCutListProcess> effect = make(list, selection);
    LProcessInterfaceQuiet process;
    ASSERT_EQ(effect->ProcessAndInsertCutList(process), 0) << effect->GetEffectName();
    EXPECT_EQ(CacheAudioFiles(), ++files) << effect->GetEffectName();
    EXPECT_EQ(list.GetLength(), 30000) << effect->GetEffectName();
    EXPECT_EQ(selection.end, 25000) << effect->GetEffectName();
  }
}

TEST_F(EfSoundSourceProcessTest, AnImpulseInTheSelectionComesBackAfterTheEchosDelay) {
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

TEST_F(EfSoundSourceProcessTest, TheEqualisersCurveShapesTheSelectionOnlyAtTheAudiosOwnRate) {
  constexpr std::uint32_t kRate = 8000;
  const std::vector<float> signal = Tones({{300, 0.3}, {2500, 0.3}}, 8 * kRate, kRate);
  LCutListAudio list = DocListOf(signal, 1, kRate);
  LPointList curve;
  curve.Add(1000, 0.0);
  curve.Add(1500, -60.0);
  Apply<SVEfEqualiser>(list, {kRate, 7 * kRate, 0, 0, 0}, "Entzerren", curve);
  const std::vector<float> after = DocReadAll(list);
  EXPECT_NEAR(ToneAmplitude(after, 3 * kRate, 2 * kRate, 300, kRate), 0.3, 0.3 * 1e-3);
  EXPECT_NEAR(ToneAmplitude(after, 3 * kRate, 2 * kRate, 2500, kRate), 0.0, 0.3 * 2e-3);
  EXPECT_EQ(Frames(after, 1, 0, kRate), Frames(signal, 1, 0, kRate));
}

}  // namespace
