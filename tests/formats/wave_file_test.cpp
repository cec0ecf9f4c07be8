#include "formats/wave_file.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstring>

#include "formats/ffmpeg_source.h"
#include "formats/mp3_sink.h"
#include "formats/wave_format.h"
#include "support/temp_folder.h"
#include "codec_fixtures.h"
#include "wave_fixtures.h"

namespace {

Bytes ExtensibleFmt(std::uint16_t bits, const unsigned char* guid) {
  Bytes extra;
  PutLE16(extra, bits);  // valid bits
  PutLE32(extra, 0x4);   // channel mask
  extra.insert(extra.end(), guid, guid + 16);
  return FmtBody(kLWaveTagExtensible, 1, 48000, bits, 0, &extra);
}

unsigned char ErrorOf(const Bytes& file) { return OpenWave(file).GetErrorCode(); }

}  // namespace

TEST(WaveFile, AStaircaseReadsTheSameWholeAndInBlocksWithSilenceOutsideItsFrames) {
  const int frames = 20000;  // more than the reader's buffer: a read of all of it is served in steps
  LSoundSource source = OpenWave(WaveFile(kLWaveTagPCM, 2, 44100, 16, Staircase16(frames, 2)));
  ASSERT_EQ(source.GetErrorCode(), kLSourceOK);
  EXPECT_EQ(source.GetEndSample(), frames);
  EXPECT_EQ(source.GetChannels(), 2);
  EXPECT_FLOAT_EQ(source.GetMaxAmplitude(), 32767.0f / 32768.0f);
  std::vector<float> whole = ReadFrames(source, frames + 100);
  for (int i = 0; i < 2 * frames; ++i) ASSERT_EQ(whole[i], static_cast<std::int16_t>(i) / 32767.0f) << i;
  for (int i = 2 * frames; i < 2 * (frames + 100); ++i) ASSERT_EQ(whole[i], 0.0f) << i;
  source.Seek(0);
  EXPECT_EQ(ReadFrames(source, frames, 234), std::vector<float>(whole.begin(), whole.begin() + 2 * frames));
  EXPECT_EQ(source.GetPositionSample(), frames);
  source.Seek(-10);
  const std::vector<float> start = ReadFrames(source, 20);
  for (int i = 0; i < 20; ++i) EXPECT_EQ(start[i], 0.0f);
  for (int i = 20; i < 40; ++i) EXPECT_EQ(start[i], (i - 20) / 32767.0f);
}

TEST(WaveFile, PCMBitDepthsAndFloatChooseTheirReaders) {
  struct Case {
    std::uint16_t tag, bits;
    Bytes sample;
    float expect;
  };
  const Case cases[] = {
      {kLWaveTagPCM, 8, {0xFF}, 127 / 127.0f},
      {kLWaveTagPCM, 12, {0x00, 0x80}, -32768 / 32767.0f},
      {kLWaveTagPCM, 24, {0x00, 0x00, 0x80}, static_cast<float>(-2147483648.0 / 2147483647.0)},
      {kLWaveTagPCM, 32, {0x01, 0x00, 0x00, 0x40}, static_cast<float>(1073741825.0 / 2147483647.0)},
      {kLWaveTagIEEEFloat, 32, {0x00, 0x00, 0xC0, 0x3F}, 1.5f},
      {kLWaveTagIEEEFloat, 64, {0, 0, 0, 0, 0, 0, 0xE0, 0xBF}, -0.5f},
  };
  for (const Case& c : cases) {
    LSoundSource source = OpenWave(WaveFile(c.tag, 1, 8000, c.bits, c.sample));
    ASSERT_EQ(source.GetErrorCode(), kLSourceOK) << c.bits;
    EXPECT_EQ(source.GetEndSample(), 1) << c.bits;
    EXPECT_EQ(ReadFrames(source, 1)[0], c.expect) << c.bits;
  }
  EXPECT_EQ(OpenWave(WaveFile(kLWaveTagIEEEFloat, 1, 8000, 32, {})).GetMaxAmplitude(), 16.0f);
  EXPECT_EQ(OpenWave(WaveFile(kLWaveTagALaw, 1, 8000, 8, {0xD5})).GetMaxAmplitude(), 1.0f);
}

