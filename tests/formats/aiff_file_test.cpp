#include "formats/aiff_file.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>

#include "base/memory_stream.h"
#include "codec_fixtures.h"
#include "engine/sample_format.h"
#include "engine/source_to_sink.h"
#include "formats/ieee_extended.h"
#include "support/temp_folder.h"
#include "wave_fixtures.h"

namespace {

void PutBE16(Bytes& b, std::uint16_t v) {
  b.push_back(static_cast<unsigned char>(v >> 8));
  b.push_back(static_cast<unsigned char>(v));
}
void PutBE32(Bytes& b, std::uint32_t v) {
  for (int s = 24; s >= 0; s -= 8) b.push_back(static_cast<unsigned char>(v >> s));
}
void PutText(Bytes& b, const char* text) { b.insert(b.end(), text, text + std::strlen(text)); }

Bytes BEChunk(const char* id, const Bytes& body, long long sizeField = -1) {
  Bytes out;
  PutText(out, id);
  PutBE32(out, static_cast<std::uint32_t>(sizeField >= 0 ? sizeField : static_cast<long long>(body.size())));
  out.insert(out.end(), body.begin(), body.end());
  if (body.size() & 1) out.push_back(0);
  return out;
}

Bytes Comm(int channels, std::uint32_t frames, int bits, double rate, const char* compression = nullptr) {
  Bytes b;
  PutBE16(b, static_cast<std::uint16_t>(channels));
  PutBE32(b, frames);
  PutBE16(b, static_cast<std::uint16_t>(bits));
  unsigned char r[10];
  LDoubleToExtended(rate, r);
  b.insert(b.end(), r, r + 10);
  if (compression) {
    PutText(b, compression);
    b.push_back(0);  // empty name
    b.push_back(0);
  }
  return b;
}

Bytes Ssnd(const Bytes& data) {
  Bytes b;
  PutBE32(b, 0);
  PutBE32(b, 0);
  b.insert(b.end(), data.begin(), data.end());
  return b;
}

Bytes Form(const char* type, const std::vector<Bytes>& chunks) {
  Bytes body;
  PutText(body, type);
  for (const Bytes& c : chunks) body.insert(body.end(), c.begin(), c.end());
  return BEChunk("FORM", body);
}

// Big-endian 16-bit staircase: value = frame x channels + channel.
Bytes StaircaseBE16(int frames, int channels) {
  Bytes b;
  for (int i = 0; i < frames * channels; ++i) PutBE16(b, static_cast<std::uint16_t>(i));
  return b;
}

LSoundSource OpenAiff(const Bytes& bytes, LSoundFileInfo* info = nullptr) {
  return LAiffFile::OpenSource(std::make_unique<LMemoryStream>(bytes), info);
}

}  // namespace

TEST(IeeeExtended, WholeRatesConvertExactlyBothWays) {
  unsigned char b[10];
  LDoubleToExtended(44100.0, b);
  const unsigned char expected[10] = {0x40, 0x0E, 0xAC, 0x44, 0, 0, 0, 0, 0, 0};
  EXPECT_EQ(0, std::memcmp(b, expected, 10));
  for (double rate : {1.0, 8000.0, 11025.0, 22050.0, 48000.0, 96000.0, 192000.0, 12345.0, 44100.5}) {
    LDoubleToExtended(rate, b);
    EXPECT_EQ(LExtendedToDouble(b), rate);
  }
  const unsigned char nan[10] = {0x7F, 0xFF, 0xC0, 0, 0, 0, 0, 0, 0, 0};
  EXPECT_EQ(LExtendedToDouble(nan), 0.0);
}

