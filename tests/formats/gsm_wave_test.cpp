#include "formats/gsm_wave.h"

#include <gtest/gtest.h>

#include <cmath>

#include "codec_fixtures.h"
#include "formats/wave_file.h"
#include "support/temp_folder.h"
#include "wave_fixtures.h"

TEST(GSMWave, FrameCountIsWholeBlocksOf320) {
  EXPECT_EQ(LGSMFrameCount(65 * 3 + 64, 0), 960);
  EXPECT_EQ(LGSMFrameCount(0xFFFFFF01u, 65 * 2), 640);
}

#ifdef SONVALE_HAVE_GSM

TEST(GSMWave, TheWriterRoundTripsThroughTheReaderAndSoxDecodesItToTheSameSamples) {
  TempFolder folder;
  const std::string path = folder.File("g.wav");
  const std::vector<float> sine = SineFrames(8000, 1, 8000, 500.0, 0.4);
  {
    LSoundSink sink = LWaveFile::OpenSink(path.c_str(), LWaveFileFormat{kLWaveTagGSM610, 1, 8000, 0, false});
    for (long long done = 0; done < 8000; done += 234) sink.Write(sine.data() + done, std::min(234LL, 8000 - done));
  }
  const Bytes b = FileBytes(path);
  const size_t blocks = (8000 + 319) / 320;
  ASSERT_EQ(b.size(), 60 + blocks * 65 + 1);  // 25 blocks: odd, padded
  EXPECT_EQ(GetLE16(b, 20), kLWaveTagGSM610);
  EXPECT_EQ(GetLE16(b, 32), 65);
  EXPECT_EQ(GetLE16(b, 38), 320);
  EXPECT_EQ(GetLE32(b, 48), 8000u);
  EXPECT_EQ(GetLE32(b, 56), blocks * 65);
  LSoundSource source = LWaveFile::OpenSource(path.c_str());
  ASSERT_EQ(source.GetErrorCode(), kLSourceOK);
  EXPECT_EQ(source.GetEndSample(), static_cast<long long>(blocks * 320));
  std::vector<float> got = ReadFrames(source, 8000);
  // A lossy speech codec: compare the energy of the error against the signal's, after the start-up.
  double signal = 0, error = 0, cross = 0, power = 0;
  for (int i = 400; i < 8000; ++i) {
    signal += sine[i] * sine[i];
    power += got[i] * got[i];
    cross += sine[i] * got[i];
    error += (got[i] - sine[i]) * (got[i] - sine[i]);
  }
  EXPECT_GT(cross / std::sqrt(signal * power), 0.9);
  EXPECT_LT(error / signal, 0.2);
  source.Seek(0);
  EXPECT_EQ(ReadFrames(source, 8000, 320), got);
  // The fact chunk's count, not the last block's 320 frames, ends a shorter sound.
  SparseStream shorter;
  LGSMWaveOpenSink(std::make_unique<SparseStream>(shorter), 8000).Write(sine.data(), 1000);
  EXPECT_EQ(LWaveFile::OpenSource(std::make_unique<SparseStream>(shorter)).GetEndSample(), 1000);

  if (!HaveTool("sox")) return;
  ASSERT_TRUE(RunTool("sox " + path + " -t raw -e signed -b 16 " + folder.File("g.raw")));
  const Bytes pcm = FileBytes(folder.File("g.raw"));
  ASSERT_EQ(pcm.size(), 8000u * 2);
  for (size_t i = 0; i < 8000; ++i) {
    ASSERT_EQ(static_cast<std::int16_t>(GetLE16(pcm, 2 * i)), std::lround(got[i] * 32767.0f)) << i;
  }
}

#else

TEST(GSMWave, WithoutLibgsmTheCodecIsMissing) {
  EXPECT_EQ(OpenWave(WaveFile(kLWaveTagGSM610, 1, 8000, 0, Bytes(65, 0))).GetErrorCode(), kLSourceCodecMissing);
}

#endif
