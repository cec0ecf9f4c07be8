#include "effects/effect_chain_file.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <memory>

#include "base/memory_stream.h"
#include "base/process_interface.h"
#include "base/sdf_writer.h"
#include "effects/echo.h"
#include "effects/gain.h"
#include "effects/sound_process_unknown.h"
#include "support/temp_folder.h"

TEST(EffectChainFile, AChainRoundTripsThroughAFile) {
  TempFolder folder;
  int descriptors = OpenDescriptorCount();
  LSoundProcessMulti chain;
  auto echo = std::make_unique<LSPEcho>();
  echo->SetPreset(2);
  chain.Append(std::move(echo));
  auto gain = std::make_unique<LSPGain>(-4.5);
  gain->bDisabled = true;
  chain.Append(std::move(gain));
  auto unknown = std::make_unique<LSPUnknown>(99);
  unknown->listChunks.push_back(LSDFUnknownChunk{0x2001, kSDFChunkTypeString, {'a', 'b', 0}, 0});
  chain.Append(std::move(unknown));

  std::string path = folder.File(std::string("kette") + kLEffectChainExtension);
  ASSERT_TRUE(LEffectChainSaveFile(chain, path.c_str()));
  LSoundProcessMulti loaded;
  ASSERT_EQ(LEffectChainLoadFile(loaded, path.c_str()), LEffectChainLoadResult::kOK);
  ASSERT_EQ(loaded.GetCount(), 3);
  EXPECT_EQ(loaded.GetAt(0)->GetIndexInPreset(), 2);
  EXPECT_FALSE(loaded.GetAt(0)->bDisabled);
  EXPECT_EQ(static_cast<LSPGain*>(loaded.GetAt(1))->GetGainDb(), -4.5);
  EXPECT_TRUE(loaded.GetAt(1)->bDisabled);
  EXPECT_EQ(loaded.GetAt(2)->GetSoundProcessType(), 99);

  // Saved again, the file is the same.
  std::string again = folder.File("wieder.ecf");
  ASSERT_TRUE(LEffectChainSaveFile(loaded, again.c_str()));
  std::ifstream a(path, std::ios::binary), b(again, std::ios::binary);
  std::vector<char> first((std::istreambuf_iterator<char>(a)), {}), second((std::istreambuf_iterator<char>(b)), {});
  EXPECT_EQ(first, second);
  a.close();
  b.close();
  EXPECT_EQ(OpenDescriptorCount(), descriptors);
}

TEST(EffectChainFile, AMissingFileOtherFileTypesAndDataVersionsLoadNothing) {
  TempFolder folder;
  LProcessInterfaceQuiet process;
  LSoundProcessMulti chain;
  LEffectChainLoadResult result = LEffectChainLoadFile(chain, folder.File("fehlt.ecf").c_str(), &process);
  EXPECT_EQ(result, LEffectChainLoadResult::kCannotOpen);
  EXPECT_STREQ(LEffectChainLoadMessage(result), "Konnte Datei nicht öffnen, um Effekte zu laden.");
  EXPECT_STREQ(LEffectChainLoadTitle(result), "Lesefehler");
  EXPECT_EQ(process.Error(), "Konnte Datei nicht öffnen, um Effekte zu laden.");
  EXPECT_STREQ(LEffectChainLoadMessage(LEffectChainLoadResult::kOK), "");

  auto fileOf = [](unsigned int type, unsigned short version) {
    LMemoryStream stream;
    LSDFWriter writer;
    EXPECT_TRUE(writer.Open(stream, type, version));
    writer.WriteInt(0x2000, 1);
    writer.StartContainer(0x1000);
    writer.EndContainer(0x1000);
    writer.Close();
    return stream.Bytes();
  };
  LMemoryStream project(fileOf(kSDFFileTypeProject, kSDFDataVersionProject));
  EXPECT_EQ(LEffectChainLoad(chain, project), LEffectChainLoadResult::kNotAChain);
  LMemoryStream newer(fileOf(kSDFFileTypeEffectChain, 2));
  EXPECT_EQ(LEffectChainLoad(chain, newer), LEffectChainLoadResult::kUnknownVersion);
  EXPECT_EQ(chain.GetCount(), 0);
  LMemoryStream current(fileOf(kSDFFileTypeEffectChain, kSDFDataVersionEffectChain));
  EXPECT_EQ(LEffectChainLoad(chain, current), LEffectChainLoadResult::kOK);
  EXPECT_EQ(chain.GetCount(), 1);
}
