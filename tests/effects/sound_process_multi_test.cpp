#include "effects/sound_process_multi.h"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>

#include "effect_test_sdf.h"
#include "effect_test_sources.h"
#include "effects/echo.h"
#include "effects/eq.h"
#include "effects/gain.h"
#include "effects/point_list.h"
#include "effects/sound_process_unknown.h"

namespace {

void WriteRecord(LSDFWriter& w, const LSoundProcess& effect) {
  w.WriteInt(kLSPMultiChunkType, effect.GetSoundProcessType());
  w.StartContainer(kLSPMultiChunkEffect);
  effect.SaveToSDF(w);
  w.EndContainer(kLSPMultiChunkEffect);
}

LSPEcho Echo(int gain, long long time) {
  LSPEcho e;
  e.SetGain(gain);
  e.SetTime(time);
  return e;
}

}  // namespace

TEST(SoundProcessMulti, AContainerWithoutATypeIdBeforeItStopsTheLoad) {
  std::vector<unsigned char> bytes = MakeChainFile([](LSDFWriter& w) {
    WriteRecord(w, LSPGain(-6.0));
    w.StartContainer(kLSPMultiChunkEffect);  // no id since the last effect
    LSPGain(3.0).SaveToSDF(w);
    w.EndContainer(kLSPMultiChunkEffect);
    WriteRecord(w, Echo(20, 30));
  });
  LSoundProcessMulti chain;
  LoadChain(chain, bytes);
  ASSERT_EQ(chain.GetCount(), 1);
  EXPECT_EQ(static_cast<LSPGain*>(chain.GetFirst())->GetGainDb(), -6.0);
}

TEST(SoundProcessMulti, TheReservedId16384AndAShortIdEndTheChain) {
  std::vector<unsigned char> reserved = MakeChainFile([](LSDFWriter& w) {
    WriteRecord(w, Echo(20, 30));
    w.WriteInt(kLSPMultiChunkType, 16384);
    w.StartContainer(kLSPMultiChunkEffect);
    w.EndContainer(kLSPMultiChunkEffect);
    WriteRecord(w, LSPGain(1.0));
  });
  LSoundProcessMulti chain;
  LoadChain(chain, reserved);
  EXPECT_EQ(chain.GetCount(), 1);

  std::vector<unsigned char> shortId = MakeChainFile([](LSDFWriter& w) {
    const unsigned char two[] = {1, 0};
    w.StartChunk(kLSPMultiChunkType, kSDFChunkTypeInt);
    w.WriteData(two, sizeof two);
    w.EndChunk(kLSPMultiChunkType);
    w.StartContainer(kLSPMultiChunkEffect);
    w.EndContainer(kLSPMultiChunkEffect);
    WriteRecord(w, LSPGain(1.0));
  });
  LSoundProcessMulti chain2;
  LoadChain(chain2, shortId);
  EXPECT_EQ(chain2.GetCount(), 0);
}

TEST(SoundProcessMulti, APointListEqualiserInARecordIsDroppedAndTheEffectsAfterItLoad) {
  LPointList points;
  points.Add(100, -12);
  points.Add(5000, 6);
  LSPEq eq;
  points.MapPointListToEq(eq, 8000);
  std::vector<unsigned char> bytes = MakeChainFile([&](LSDFWriter& w) {
    WriteRecord(w, LSPGain(2.0));
    WriteRecord(w, eq);
    w.WriteInt(0x3000, 5);  // other chunks between records are passed over
    WriteRecord(w, Echo(40, 400));
  });
  LSoundProcessMulti chain;
  LoadChain(chain, bytes);
  ASSERT_EQ(chain.GetCount(), 2);
  EXPECT_EQ(chain.GetAt(0)->GetSoundProcessType(), 1);
  EXPECT_EQ(chain.GetAt(1)->GetSoundProcessType(), 3);
  EXPECT_EQ(chain.GetAt(1)->GetIndexInPreset(), 1);
  EXPECT_EQ(chain.GetAt(0)->pNext, chain.GetAt(1));
  EXPECT_EQ(chain.GetAt(1)->pNext, nullptr);
  EXPECT_EQ(chain.GetAt(2), nullptr);
}