TEST(AiffFile, ReadsChunksInAnyOrderWithTagsAndMarkers) {
  Bytes mark;
  PutBE16(mark, 2);
  PutBE16(mark, 1);
  PutBE32(mark, 7);
  mark.push_back(4);
  PutText(mark, "Eins");
  mark.push_back(0);  // count and name padded to an even length
  PutBE16(mark, 2);
  PutBE32(mark, 100);
  mark.push_back(0);
  mark.push_back(0);
  const Bytes file = Form("AIFF", {BEChunk("NAME", Bytes{'T', 'i', 't', 'e', 'l'}),
                                   BEChunk("SSND", Ssnd(StaircaseBE16(300, 2))), BEChunk("MARK", mark),
                                   BEChunk("AUTH", Bytes{'W', 'e', 'r'}), BEChunk("COMM", Comm(2, 300, 16, 22050.0))});
  LSoundFileInfo info;
  LSoundSource s = OpenAiff(file, &info);
  ASSERT_FALSE(s.IsError()) << int(s.GetErrorCode());
  EXPECT_EQ(s.GetSampleRate(), 22050u);
  EXPECT_EQ(s.GetChannels(), 2);
  EXPECT_EQ(s.GetEndSample(), 300);
  EXPECT_FLOAT_EQ(s.GetMaxAmplitude(), 32767.0f / 32768.0f);
  const std::vector<float> whole = ReadFrames(s, 300);
  for (int i = 0; i < 600; ++i) ASSERT_EQ(whole[i], static_cast<float>(i) / 32767.0f) << i;
  s.Seek(0);
  EXPECT_EQ(ReadFrames(s, 300, 7), whole);
  EXPECT_EQ(info.formatName, "aiff");
  EXPECT_EQ(info.codecName, "pcm_s16be");
  ASSERT_NE(info.tags.Get("TITLE"), nullptr);
  EXPECT_STREQ(info.tags.Get("TITLE"), "Titel");
  EXPECT_STREQ(info.tags.Get("ARTIST"), "Wer");
  const auto markers = info.tags.MarkerSamplesGet();
  ASSERT_EQ(markers.size(), 2u);
  EXPECT_EQ(markers[0], 7u);
  EXPECT_EQ(markers[1], 100u);
}

TEST(AiffFile, ReadsTheSimpleAifcKinds) {
  struct Kind {
    const char* compression;
    int bits;
    Bytes data;
    float first;
  };
  const Kind kinds[] = {
      {"sowt", 16, Bytes{0x01, 0x00, 0, 0}, 1.0f / 32767.0f},
      {"NONE", 24, Bytes{0x00, 0x01, 0x00, 0, 0, 0}, static_cast<float>(65536.0 / 2147483647.0)},
      {"fl32", 32, Bytes{0x3F, 0x00, 0x00, 0x00, 0, 0, 0, 0}, 0.5f},
      {"FL64", 64, Bytes{0x3F, 0xE0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}, 0.5f},
      {"ulaw", 8, Bytes{0x80, 0xFF}, LSFULAW::In(Bytes{0x80}.data())},
      {"alaw", 8, Bytes{0xD5, 0xD5}, LSFALAW::In(Bytes{0xD5}.data())},
      {"raw ", 8, Bytes{0xFF, 0x80}, 1.0f},
  };
  for (const Kind& k : kinds) {
    const Bytes file =
        Form("AIFC", {BEChunk("COMM", Comm(1, 2, k.bits, 8000.0, k.compression)), BEChunk("SSND", Ssnd(k.data))});
    LSoundSource s = OpenAiff(file);
    ASSERT_FALSE(s.IsError()) << k.compression;
    EXPECT_EQ(s.GetEndSample(), 2) << k.compression;
    float v[2];
    s.Read(v, 2);
    EXPECT_FLOAT_EQ(v[0], k.first) << k.compression;
  }
}

TEST(AiffFile, DamagedAndForeignFilesGiveTheirCodes) {
  const Bytes good =
      Form("AIFF", {BEChunk("COMM", Comm(1, 1000, 16, 8000.0)), BEChunk("SSND", Ssnd(StaircaseBE16(1000, 1)))});
  // Cut in the data: what is there reads, the rest is not claimed.
  Bytes cut(good.begin(), good.begin() + static_cast<long>(good.size() - 1000));
  LSoundSource s = OpenAiff(cut);
  ASSERT_FALSE(s.IsError());
  EXPECT_EQ(s.GetEndSample(), 500);

  EXPECT_EQ(OpenAiff(Form("AIFF", {BEChunk("SSND", Ssnd(StaircaseBE16(10, 1)))})).GetErrorCode(), kLSourceDamaged);
  EXPECT_EQ(
      OpenAiff(Form("AIFF", {BEChunk("COMM", Comm(0, 10, 16, 8000.0)), BEChunk("SSND", Ssnd(StaircaseBE16(10, 1)))}))
          .GetErrorCode(),
      kLSourceDamaged);
  EXPECT_EQ(OpenAiff(WaveFile(1, 1, 8000, 16, Staircase16(10, 1))).GetErrorCode(), kLSourceUnsupported);
  EXPECT_EQ(OpenAiff(Bytes{'F', 'O', 'R'}).GetErrorCode(), kLSourceDamaged);

  LSoundFileInfo info;
  const Bytes ima =
      Form("AIFC", {BEChunk("COMM", Comm(1, 64, 16, 8000.0, "ima4")), BEChunk("SSND", Ssnd(Bytes(34, 0)))});
  EXPECT_EQ(OpenAiff(ima, &info).GetErrorCode(), kLSourceCodecMissing);
  EXPECT_EQ(info.codecName, "ima4");

  // Chunk sizes that run wild end the walk instead of the program.
  Bytes wild = good;
  wild[16] = 0xFF;
  EXPECT_NO_FATAL_FAILURE((void)OpenAiff(wild));
}

