// Input of the kinds that have broken other audio readers and writers: absurd
// channel counts, block aligns of 0, missing or doubled format chunks, chunk
// sizes beyond their container or the file, and samples that are not numbers.
// None may crash, hang, allocate without bound or read outside the data.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>

#include "base/memory_stream.h"
#include "engine/sample_format.h"
#include "formats/ima_adpcm.h"
#include "formats/pcm_file_sink.h"
#include "formats/raw_data_sink.h"
#include "formats/raw_file.h"
#include "formats/wave_file.h"
#include "support/temp_folder.h"
#include "wave_fixtures.h"

namespace {

unsigned char ErrorOf(const Bytes& file) { return OpenWave(file).GetErrorCode(); }

// Integer formats reach a little beyond full scale (-32768 / 32767, -128 / 127).
constexpr float kIntegerReach = 1.01f;

// Reads a little past the end in odd blocks: every value must be a number within the format's reach.
void ExpectSafeReads(LSoundSource& source, long long frames) {
  const float reach = std::max(kIntegerReach, source.GetMaxAmplitude());
  for (float v : ReadFrames(source, frames, 37)) {
    ASSERT_TRUE(std::isfinite(v) && std::fabs(v) <= reach) << v;
  }
}

const Bytes kStairs = Staircase16(50, 1);

}  // namespace

TEST(BadInput, ChannelCountsOfZeroOrAbove255AreDamagedAnd255ReadsWhole) {
  for (std::uint16_t channels : {0, 256, 1000, 65535}) {
    EXPECT_EQ(ErrorOf(WaveFile(kLWaveTagPCM, channels, 8000, 16, kStairs)), kLSourceDamaged) << channels;
    EXPECT_EQ(ErrorOf(WaveFile(kLWaveTagIEEEFloat, channels, 8000, 32, kStairs)), kLSourceDamaged) << channels;
  }
  // 255 channels of 24 bits: the conversion buffer is large, the frame odd-sized.
  LSoundSource wide = OpenWave(WaveFile(kLWaveTagPCM, 255, 8000, 24, Bytes(255 * 3 * 9, 0x40)));
  ASSERT_FALSE(wide.IsError());
  EXPECT_EQ(wide.GetChannels(), 255);
  EXPECT_EQ(wide.GetEndSample(), 9);
  ExpectSafeReads(wide, 12);
  // The raw reader takes channels from its settings: 0 is damage, not a division by zero.
  LRawSettings raw;
  raw.channels = 0;
  raw.formatCode = kLRaw16;
  LSoundSource none = LRawFile::OpenSource(Memory(kStairs), raw);
  EXPECT_EQ(none.GetErrorCode(), kLSourceDamaged);
  ExpectSafeReads(none, 10);
}

TEST(BadInput, ABlockAlignOfZeroIsIgnoredByPCMAndClampedByTheBlockCodecs) {
  LSoundSource pcm = OpenWave(RiffWave({Chunk("fmt ", FmtBody(kLWaveTagPCM, 1, 8000, 16, 0)), Chunk("data", kStairs)}));
  Bytes zeroAlign = RiffWave({Chunk("fmt ", FmtBody(kLWaveTagPCM, 1, 8000, 16)), Chunk("data", kStairs)});
  zeroAlign[12 + 8 + 12] = zeroAlign[12 + 8 + 13] = 0;  // block align
  LSoundSource zero = OpenWave(zeroAlign);
  ASSERT_FALSE(zero.IsError());
  EXPECT_EQ(zero.GetEndSample(), 50);
  EXPECT_EQ(ReadFrames(zero, 50), ReadFrames(pcm, 50));

  for (std::uint16_t tag : {kLWaveTagIMAADPCM, kLWaveTagGSM610}) {
    Bytes file = RiffWave({Chunk("fmt ", FmtBody(tag, 1, 8000, 4, 1)), Chunk("data", Bytes(1000, 0x5A))});
    file[12 + 8 + 12] = file[12 + 8 + 13] = 0;
    LSoundSource source = OpenWave(file);
    if (source.GetErrorCode() == kLSourceCodecMissing) continue;
    ASSERT_FALSE(source.IsError()) << tag;
    EXPECT_GT(source.GetEndSample(), 0) << tag;
    ExpectSafeReads(source, source.GetEndSample() + 100);
  }
  EXPECT_EQ(LIMAFrameCount(0, 1000, 1000), LIMAFrameCount(4, 1000, 1000));
}

