#include "formats/vox_adpcm.h"

#include <gtest/gtest.h>

#include <cmath>

#include "formats/raw_file.h"
#include "support/temp_folder.h"
#include "wave_fixtures.h"

TEST(VOXADPCM, NibblesDecodeHighFirstWithTheDialogicSteps) {
  // 7: 16/8 + 16 + 8 + 4 = 30, index 8; 0: +34/8, index 7; 8: -(31/8), index 6; 0: +28/8.
  LSoundSource source = LRawFile::OpenSource(Memory({0x70, 0x80}), LRawSettings{6000, 1, kLRawVOX});
  ASSERT_EQ(source.GetErrorCode(), kLSourceOK);
  EXPECT_EQ(source.GetSampleRate(), 6000u);
  EXPECT_EQ(source.GetEndSample(), 4);
  std::vector<float> got = ReadFrames(source, 5);
  EXPECT_EQ(got,
            (std::vector<float>{30 * 16 / 32767.0f, 34 * 16 / 32767.0f, 31 * 16 / 32767.0f, 34 * 16 / 32767.0f, 0.0f}));
}

TEST(VOXADPCM, SeekingBackDecodesAgainFromTheStart) {
  Bytes bytes;
  for (int i = 0; i < 20000; ++i) bytes.push_back(static_cast<unsigned char>((i * 37) ^ (i >> 3)));
  LSoundSource source = LRawFile::OpenSource(Memory(bytes), LRawSettings{8000, 1, kLRawVOX});
  std::vector<float> whole = ReadFrames(source, 40000);
  source.Seek(0);
  EXPECT_EQ(ReadFrames(source, 40000, 234), whole);
  source.Seek(30001);
  EXPECT_EQ(ReadFrames(source, 1)[0], whole[30001]);
  source.Seek(17);
  EXPECT_EQ(ReadFrames(source, 1)[0], whole[17]);
}

// Decoders of this coding differ in how they round the step; sox and ours stay within 1% of full scale.
// sox must not dither here: its random noise would make the comparison flaky.
TEST(VOXADPCM, SoxDecodesTheSameFileToNearlyTheSameSamples) {
  if (!HaveTool("sox")) GTEST_SKIP() << "sox is not installed";
  TempFolder folder;
  const std::string vox = folder.File("a.vox"), raw = folder.File("a.raw");
  ASSERT_TRUE(RunTool("sox -D -n -r 8000 -c 1 -t vox " + vox + " synth 0.5 sine 300 gain -3"));
  ASSERT_TRUE(RunTool("sox -D -t vox -r 8000 -c 1 " + vox + " -t raw -e signed -b 16 " + raw));
  const Bytes pcm = FileBytes(raw);
  LSoundSource source = LRawFile::OpenSource(vox.c_str(), LRawSettings{8000, 1, kLRawVOX});
  ASSERT_EQ(static_cast<size_t>(source.GetEndSample()), pcm.size() / 2);
  std::vector<float> ours = ReadFrames(source, source.GetEndSample(), 234);
  for (size_t i = 0; i < ours.size(); ++i) {
    ASSERT_NEAR(ours[i] * 32767.0f, static_cast<std::int16_t>(GetLE16(pcm, 2 * i)), 328.0f) << i;
  }
}