TEST(AiffFile, WrittenFilesReadBackAndOutsideToolsAgree) {
  TempFolder folder;
  const int frames = 4410;
  const std::vector<float> sine = SineFrames(frames, 2, 44100, 1000.0, 0.9);
  for (int bits : {8, 16, 24, 32}) {
    const std::string path = folder.File("w" + std::to_string(bits) + ".aiff");
    LFileTagDataAudio tags;
    tags.Set("TITLE", "Grüße");
    tags.Set("ARTIST", "Sonvale");
    {
      LAiffFileFormat format;
      format.sampleRate = 44100;
      format.channels = 2;
      format.bitsPerSample = static_cast<std::uint16_t>(bits);
      LPRSourceToSink job("", MemorySource(sine, 2, 44100), LAiffFile::OpenSink(path.c_str(), format, &tags), true);
      LProcessInterfaceQuiet quiet;
      ASSERT_EQ(Process(quiet, job), kLProcessSuccess) << bits;
    }
    LSoundFileInfo info;
    LSoundSource s = LAiffFile::OpenSource(path.c_str(), &info);
    ASSERT_FALSE(s.IsError()) << bits;
    EXPECT_EQ(s.GetEndSample(), frames);
    EXPECT_EQ(s.GetSampleRate(), 44100u);
    EXPECT_STREQ(info.tags.Get("TITLE"), "Grüße");
    const double step = bits == 8 ? 1.0 / 127 : 1.0 / 32767;
    EXPECT_LE(MaxDifference(ReadWhole(s), sine), step) << bits;

    // sox looks at two widths; FFmpeg decodes what sox and FFmpeg write, below.
    if ((bits == 16 || bits == 24) && HaveTool("soxi")) {
      std::string out;
      ASSERT_TRUE(RunTool("soxi -s " + ShellQuote(path), &out));
      EXPECT_EQ(std::stol(out), frames);
      ASSERT_TRUE(RunTool("soxi -b " + ShellQuote(path), &out));
      EXPECT_EQ(std::stoi(out), bits);
    }
  }
}

TEST(AiffFile, FilesOfSoxAndFFmpegReadAsTheyDecode) {
  if (!HaveTool("ffmpeg")) GTEST_SKIP() << "ffmpeg is not installed";
  TempFolder folder;
  struct Made {
    const char* file;
    const char* tool;  // "ffmpeg" arguments or a sox command line
    bool sox;
    double tolerance;  // our scale is 2^(n-1)-1 where ffmpeg's is 2^(n-1); G.711 differs by its working scale
  };
  const std::string in = "-f lavfi -i \"aevalsrc=0.5*sin(2*PI*440*t)|0.3*sin(2*PI*660*t+1):s=44100:d=0.5\" ";
  const Made made[] = {
      {"f16.aiff", "-c:a pcm_s16be", false, 1e-4},
      {"f24.aiff", "-c:a pcm_s24be", false, 1e-4},
      {"f8.aiff", "-c:a pcm_s8", false, 1e-2},
      {"sowt.aifc", "-c:a pcm_s16le", false, 1e-4},
      {"fl32.aifc", "-c:a pcm_f32be", false, 1e-6},
      {"ulaw.aifc", "-c:a pcm_mulaw", false, 1e-2},
      {"alaw.aifc", "-c:a pcm_alaw", false, 1e-2},
      {"sox.aiff", "", true, 1e-4},
      {"sox.aifc", "", true, 1e-4},
  };
  for (const Made& m : made) {
    const std::string path = folder.File(m.file);
    if (m.sox) {
      if (!HaveTool("sox")) continue;
      ASSERT_TRUE(RunTool("sox -n -r 44100 -c 2 -b 16 " + ShellQuote(path) + " synth 0.5 sine 440 sine 660 vol 0.5"));
    } else {
      ASSERT_TRUE(FFmpegMake(in + m.tool + " " + ShellQuote(path))) << m.file;
    }
    LSoundSource s = LAiffFile::OpenSource(path.c_str());
    ASSERT_FALSE(s.IsError()) << m.file << " " << int(s.GetErrorCode());
    const std::vector<float> judge = FFmpegDecode(path, 2, 44100, folder.File("judge.raw"));
    ASSERT_EQ(s.GetEndSample() * 2, static_cast<long long>(judge.size())) << m.file;
    EXPECT_LE(MaxDifference(ReadWhole(s), judge), m.tolerance) << m.file;
  }
}
