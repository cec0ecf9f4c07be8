#include "effects/sound_process_unknown.h"

#include <gtest/gtest.h>

#include <memory>

#include "effect_test_sdf.h"
#include "effect_test_sources.h"
#include "effects/sound_process_factory.h"

namespace {

// A chain of one record of the given type whose effect wrote chunks of every kind.
std::vector<unsigned char> ForeignChain(int type) {
  return MakeChainFile([&](LSDFWriter& w) {
    w.WriteInt(kLSPMultiChunkType, type);
    w.StartContainer(kLSPMultiChunkEffect);
    w.StartContainer(kLSPChunkBase);
    w.WriteBool(kLSPChunkDisabled, false);
    w.EndContainer(kLSPChunkBase);
    w.WriteInt(0x2001, -5);
    w.WriteInt64(0x2002, 1LL << 40);
    w.WriteFloat(0x2003, 0.25f);
    w.WriteString(0x2004, "Einstellung");
    const unsigned char blob[] = {1, 2, 3, 4, 5, 6, 7};
    w.WriteBlob(0x2005, blob, sizeof blob);
    w.StartContainer(0x3000);
    w.WriteInt(0x3001, 9);
    w.EndContainer(0x3000);
    w.EndContainer(kLSPMultiChunkEffect);
  });
}

}  // namespace

TEST(SoundProcessUnknown, UnassignedAndNewerIdsLoadAsUnknownAreWrittenBackByteForByteAndPassTheSound) {
  LSoundProcessMulti all;
  for (int type : {18, 25, 26, 34, 99, 32766, -3}) {
    std::vector<unsigned char> original = ForeignChain(type);
    LSoundProcessMulti chain;
    LoadChain(chain, original);
    LoadChain(all, original);
    ASSERT_EQ(chain.GetCount(), 1) << type;
    auto* unknown = dynamic_cast<LSPUnknown*>(chain.GetFirst());
    ASSERT_NE(unknown, nullptr) << type;
    EXPECT_EQ(unknown->GetSoundProcessType(), type);
    EXPECT_EQ(unknown->listChunks.size(), 7u);
    EXPECT_EQ(SaveChain(chain), original) << type;
  }
  ASSERT_EQ(all.GetCount(), 7);
  std::vector<float> samples = Staircase(300, 2);
  LSoundSource input = MakeBufferSource(samples, 44100, 2);
  LSoundSource out = all.OpenSource(input);
  EXPECT_EQ(out.Get(), input.Get());
  EXPECT_EQ(ReadAll(out, 300, 77), samples);
}

TEST(SoundProcessUnknown, ACopyKeepsTheIdAndTheChunks) {
  LSPUnknown unknown(99);
  unknown.listChunks.push_back(LSDFUnknownChunk{0x2001, kSDFChunkTypeInt, {1, 0, 0, 0}, 1});
  unknown.bDisabled = true;
  std::unique_ptr<LSoundProcess> copy(unknown.GetNewCopy());
  auto* c = dynamic_cast<LSPUnknown*>(copy.get());
  ASSERT_NE(c, nullptr);
  EXPECT_EQ(c->nType, 99);
  ASSERT_EQ(c->listChunks.size(), 1u);
  EXPECT_EQ(c->listChunks.front().data, (LArray<unsigned char>{1, 0, 0, 0}));
  EXPECT_FALSE(c->bDisabled);
  char name[kLPathMax];
  EXPECT_STREQ(c->GetName(name), "Unbekannt");
  EXPECT_EQ(c->GetNumPresets(), 0);
  EXPECT_EQ(c->GetNumParameters(), 0);
}

TEST(SoundProcessUnknown, TheFactoryBuildsKnownEffectsAndUnknownForTheRest) {
  EXPECT_EQ(LSoundProcessCreate(0), nullptr);
  EXPECT_EQ(LSoundProcessCreate(16384), nullptr);
  for (int type : {1, 3, 9}) EXPECT_EQ(LSoundProcessCreate(type)->GetSoundProcessType(), type);
  // Effects not built here yet keep their id through an LSPUnknown.
  for (int type : {16, 32766}) {
    std::unique_ptr<LSoundProcess> effect = LSoundProcessCreate(type);
    EXPECT_NE(dynamic_cast<LSPUnknown*>(effect.get()), nullptr) << type;
    EXPECT_EQ(effect->GetSoundProcessType(), type);
  }
}