TEST(WaveFile, FormatTagsWithoutAReaderGiveTheirCodesAndStillReportTheFormat) {
  LWaveFileFormat format;
  EXPECT_EQ(LWaveFile::OpenSource(Memory(WaveFile(kLWaveTagTrueSpeech, 1, 8000, 1, {})), &format).GetErrorCode(),
            kLSourceCodecMissing);
  EXPECT_EQ(format.tag, kLWaveTagTrueSpeech);
  EXPECT_STREQ(LWaveCodecName(format.tag), "DSP Group TrueSpeech");
  EXPECT_EQ(ErrorOf(WaveFile(kLWaveTagIEEEFloat, 1, 8000, 24, {})), kLSourceUnsupported);
  for (std::uint16_t tag : {2, 4, 5, 0x50, 0x1234}) {
    EXPECT_EQ(ErrorOf(WaveFile(tag, 1, 8000, 16, {})), kLSourceUnsupported) << tag;
  }
  for (std::uint16_t tag : {kLWaveTagTrueSpeech, kLWaveTagSharpG726}) {
    EXPECT_EQ(ErrorOf(WaveFile(tag, 1, 8000, 16, {})), kLSourceCodecMissing) << tag;
  }
  EXPECT_EQ(ErrorOf(RiffWave({Chunk("fmt ", FmtBody(kLWaveTagIMAADPCM, 2, 8000, 4, 512)), Chunk("data", {})})),
            kLSourceCodecMissing);
}

TEST(WaveFile, DamagedHeadersGiveCode3) {
  const Bytes fmt = Chunk("fmt ", FmtBody(kLWaveTagPCM, 1, 8000, 16));
  const Bytes data = Chunk("data", Staircase16(4, 1));
  EXPECT_EQ(ErrorOf({}), kLSourceDamaged);
  EXPECT_EQ(ErrorOf(Bytes{'R', 'I', 'F', 'F', 0, 0, 0, 0, 'W', 'A', 'V'}), kLSourceDamaged);
  EXPECT_EQ(ErrorOf(RiffWave({fmt})), kLSourceDamaged);        // no data
  EXPECT_EQ(ErrorOf(RiffWave({data})), kLSourceDamaged);       // no fmt
  EXPECT_EQ(ErrorOf(RiffWave({data, fmt})), kLSourceDamaged);  // data before fmt is never found
  EXPECT_EQ(ErrorOf(RiffWave({Chunk("fmt ", Bytes(14, 0)), data})), kLSourceDamaged);
  EXPECT_EQ(ErrorOf(RiffWave({Chunk("fmt ", Bytes(8194, 0)), data})), kLSourceDamaged);
  EXPECT_EQ(ErrorOf(RiffWave({Chunk("fmt ", FmtBody(1, 1, 8000, 16), 40, false), data})), kLSourceDamaged);
  Bytes oddFmt = FmtBody(1, 1, 8000, 16);
  oddFmt.push_back(0);  // 17 bytes: the reader follows the size without the pad byte and misses data
  EXPECT_EQ(ErrorOf(RiffWave({Chunk("fmt ", oddFmt), data})), kLSourceDamaged);
  EXPECT_EQ(ErrorOf(RiffWave({Chunk("junk", {}, 0x7FFFFFFF), fmt, data})), kLSourceDamaged);  // rounds past 2^31-1
  EXPECT_EQ(ErrorOf(RiffWave({Chunk("fmt ", FmtBody(1, 1, 0, 16)), data})), kLSourceDamaged);
  EXPECT_EQ(ErrorOf(RiffWave({Chunk("fmt ", FmtBody(1, 1, 196001, 16)), data})), kLSourceDamaged);
  EXPECT_EQ(ErrorOf(RiffWave({Chunk("fmt ", FmtBody(1, 255, 196000, 16)), data})), kLSourceOK);
}

TEST(WaveFile, ForeignChunksBeforeTheContainerAndBeforeTheChunksAreSkipped) {
  const Bytes wave = RiffWave({Chunk("LIST", Bytes(5, 7)), Chunk("fmt ", FmtBody(1, 1, 8000, 16)),
                               Chunk("fact", Bytes(4, 0)), Chunk("data", Staircase16(3, 1))});
  Bytes file = Chunk("abcd", Bytes(12, 1));  // a chunk of another kind with a 12-byte body first
  file.insert(file.end(), wave.begin(), wave.end());
  LSoundSource source = OpenWave(file);
  ASSERT_EQ(source.GetErrorCode(), kLSourceOK);
  EXPECT_EQ(ReadFrames(source, 3)[2], 2 / 32767.0f);

  Bytes small = Chunk("abcd", {}, 3);  // rounds to 4, below 5
  small.insert(small.end(), wave.begin(), wave.end());
  EXPECT_EQ(ErrorOf(small), kLSourceDamaged);
}

