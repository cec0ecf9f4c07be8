#include "effects/sound_process.h"

#include <gtest/gtest.h>

#include "effect_test_sdf.h"

namespace {

class BareEffect final : public LSoundProcess {
public:
  LSoundSource OpenSource(LSoundSource& input) override { return input; }
};

}  // namespace

// The flag is found past other chunks of the base container.
TEST(SoundProcess, TheBaseSavesOnlyTheDisabledFlagAndFindsItAmongOtherChunks) {
  BareEffect e;
  e.bDisabled = true;
  std::vector<unsigned char> bytes = MakeChainFile([&](LSDFWriter& w) {
    w.StartContainer(kLSPChunkBase);
    w.WriteInt(0x2005, 77);
    e.SaveToSDF(w);
    w.WriteString(0x2006, "danach");
    w.EndContainer(kLSPChunkBase);
  });
  // Header 12, root 12, base container 12, int 16, bool 13, string 19, trailer 4.
  EXPECT_EQ(bytes.size(), 12u + 12 + 12 + 16 + 13 + 19 + 4);
  BareEffect loaded;
  LoadEffect(loaded, bytes);
  EXPECT_TRUE(loaded.bDisabled);
}