TEST(BadInput, AFmtChunkOfSizeZeroIsDamagedAndOfTwoTheFirstCounts) {
  const Bytes data = Chunk("data", kStairs);
  EXPECT_EQ(ErrorOf(RiffWave({Chunk("fmt ", {}), data})), kLSourceDamaged);
  EXPECT_EQ(ErrorOf(RiffWave({Chunk("fmt ", {}), Chunk("fmt ", FmtBody(1, 1, 8000, 16)), data})), kLSourceDamaged);
  // A second fmt after the first is skipped like any other chunk.
  LSoundSource twice = OpenWave(
      RiffWave({Chunk("fmt ", FmtBody(1, 1, 8000, 16)), Chunk("fmt ", FmtBody(3, 2, 44100, 32)), data}));
  ASSERT_FALSE(twice.IsError());
  EXPECT_EQ(twice.GetChannels(), 1);
  EXPECT_EQ(twice.GetSampleRate(), 8000u);
  EXPECT_EQ(twice.GetEndSample(), 50);
}

TEST(BadInput, ChunkSizesBeyondTheContainerOrTheFileNeverReadOutsideTheData) {
  const Bytes fmt = Chunk("fmt ", FmtBody(1, 1, 8000, 16));
  // A RIFF size smaller than its chunks is not trusted for anything.
  Bytes smallRiff = RiffWave({fmt, Chunk("data", kStairs)});
  smallRiff[4] = 4;
  smallRiff[5] = smallRiff[6] = smallRiff[7] = 0;
  LSoundSource inside = OpenWave(smallRiff);
  ASSERT_FALSE(inside.IsError());
  EXPECT_EQ(inside.GetEndSample(), 50);

  // A chunk before fmt that reaches past the RIFF container and the file.
  EXPECT_EQ(ErrorOf(RiffWave({Chunk("LIST", Bytes(8, 1), 0x7FFFFFF0), fmt, Chunk("data", kStairs)})), kLSourceDamaged);
  EXPECT_EQ(ErrorOf(RiffWave({Chunk("LIST", Bytes(8, 1), 0xFFFFFFFF), fmt, Chunk("data", kStairs)})), kLSourceDamaged);

  // A data chunk longer than the file: the frames it promises read, the missing ones as silence.
  Bytes longData = RiffWave({fmt, Chunk("data", kStairs, 100000)});
  LSoundSource promised = OpenWave(longData);
  ASSERT_FALSE(promised.IsError());
  EXPECT_EQ(promised.GetEndSample(), 50000);
  std::vector<float> frames = ReadFrames(promised, 60, 7);
  EXPECT_EQ(frames[49], 49 / 32767.0f);
  for (int f = 50; f < 60; ++f) EXPECT_EQ(frames[static_cast<std::size_t>(f)], 0.0f);

  // A data chunk followed by another with a size past the file: the extent list stops at the file's end.
  Bytes second = RiffWave({fmt, Chunk("data", kStairs), Chunk("data", Staircase16(10, 1), 0x7FFFFFF0)});
  LSoundSource extents = OpenWave(second);
  ASSERT_FALSE(extents.IsError());
  ExpectSafeReads(extents, 200);
  LSoundSource seeking = OpenWave(second);
  seeking.Seek(0x7FFFFFF0 / 2 - 3);
  ExpectSafeReads(seeking, 10);
}

