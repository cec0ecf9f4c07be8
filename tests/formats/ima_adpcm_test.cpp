#include "formats/ima_adpcm.h"

#include <gtest/gtest.h>

#include <cmath>

#include "codec_fixtures.h"
#include "formats/wave_file.h"
#include "support/temp_folder.h"
#include "wave_fixtures.h"

TEST(IMAADPCM, FrameCountFollowsBlocksAndAnyRemainderOfAtLeastFourBytes) {
  EXPECT_EQ(LIMAFrameCount(1024, 2048, 0), 2 * 2041);
  EXPECT_EQ(LIMAFrameCount(1024, 2048 + 100, 0), 2 * 2041 + 193);
  EXPECT_EQ(LIMAFrameCount(1024, 2048 + 3, 0), 2 * 2041);
  EXPECT_EQ(LIMAFrameCount(2, 8, 0), 2);              // block align clamped to 4: 1 sample per block
  EXPECT_EQ(LIMAFrameCount(65535, 32768, 0), 65529);  // clamped to 32768
  EXPECT_EQ(LIMAFrameCount(256, 0xFFFFFFFFu, 512), 2 * 505);
}

TEST(IMAADPCM, TheMonoWriterRoundTripsThroughOurReaderAndFfmpegWithinTheCodecsPrecision) {
  TempFolder folder;
  // The last block of 919 samples is filled up to 1 + 8 * 115; the fact chunk's count cuts the two frames off.
  const std::vector<float> sine = SineFrames(5001, 1, 8000, 440.0, 0.5);
  const std::string path = folder.File("ima.wav");
  {
    LSoundSink sink = LWaveFile::OpenSink(path.c_str(), LWaveFileFormat{kLWaveTagIMAADPCM, 1, 8000, 4, false});
    for (long long done = 0; done < 5001; done += 234) sink.Write(sine.data() + done, std::min(234LL, 5001 - done));
  }
  const Bytes b = FileBytes(path);
  ASSERT_GE(b.size(), 60u);
  EXPECT_EQ(GetLE16(b, 20), kLWaveTagIMAADPCM);
  EXPECT_EQ(GetLE16(b, 32), 1024);
  EXPECT_EQ(GetLE16(b, 34), 4);
  EXPECT_EQ(GetLE16(b, 36), 2);
  EXPECT_EQ(GetLE16(b, 38), 2041);
  EXPECT_EQ(GetLE32(b, 48), 5001u);  // fact
  EXPECT_EQ(GetLE32(b, 56), 2 * 1024u + 464u);
  EXPECT_EQ(b.size(), 60u + 2 * 1024 + 464);
  LSoundSource source = LWaveFile::OpenSource(path.c_str());
  ASSERT_EQ(source.GetErrorCode(), kLSourceOK);
  EXPECT_EQ(source.GetEndSample(), 5001);
  std::vector<float> got = ReadFrames(source, 5001);
  float worst = 0;
  // The step size starts at its smallest: the first samples are still catching up.
  for (int i = 10; i < 5001; ++i) worst = std::max(worst, std::fabs(got[i] - sine[i]));
  EXPECT_LT(worst, 0.03f);
  EXPECT_EQ(got[0], std::round(sine[0] * 32767.0f) / 32767.0f);
  EXPECT_EQ(got[2041], std::round(sine[2041] * 32767.0f) / 32767.0f);  // each block starts exact
  source.Seek(0);
  EXPECT_EQ(ReadFrames(source, 5001, 234), got);
  source.Seek(4000);
  EXPECT_EQ(ReadFrames(source, 3)[0], got[4000]);
  EXPECT_TRUE(LWaveFile::OpenSink(folder.File("s.wav").c_str(), LWaveFileFormat{kLWaveTagIMAADPCM, 2, 8000, 4, false})
                  .HasError());

  // ffmpeg scales the step with one multiplication where the IMA algorithm adds shifted steps; the
  // rounding differs slightly, so the two decodings stay close rather than equal.
  if (!HaveTool("ffmpeg")) return;
  ASSERT_TRUE(RunTool("ffmpeg -v error -y -i " + path + " -f s16le " + folder.File("out.raw")));
  const Bytes pcm = FileBytes(folder.File("out.raw"));
  ASSERT_EQ(pcm.size() / 2, got.size() + 2);  // ffmpeg decodes the filled-up block whole, not to the fact count
  for (size_t i = 0; i < got.size(); ++i) {
    ASSERT_NEAR(static_cast<std::int16_t>(GetLE16(pcm, 2 * i)), got[i] * 32767.0f, 328.0f) << i;
  }
}