TEST(SoundProcessMulti, ADisabledEffectIsSkippedWhenOpenedButSavedAndLoadedWithItsFlag) {
  LSoundProcessMulti chain;
  chain.Append(std::make_unique<LSPEcho>(Echo(50, 2)));
  auto gain = std::make_unique<LSPGain>(20.0);
  gain->bDisabled = true;
  chain.Append(std::move(gain));

  std::vector<float> samples = Sine(440.0, 0.5, 8000, 1000);
  LSoundSource input = MakeBufferSource(samples, 8000, 1);
  LSoundSource viaChain = chain.OpenSource(input);
  LSPEcho alone = Echo(50, 2);
  LSoundSource input2 = MakeBufferSource(samples, 8000, 1);
  LSoundSource viaEcho = alone.OpenSource(input2);
  EXPECT_EQ(ReadAll(viaChain, 1000, 1000), ReadAll(viaEcho, 1000, 1000));

  LSoundProcessMulti loaded;
  LoadChain(loaded, SaveChain(chain));
  ASSERT_EQ(loaded.GetCount(), 2);
  EXPECT_FALSE(loaded.GetAt(0)->bDisabled);
  EXPECT_TRUE(loaded.GetAt(1)->bDisabled);
  EXPECT_EQ(static_cast<LSPGain*>(loaded.GetAt(1))->GetGainDb(), 20.0);
}

TEST(SoundProcessMulti, TheFirstEffectProcessesTheRawInputAndEachLaterOneTheOutputBefore) {
  LSoundProcessMulti chain;
  chain.Append(std::make_unique<LSPEcho>(Echo(50, 1)));
  chain.Append(std::make_unique<LSPGain>(-6.0));
  std::vector<float> samples = Staircase(200, 2, 200.0f);
  LSoundSource input = MakeBufferSource(samples, 8000, 2);
  LSoundSource out = chain.OpenSource(input);

  LSoundSource input2 = MakeBufferSource(samples, 8000, 2);
  LSPEcho echo = Echo(50, 1);
  LSoundSource echoed = echo.OpenSource(input2);
  LSPGain gain(-6.0);
  LSoundSource expected = gain.OpenSource(echoed);
  EXPECT_EQ(ReadAll(out, 200, 37), ReadAll(expected, 200, 200));
}

TEST(SoundProcessMulti, AChainWithNothingToApplyAnswersTheInputItself) {
  LSoundSource input = MakeBufferSource(Staircase(10, 1), 8000, 1);
  LSoundProcessMulti empty;
  LSoundSource out = empty.OpenSource(input);
  EXPECT_EQ(out.Get(), input.Get());
  EXPECT_EQ(input.RefCount(), 2);

  LSoundProcessMulti invalidOnly;
  invalidOnly.Append(std::make_unique<LSPGain>(std::nan("")));
  auto echo = std::make_unique<LSPEcho>();
  echo->bDisabled = true;
  invalidOnly.Append(std::move(echo));
  EXPECT_EQ(invalidOnly.OpenSource(input).Get(), input.Get());
}

TEST(SoundProcessMulti, MovingAChainHandsOverItsEffects) {
  LSoundProcessMulti a;
  a.Append(std::make_unique<LSPGain>(1.0));
  a.Append(std::make_unique<LSPGain>(2.0));
  LSoundProcessMulti b(std::move(a));
  EXPECT_EQ(a.GetCount(), 0);
  EXPECT_EQ(b.GetCount(), 2);
  a = std::move(b);
  EXPECT_EQ(a.GetCount(), 2);
  a.Clear();
  EXPECT_EQ(a.GetFirst(), nullptr);
}