namespace {

const float kNotNumbers[] = {std::numeric_limits<float>::quiet_NaN(), -std::numeric_limits<float>::quiet_NaN(),
                             std::numeric_limits<float>::infinity(), -std::numeric_limits<float>::infinity(),
                             1e30f, -1e30f, std::numeric_limits<float>::denorm_min(), 0.0f};

// Writes the values through a raw writer of the layout and reads them back.
template <class Tag>
std::vector<float> ThroughRaw(int code) {
  auto memory = std::make_unique<LMemoryStream>();
  LMemoryStream* target = memory.get();
  Bytes bytes;
  {
    LRawFileDataSoundSink<Tag> sink(std::move(memory), 8000u, 1);
    sink.Write(kNotNumbers, std::size(kNotNumbers));
    EXPECT_FALSE(sink.HasError());
    bytes = target->Bytes();
  }
  LRawSettings settings;
  settings.formatCode = code;
  LSoundSource back = LRawFile::OpenSource(Memory(bytes), settings);
  return ReadFrames(back, std::size(kNotNumbers));
}

void ExpectNotNumbersBecomeSilenceAndFullScale(const std::vector<float>& back, const char* layout) {
  ASSERT_EQ(back.size(), std::size(kNotNumbers));
  EXPECT_LT(std::fabs(back[0]), 1e-3f) << layout << ": NaN is silence";
  EXPECT_LT(std::fabs(back[1]), 1e-3f) << layout << ": NaN is silence";
  EXPECT_GT(back[2], 0.9f) << layout << ": infinity is full scale";
  EXPECT_LT(back[3], -0.9f) << layout;
  EXPECT_GT(back[4], 0.9f) << layout;
  EXPECT_LT(back[5], -0.9f) << layout;
  EXPECT_LT(std::fabs(back[6]), 1e-3f) << layout;
}

}  // namespace

TEST(BadInput, NaNAndInfiniteSamplesWrittenToALawAndMuLawBecomeSilenceAndFullScale) {
  ExpectNotNumbersBecomeSilenceAndFullScale(ThroughRaw<LSFALAW>(kLRawALaw), "A-law");
  ExpectNotNumbersBecomeSilenceAndFullScale(ThroughRaw<LSFULAW>(kLRawMuLaw), "mu-law");
  // The same through the G.711 WAVE writers.
  TempFolder folder;
  for (std::uint16_t tag : {kLWaveTagALaw, kLWaveTagMuLaw}) {
    const std::string path = folder.File("g711.wav");
    LWaveFileFormat format;
    format.tag = tag;
    format.channels = 1;
    format.sampleRate = 8000;
    LSoundSink sink = LWaveFile::OpenSink(path.c_str(), format);
    sink.Write(kNotNumbers, std::size(kNotNumbers));
    ASSERT_FALSE(sink.HasError());
    sink.Close();
    LSoundSource back = LWaveFile::OpenSource(path.c_str());
    ASSERT_FALSE(back.IsError());
    ExpectNotNumbersBecomeSilenceAndFullScale(ReadFrames(back, std::size(kNotNumbers)), "G.711 WAVE");
  }
}

TEST(BadInput, NaNAndInfiniteSamplesWrittenToIntegerPCMLeaveTheSignalAfterThemIntact) {
  // The shaped 16-bit writer stores out-of-range values unclamped, by design; its
  // error feedback must still settle, and 8, 24 and 32 bits wrap, by design.
  constexpr long long kAfter = 200;
  const std::vector<float> after(kAfter, 0.5f);
  for (bool dither : {false, true}) {
    for (int bits : {8, 16, 24, 32}) {
      TempFolder folder;
      const std::string path = folder.File("pcm.wav");
      LSoundSink sink = LWaveFile::OpenSinkPCM(path.c_str(), 44100, 1, static_cast<unsigned short>(bits), 0, dither);
      sink.Write(kNotNumbers, std::size(kNotNumbers));
      sink.Write(after.data(), kAfter);
      sink.Close();
      LSoundSource back = LWaveFile::OpenSource(path.c_str());
      ASSERT_FALSE(back.IsError());
      std::vector<float> values = ReadFrames(back, std::size(kNotNumbers) + kAfter);
      for (float v : values) ASSERT_TRUE(std::isfinite(v)) << bits;
      if (bits == 16 && !dither) {
        ExpectNotNumbersBecomeSilenceAndFullScale(std::vector<float>(values.begin(), values.begin() + std::size(kNotNumbers)),
                                                  "PCM");
      }
      EXPECT_NEAR(values.back(), 0.5f, 0.01f) << bits << " bits, dither " << dither;
    }
  }
}
