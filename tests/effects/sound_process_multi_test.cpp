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

TEST(SoundProcessMulti, AMissingOrShortTypeIdAndTheReservedId16384EndTheChain) {
  struct Case {
    const char* what;
    void (*write)(LSDFWriter&);
    int loaded;
  };
  const Case cases[] = {
      {"no id before the second container",
       [](LSDFWriter& w) {
         WriteRecord(w, LSPGain(-6.0));
         w.StartContainer(kLSPMultiChunkEffect);
         LSPGain(3.0).SaveToSDF(w);
         w.EndContainer(kLSPMultiChunkEffect);
         WriteRecord(w, Echo(20, 30));
       },
       1},
      {"reserved id",
       [](LSDFWriter& w) {
         WriteRecord(w, Echo(20, 30));
         w.WriteInt(kLSPMultiChunkType, 16384);
         w.StartContainer(kLSPMultiChunkEffect);
         w.EndContainer(kLSPMultiChunkEffect);
         WriteRecord(w, LSPGain(1.0));
       },
       1},
      {"short id",
       [](LSDFWriter& w) {
         const unsigned char two[] = {1, 0};
         w.StartChunk(kLSPMultiChunkType, kSDFChunkTypeInt);
         w.WriteData(two, sizeof two);
         w.EndChunk(kLSPMultiChunkType);
         w.StartContainer(kLSPMultiChunkEffect);
         w.EndContainer(kLSPMultiChunkEffect);
         WriteRecord(w, LSPGain(1.0));
       },
       0},
  };
  for (const Case& c : cases) {
    LSoundProcessMulti chain;
    LoadChain(chain, MakeChainFile(c.write));
    EXPECT_EQ(chain.GetCount(), c.loaded) << c.what;
  }
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

TEST(SoundProcessMulti, EachEffectProcessesTheOutputBeforeItAndADisabledOneIsSkippedButSaved) {
  LSoundProcessMulti chain;
  chain.Append(std::make_unique<LSPEcho>(Echo(50, 1)));
  auto disabled = std::make_unique<LSPGain>(20.0);
  disabled->bDisabled = true;
  chain.Append(std::move(disabled));
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

  LSoundProcessMulti loaded;
  LoadChain(loaded, SaveChain(chain));
  ASSERT_EQ(loaded.GetCount(), 3);
  EXPECT_FALSE(loaded.GetAt(0)->bDisabled);
  EXPECT_TRUE(loaded.GetAt(1)->bDisabled);
  EXPECT_EQ(static_cast<LSPGain*>(loaded.GetAt(1))->GetGainDb(), 20.0);
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