TEST(WaveFile, ExtensibleOpensAsPCMOnlyWithThePCMSubFormat) {
  LWaveFileFormat format;
  LSoundSource source = LWaveFile::OpenSource(
      Memory(RiffWave({Chunk("fmt ", ExtensibleFmt(24, kLWaveSubFormatPCM)), Chunk("data", {0, 0, 0x40})})), &format);
  ASSERT_EQ(source.GetErrorCode(), kLSourceOK);
  EXPECT_EQ(format.tag, kLWaveTagPCM);
  EXPECT_EQ(format.bitsPerSample, 24);
  EXPECT_EQ(ReadFrames(source, 1)[0], static_cast<float>(1073741824.0 / 2147483647.0));

  unsigned char floatGuid[16];
  std::memcpy(floatGuid, kLWaveSubFormatPCM, 16);
  floatGuid[0] = kLWaveTagIEEEFloat;
  EXPECT_EQ(ErrorOf(RiffWave({Chunk("fmt ", ExtensibleFmt(32, floatGuid)), Chunk("data", Bytes(4, 0))})),
            kLSourceUnsupported);
}

TEST(WaveFile, SeveralDataChunksReadAsOneStream) {
  // Chunks of 3, 2 and 4 stereo frames; a frame is split over the second boundary.
  Bytes all = Staircase16(9, 2);
  Bytes first(all.begin(), all.begin() + 12), second(all.begin() + 12, all.begin() + 22),
      third(all.begin() + 22, all.end());
  LSoundSource source = OpenWave(RiffWave({Chunk("fmt ", FmtBody(1, 2, 8000, 16)), Chunk("data", first),
                                           Chunk("data", second), Chunk("data", third), Chunk("LIST", Bytes(8, 9))}));
  EXPECT_EQ(source.GetEndSample(), 9);
  EXPECT_FALSE(source.IsStreaming());
  std::vector<float> whole = ReadFrames(source, 10);
  for (int i = 0; i < 18; ++i) EXPECT_EQ(whole[i], i / 32767.0f) << i;
  EXPECT_EQ(whole[18], 0.0f);  // the LIST chunk is never read as samples
  for (long long block : {1, 2, 4}) {
    source.Seek(0);
    EXPECT_EQ(ReadFrames(source, 10, block), whole) << block;
  }
  source.Seek(4);
  EXPECT_EQ(ReadFrames(source, 1)[0], 8 / 32767.0f);
}

TEST(WaveFile, G711DataWithAProvisionalSizeFollowsTheStreamLikePCM) {
  Bytes codes(20);
  for (size_t i = 0; i < codes.size(); ++i) codes[i] = static_cast<unsigned char>(i * 13);
  for (std::uint16_t tag : {kLWaveTagALaw, kLWaveTagMuLaw}) {
    const Bytes fmt = Chunk("fmt ", FmtBody(tag, 2, 8000, 8));
    LSoundSource g711 = OpenWave(RiffWave({fmt, Chunk("data", codes, 0xFFFFFFFF)}));
    EXPECT_TRUE(g711.IsStreaming()) << tag;
    EXPECT_EQ(g711.GetEndSample(), 10) << tag;
    LSoundSource sized = OpenWave(RiffWave({fmt, Chunk("data", codes)}));
    EXPECT_EQ(ReadFrames(g711, 12), ReadFrames(sized, 12)) << tag;
  }
}

TEST(WaveFile, FilesOpenWithTheirCodesLeaveNoDescriptorAndADeletingSourceRemovesItsFileWithTheLastHandle) {
  TempFolder folder;
  const int before = OpenDescriptorCount();
  EXPECT_EQ(LWaveFile::OpenSource(folder.File("none.wav").c_str()).GetErrorCode(), kLSourceCannotOpen);
  WriteFileBytes(folder.File("a.wav"), WaveFile(1, 1, 8000, 16, Staircase16(10, 1)));
  WriteFileBytes(folder.File("bad.wav"), Bytes(40, 1));
  {
    LSoundSource good = LWaveFile::OpenSource(folder.File("a.wav").c_str());
    LSoundSource bad = LWaveFile::OpenSource(folder.File("bad.wav").c_str());
    EXPECT_EQ(good.GetEndSample(), 10);
    EXPECT_EQ(bad.GetErrorCode(), kLSourceDamaged);
  }
  EXPECT_EQ(OpenDescriptorCount(), before);

  const std::string path = folder.File("temp.wav");
  WriteFileBytes(path, WaveFile(1, 2, 22050, 16, Staircase16(30, 2)));
  LSoundSource source = LWaveFile::OpenSourceDeletingFileWhenClosed(path.c_str());
  EXPECT_EQ(source.GetSampleRate(), 22050u);
  EXPECT_EQ(source.GetChannels(), 2);
  EXPECT_EQ(source.GetEndSample(), 30);
  source.Seek(29);
  EXPECT_EQ(ReadFrames(source, 1)[1], 59 / 32767.0f);
  LSoundSource copy = source;
  source.Close();
  EXPECT_FALSE(FileBytes(path).empty());
  copy.Close();
  EXPECT_NE(access(path.c_str(), F_OK), 0);
  EXPECT_EQ(OpenDescriptorCount(), before);
}

