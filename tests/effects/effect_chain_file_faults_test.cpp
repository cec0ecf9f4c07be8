// Saving effect chains when the medium fails: every write, seek and truncate of
// a save fails in turn, and the save must answer false each time; a file that
// cannot grow makes the file save fail too.
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <memory>

#include "base/memory_stream.h"
#include "effects/echo.h"
#include "effects/effect_chain_file.h"
#include "effects/gain.h"
#include "effects/sound_process_unknown.h"
#include "support/faulty_stream.h"
#include "support/file_size_limit.h"
#include "support/temp_folder.h"

namespace {

void FillChain(LSoundProcessMulti& chain) {
  auto echo = std::make_unique<LSPEcho>();
  echo->SetPreset(1);
  chain.Append(std::move(echo));
  auto gain = std::make_unique<LSPGain>(-6.0);
  gain->bDisabled = true;
  chain.Append(std::move(gain));
  auto unknown = std::make_unique<LSPUnknown>(99);
  unknown->listChunks.push_back(LSDFUnknownChunk{0x2001, kSDFChunkTypeBlob, {1, 2, 3, 4, 5}, 0});
  chain.Append(std::move(unknown));
}

std::vector<unsigned char> FileBytes(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return std::vector<unsigned char>(std::istreambuf_iterator<char>(in), {});
}

}  // namespace

TEST(EffectChainFileFaults, EveryFailedWriteOrSeekOfASaveMakesTheSaveAnswerFalse) {
  LSoundProcessMulti chain;
  FillChain(chain);
  ExpectEveryFaultReported([&](LByteStream& stream) { return LEffectChainSave(chain, stream); });
}

TEST(EffectChainFileFaults, AFileSaveThatRunsOutOfRoomAnswersFalse) {
  TempFolder folder;
  const std::string path = folder.File("kette.ecf");
  LSoundProcessMulti chain;
  FillChain(chain);
  ASSERT_TRUE(LEffectChainSaveFile(chain, path.c_str()));
  const std::vector<unsigned char> clean = FileBytes(path);
  // The writer writes chunk by chunk, so every byte count below the whole file stops it at some write.
  for (long long limit = 0; limit <= static_cast<long long>(clean.size()); ++limit) {
    const int status = RunWithFileSizeLimit(limit, [&] { return LEffectChainSaveFile(chain, path.c_str()) ? 0 : 1; });
    if (limit < static_cast<long long>(clean.size())) {
      EXPECT_EQ(status, 1) << "a save limited to " << limit << " bytes went unnoticed";
    } else {
      EXPECT_EQ(status, 0);
      EXPECT_EQ(FileBytes(path), clean);
    }
  }
}
