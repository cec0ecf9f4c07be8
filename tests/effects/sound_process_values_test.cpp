// The settings side shared by the filters, equalisers and dynamics: parameters,
// presets and what survives a chain file.
#include "effects/sound_process_values.h"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>

#include "base/memory_stream.h"
#include "effect_test_sdf.h"
#include "effects/effect_chain_file.h"
#include "effects/pass_filter.h"
#include "effects/sound_process_setting_text.h"
#include "effects/sound_process_table.h"
#include "effects/sound_process_type.h"

TEST(SoundProcessValues, EveryPresetOfEveryEffectRoundTripsThroughAChainFile) {
  LSoundProcessMulti chain;
  int expected = 0;
  for (int type : {kLSPTypeDRCSimple, kLSPTypeHighPass, kLSPTypeParametricEqBand, kLSPTypeLowPass,
                   kLSPTypeEqSimple3Band, kLSPTypeNoiseGate, kLSPTypeDRCPointLine,
                   kLSPTypeGraphicEqBand, kLSPTypeDeesser2, kLSPTypeEqPointLine,
                   kLSPTypeMultiBandNoiseGating,
                   kLSPTypeDoppler, kLSPTypeWahwah, kLSPTypePhaser, kLSPTypeAMRadio, kLSPTypeTelephone,
                   kLSPTypeVoicePitch, kLSPTypePitchSpeed, kLSPTypePitch,
                   kLSPTypeChorus, kLSPTypeDistortion, kLSPTypeFlanger, kLSPTypeReverb3, kLSPTypeTremolo,
                   kLSPTypeVibrato}) {
    std::unique_ptr<LSoundProcess> probe = LSoundProcessTypeRowOf(type)->make();
    ASSERT_GT(probe->GetNumPresets(), 1) << type;
    EXPECT_EQ(probe->GetIndexInPreset(), -1) << "the defaults are no preset";
    for (int p = 0; p < probe->GetNumPresets(); ++p) {
      std::unique_ptr<LSoundProcess> effect = LSoundProcessTypeRowOf(type)->make();
      effect->SetPreset(p);
      effect->bDisabled = p == 1;
      chain.Append(std::move(effect));
      ++expected;
    }
  }
  LMemoryStream stream;
  ASSERT_TRUE(LEffectChainSave(chain, stream));
  LMemoryStream in(stream.Bytes());
  LSoundProcessMulti loaded;
  ASSERT_EQ(LEffectChainLoad(loaded, in), LEffectChainLoadResult::kOK);
  ASSERT_EQ(loaded.GetCount(), expected);
  for (int i = 0; i < expected; ++i) {
    EXPECT_EQ(loaded.GetAt(i)->GetSoundProcessType(), chain.GetAt(i)->GetSoundProcessType()) << i;
    EXPECT_EQ(loaded.GetAt(i)->GetIndexInPreset(), chain.GetAt(i)->GetIndexInPreset()) << i;
    EXPECT_EQ(loaded.GetAt(i)->bDisabled, chain.GetAt(i)->bDisabled) << i;
  }
}

TEST(SoundProcessValues, ParametersAreSetByTheirOwnWidthAndOpenWithinTheirBounds) {
  LSPHighPass filter;
  LSoundProcessParameter slope;
  filter.GetParameterByIndex(kLSPPassSlope, &slope);
  EXPECT_EQ(slope.type, kLSPParamInt);
  int steep = 36;
  filter.SetParameterByIndex(kLSPPassSlope, &steep);
  double hz = 250.5;
  filter.SetParameterByIndex(kLSPPassHz, &hz);
  filter.SetParameterByIndex(filter.GetNumParameters(), &hz);
  EXPECT_EQ(filter.Value(kLSPPassSlope), 36.0);
  EXPECT_EQ(filter.Value(kLSPPassHz), 250.5);

  std::string message;
  EXPECT_EQ(LSoundProcessSetFromText(filter, "Ordnung=24", &message), LSPSettingTextResult::kOK);
  EXPECT_EQ(filter.Value(kLSPPassSlope), 24.0);
  EXPECT_EQ(LSoundProcessSetFromText(filter, "Frequenz=30000", &message), LSPSettingTextResult::kOutOfRange);
  EXPECT_EQ(filter.Value(kLSPPassHz), 250.5);

  LSoundProcessParameter frequency;
  filter.GetParameterByIndex(kLSPPassHz, &frequency);
  filter.SetValue(kLSPPassHz, 1e9);  // as damaged data may hold
  EXPECT_EQ(filter.OpenValue(kLSPPassHz), LSoundProcessParameter::Get<double>(frequency.pMax));
  filter.SetValue(kLSPPassSlope, 20.0);
  filter.SetValue(kLSPPassResonance, std::nan(""));
  EXPECT_FALSE(filter.IsValid());
  filter.bDisabled = true;
  std::unique_ptr<LSoundProcess> copy(filter.GetNewCopy());
  EXPECT_FALSE(copy->bDisabled);
  EXPECT_EQ(static_cast<LSPHighPass*>(copy.get())->Value(kLSPPassSlope), 20.0);
  filter.ResetToDefault();
  EXPECT_TRUE(filter.IsValid());
}

TEST(SoundProcessValues, AShortChunkKeepsItsSettingAndTheFlatLayoutLoads) {
  LSPHighPass kept;
  kept.SetValue(kLSPPassHz, 333.0);
  LoadEffect(kept, MakeChainFile([](LSDFWriter& w) {
               w.StartContainer(0x1000);
               w.WriteInt(kLSPChunkFirstSetting + kLSPPassHz, 1);
               const double slope = 48.0;
               w.WriteBlob(kLSPChunkFirstSetting + kLSPPassSlope, reinterpret_cast<const unsigned char*>(&slope), 8);
               w.EndContainer(0x1000);
             }));
  EXPECT_EQ(kept.Value(kLSPPassHz), 333.0);
  EXPECT_EQ(kept.Value(kLSPPassSlope), 48.0);

  LSPHighPass flat;
  LoadEffect(flat, MakeChainFile([](LSDFWriter& w) {
               w.StartContainer(0x1000);
               const double values[] = {90.0, 18.0};
               for (double v : values) w.WriteBlob(0x2001, reinterpret_cast<const unsigned char*>(&v), 8);
               w.EndContainer(0x1000);
             }),
             true);
  EXPECT_EQ(flat.Value(kLSPPassHz), 90.0);
  EXPECT_EQ(flat.Value(kLSPPassSlope), 18.0);
}