// A cut file never yields data from outside its data chunk.
TEST(WaveFile, ATruncatedFileReadsOnlyItsOwnSamples) {
  Bytes data;
  for (int i = 0; i < 40; ++i) PutLE16(data, 1000);  // every sample the same
  const Bytes file =
      RiffWave({Chunk("fmt ", FmtBody(1, 2, 8000, 16)), Chunk("data", data), Chunk("LIST", Bytes(40, 0x55))});
  const float expect = 1000 / 32767.0f;
  for (size_t length = 0; length <= file.size(); ++length) {
    LSoundSource source = OpenWave(Bytes(file.begin(), file.begin() + static_cast<long>(length)));
    if (source.IsError()) continue;
    EXPECT_EQ(source.GetEndSample(), 20);
    for (float v : ReadFrames(source, 30, 7)) ASSERT_TRUE(v == 0.0f || v == expect) << length;
  }
}

#if defined(SONVALE_HAVE_FFMPEG) && defined(SONVALE_HAVE_LAME)
TEST(WaveFile, MP3FramesInsideWaveReadAsTheSameFramesInAnMP3File) {
  TempFolder folder;
  const std::string mp3 = folder.File("a.mp3");
  {
    LSNKMP3 sink(mp3.c_str(), LMP3SinkFormat{22050, 1, 64, 2});
    const std::vector<float> sine = SineFrames(5000, 1, 22050, 300.0);
    sink.Write(sine.data(), 5000);
  }
  LSoundSource plain = LFFmpegSource::Open(mp3.c_str());
  ASSERT_EQ(plain.GetErrorCode(), kLSourceOK);
  const std::vector<float> expect = ReadWhole(plain);
  Bytes extra(12, 0);  // MPEG layer 3 fields that the frames repeat
  const Bytes fmt = Chunk("fmt ", FmtBody(kLWaveTagMPEGLayer3, 1, 22050, 0, 1, &extra));
  // The chunk after the frames is not taken for more of them; a size left by a writer into a pipe reaches to the end.
  for (std::uint32_t size : {0u, 0xFFFFFFFFu}) {
    const Bytes frames = FileBytes(mp3);
    const Bytes after = size ? Bytes{} : Chunk("LIST", Bytes(4000, 0xFF));
    Bytes file = RiffWave({fmt, Chunk("data", frames, size ? static_cast<long long>(size) : -1LL), after});
    LSoundSource wrapped = OpenWave(file);
    ASSERT_EQ(wrapped.GetErrorCode(), kLSourceOK) << size;
    EXPECT_EQ(wrapped.GetSampleRate(), 22050u);
    EXPECT_EQ(ReadWhole(wrapped), expect) << size;
  }
  EXPECT_NE(ErrorOf(RiffWave({fmt, Chunk("data", Bytes(100, 0))})), kLSourceOK);
}
#endif

TEST(WaveFile, AnOddDataChunkIsFollowedByItsPadByteAndAnOddFmtWithoutOneIsRefusedAsWell) {
  // 8-bit mono in chunks of 3 and 2 frames: the first is padded to 4 bytes.
  LSoundSource source = OpenWave(RiffWave({Chunk("fmt ", FmtBody(1, 1, 8000, 8)), Chunk("data", {128, 129, 130}),
                                           Chunk("data", {131, 132})}));
  ASSERT_EQ(source.GetErrorCode(), kLSourceOK);
  EXPECT_EQ(source.GetEndSample(), 5);
  const std::vector<float> frames = ReadFrames(source, 5);
  EXPECT_FLOAT_EQ(frames[3], 3 * frames[1]) << "the pad byte is not a sample";

  Bytes oddFmt = FmtBody(1, 1, 8000, 16);
  oddFmt.push_back(0);
  EXPECT_EQ(ErrorOf(RiffWave({Chunk("fmt ", oddFmt, -1, false), Chunk("data", Staircase16(4, 1))})),
            kLSourceDamaged);
}
