#include "formats/ffmpeg_source.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include "base/memory_stream.h"
#include "codec_fixtures.h"
#include "support/temp_folder.h"
#include "wave_fixtures.h"

#ifdef SONVALE_HAVE_FFMPEG

namespace {

struct DecodeCase {
  const char* name;
  const char* file;
  const char* encoder;  // checked before the file is made; nullptr for a stock one
  const char* arguments;
  int rate;
  int channels;
  bool video;
  // Frames after a seek differ from a reading from the start by at most this:
  // 0 for lossless formats; lossy decoders settle within their pre-roll but not
  // always to the last bit (AAC's noise substitution draws random numbers; GSM and
  // Speex keep integer and predictor state that never quite meets again).
  double seekTolerance;
  // Decoded as 16-bit values: the judge reads them with our scaling.
  bool sixteenBits = false;
};

void PrintTo(const DecodeCase& c, std::ostream* os) { *os << c.name; }

// Two channels that differ, so that a swap shows.
std::string StereoInput(int rate) {
  return "-f lavfi -i \"aevalsrc=0.5*sin(2*PI*440*t)|0.3*sin(2*PI*660*t+1):s=" + std::to_string(rate) + ":d=6\"";
}
std::string MonoInput(int rate) {
  return "-f lavfi -i \"aevalsrc=0.5*sin(2*PI*440*t):s=" + std::to_string(rate) + ":d=6\"";
}
// The largest difference between frames read after a seek to at and those of a reading from the start.
double Mismatch(const std::vector<float>& got, const std::vector<float>& whole, long long at, int channels) {
  double worst = 0.0;
  for (size_t i = 0; i < got.size(); ++i) {
    const long long k = at * channels + static_cast<long long>(i);
    const float want = k >= 0 && k < static_cast<long long>(whole.size()) ? whole[k] : 0.0f;
    worst = std::max(worst, static_cast<double>(std::fabs(got[i] - want)));
  }
  return worst;
}

const char* kVideo = "-f lavfi -i testsrc=size=64x48:rate=10:d=6 ";

class FFmpegDecodes : public ::testing::TestWithParam<DecodeCase> {};

}  // namespace

TEST_P(FFmpegDecodes, TheSameFramesAsFFmpegInAnyBlocksAndAfterSeeks) {
  const DecodeCase& c = GetParam();
  if (!HaveTool("ffmpeg")) GTEST_SKIP() << "ffmpeg is not installed";
  if (c.encoder && !FFmpegHasEncoder(c.encoder)) GTEST_SKIP() << "this ffmpeg has no encoder " << c.encoder;
  TempFolder folder;
  const std::string path = folder.File(c.file);
  if (std::strncmp(c.arguments, "sox ", 4) == 0) {
    // Made by sox where this ffmpeg has no encoder.
    if (!HaveTool("sox") || !RunTool(std::string(c.arguments) + " " + ShellQuote(path) + " synth 6 sine 440 vol 0.5")) {
      GTEST_SKIP() << "sox cannot write " << c.name;
    }
  } else {
    const std::string input = c.channels == 1 ? MonoInput(c.rate) : StereoInput(c.rate);
    ASSERT_TRUE(FFmpegMake((c.video ? kVideo : "") + input + " " + c.arguments + " " + ShellQuote(path)));
  }

  LSoundFileInfo info;
  LSoundSource source = LFFmpegSource::Open(path.c_str(), &info);
  ASSERT_FALSE(source.IsError()) << int(source.GetErrorCode());
  EXPECT_EQ(source.GetSampleRate(), static_cast<unsigned>(c.rate));
  EXPECT_EQ(source.GetChannels(), c.channels);
  EXPECT_EQ(info.hasVideo, c.video);
  EXPECT_FALSE(info.formatName.empty());
  EXPECT_FALSE(info.codecName.empty());

  const std::vector<float> judge = FFmpegDecode(path, c.channels, c.rate, folder.File("judge.raw"), c.sixteenBits);
  ASSERT_FALSE(judge.empty());
  EXPECT_EQ(source.GetEndSample(), static_cast<long long>(judge.size()) / c.channels);
  EXPECT_FALSE(source.IsStreaming());
  const std::vector<float> whole = ReadWhole(source);
  EXPECT_LT(MaxDifference(whole, judge), 1e-6);
  EXPECT_EQ(ReadWhole(source, 234), whole);

  // Read once from the start as the copy into the cache reads it, the length is learnt on the way.
  LSoundSource following = LFFmpegSource::Open(path.c_str());
  std::vector<float> streamed;
  for (;;) {
    const long long at = following.GetPositionSample();
    const long long n = std::min(following.GetEndSampleKnown() - at, 777LL);
    if (n <= 0) {
      if (!following.IsStreaming()) break;
      following.WaitForStreamingData(0);
      continue;
    }
    streamed.resize(streamed.size() + static_cast<size_t>(n * c.channels));
    following.Read(streamed.data() + at * c.channels, n);
  }
  EXPECT_EQ(streamed, whole);
  EXPECT_EQ(following.GetEndSample(), source.GetEndSample());
  // A reader that jumps before the end is known has the file counted first.
  LSoundSource jumping = LFFmpegSource::Open(path.c_str());
  ReadFrames(jumping, 1000);
  jumping.Seek(source.GetEndSample() / 2);
  EXPECT_LE(Mismatch(ReadFrames(jumping, 1000), whole, source.GetEndSample() / 2, c.channels), c.seekTolerance);
  EXPECT_FALSE(jumping.IsStreaming());

  const long long end = source.GetEndSample();
  for (long long target : {end - 700, end / 5, end * 3 / 5, 3LL, end / 2, end / 2 - 1}) {
    source.Seek(target);
    const std::vector<float> got = ReadFrames(source, 1000);
    EXPECT_EQ(source.GetPositionSample(), target + 1000);
    const double here = Mismatch(got, whole, target, c.channels);
    EXPECT_LE(here, c.seekTolerance) << "after a seek to " << target;
    // Where decoders do not settle to the last bit the frames must still be the best fit.
    for (long long shift = -16; shift <= 16; ++shift) {
      if (shift == 0) continue;
      EXPECT_LT(here, Mismatch(got, whole, target + shift, c.channels)) << target << " shifted by " << shift;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(
    Formats, FFmpegDecodes,
    ::testing::Values(
        DecodeCase{"mp3", "a.mp3", "libmp3lame", "-c:a libmp3lame -b:a 128k", 44100, 2, false, 1e-4},
        DecodeCase{"flac", "a.flac", nullptr, "-c:a flac", 44100, 2, false, 0.0},
        DecodeCase{"vorbis", "a.ogg", "libvorbis", "-c:a libvorbis", 44100, 2, false, 1e-4},
        DecodeCase{"opus", "a.opus", "libopus", "-c:a libopus", 48000, 2, false, 1e-3},
        DecodeCase{"aac", "a.m4a", nullptr, "-c:a aac", 44100, 2, false, 1e-2},
        DecodeCase{"wma", "a.wma", nullptr, "-c:a wmav2", 44100, 2, false, 1e-4},
        DecodeCase{"amr", "a.amr", nullptr, "sox -n -r 8000 -c 1 -t amr-nb", 8000, 1, false, 0.1},
        DecodeCase{"gsm", "a.gsm", "libgsm", "-c:a libgsm", 8000, 1, false, 2e-2, true},
        DecodeCase{"speex", "a.spx", "libspeex", "-c:a libspeex", 16000, 1, false, 0.1},
        DecodeCase{"au", "a.au", nullptr, "", 22050, 2, false, 0.0, true},
        DecodeCase{"caf", "a.caf", nullptr, "", 44100, 2, false, 0.0, true},
        DecodeCase{"w64", "a.w64", nullptr, "-c:a pcm_s24le", 48000, 2, false, 0.0},
        DecodeCase{"rf64", "a.wav", nullptr, "-rf64 always", 44100, 2, false, 0.0, true},
        DecodeCase{"mp4", "v.mp4", nullptr, "-c:v mpeg4 -c:a aac -shortest", 44100, 2, true, 1e-2},
        DecodeCase{"mkv", "v.mkv", "libvorbis", "-c:v mpeg4 -c:a libvorbis -shortest", 44100, 2, true, 1e-4},
        DecodeCase{"webm", "v.webm", "libopus", "-c:v libvpx -c:a libopus -shortest", 48000, 2, true, 1e-3}),
    [](const ::testing::TestParamInfo<DecodeCase>& i) { return std::string(i.param.name); });

namespace {

// Reads a source whole, in blocks, and with seeks; every value must be a number.
void ReadEverywhere(LSoundSource& source, const std::string& what) {
  const long long end = source.GetEndSample();
  std::vector<float> block(static_cast<size_t>(4096 * source.GetChannels()));
  bool finite = true;
  for (long long at = 0; at < end; at += 4096) {
    source.Read(block.data(), 4096);
    for (float v : block) finite = finite && std::isfinite(v);
  }
  for (long long target : {end / 2, end / 3, 0LL, end - 1, end + 100}) {
    source.Seek(target);
    source.Read(block.data(), 1000);
    for (size_t i = 0; i < 1000u * source.GetChannels(); ++i) finite = finite && std::isfinite(block[i]);
  }
  EXPECT_TRUE(finite) << what;
}

}  // namespace

// One deterministic case; the format dispatch's fuzz target feeds every demuxer and decoder damaged bytes.
TEST(FFmpegSource, DamagedFilesReadAsFarAsTheyGoOrFailWithACode) {
  if (!HaveTool("ffmpeg")) GTEST_SKIP() << "ffmpeg is not installed";
  TempFolder folder;
  const std::string path = folder.File("d.mp3");
  ASSERT_TRUE(FFmpegMake(StereoInput(44100) + " -t 2 -c:a libmp3lame " + ShellQuote(path)));
  const int descriptors = OpenDescriptorCount();
  const Bytes whole = FileBytes(path);
  ASSERT_GT(whole.size(), 1000u);
  Bytes flipped = whole;
  for (size_t i = 300; i < flipped.size(); i += 97) flipped[i] ^= 0xFF;
  const std::pair<const char*, Bytes> variants[] = {
      {"half", Bytes(whole.begin(), whole.begin() + static_cast<long>(whole.size() / 2))},
      {"flipped", flipped},
      {"headerless", Bytes(whole.begin() + 64, whole.end())}};
  for (const auto& [name, bytes] : variants) {
    LSoundSource s = LFFmpegSource::Open(std::make_unique<LMemoryStream>(bytes), "d.mp3");
    if (s.IsError()) {
      const unsigned char code = s.GetErrorCode();
      EXPECT_TRUE(code == kLSourceDamaged || code == kLSourceUnsupported) << name << " " << int(code);
      continue;
    }
    EXPECT_GT(s.GetSampleRate(), 0u) << name;
    ReadEverywhere(s, name);
  }
  EXPECT_EQ(OpenDescriptorCount(), descriptors);
}

TEST(FFmpegSource, TagsAndChaptersComeWithTheInfoAndMemoryReadsLikeTheFile) {
  if (!HaveTool("ffmpeg")) GTEST_SKIP() << "ffmpeg is not installed";
  TempFolder folder;
  const std::string meta = folder.File("meta.txt");
  const std::string text =
      ";FFMETADATA1\ntitle=Hörbuch\nartist=Erzählerin\n[CHAPTER]\nTIMEBASE=1/1000\nSTART=0\nEND=500\ntitle=Eins\n"
      "[CHAPTER]\nTIMEBASE=1/1000\nSTART=500\nEND=1000\ntitle=Zwei\n";
  WriteFileBytes(meta, Bytes(text.begin(), text.end()));
  const std::string path = folder.File("kapitel.mka");
  ASSERT_TRUE(FFmpegMake(MonoInput(44100) + " -i " + ShellQuote(meta) + " -map 0 -map_metadata 1 -t 1 -c:a flac " +
                         ShellQuote(path)));
  LSoundFileInfo info;
  LSoundSource s = LFFmpegSource::Open(path.c_str(), &info);
  ASSERT_FALSE(s.IsError());
  EXPECT_EQ(info.formatName, "matroska,webm");
  EXPECT_EQ(info.codecName, "flac");
  EXPECT_FALSE(info.hasVideo);
  EXPECT_STREQ(info.tags.Get("TITLE"), "Hörbuch");
  EXPECT_STREQ(info.tags.Get("ARTIST"), "Erzählerin");
  ASSERT_EQ(info.chapters.size(), 2u);
  EXPECT_EQ(info.chapters[1].start, 22050);
  EXPECT_EQ(info.chapters[1].end, 44100);
  EXPECT_EQ(info.chapters[1].title, "Zwei");

  const Bytes bytes = FileBytes(path);
  LSoundSource memory = LFFmpegSource::Open(std::make_unique<LMemoryStream>(bytes), "");
  ASSERT_FALSE(memory.IsError());
  EXPECT_EQ(ReadWhole(memory, 1000), ReadWhole(s, 777));
}

TEST(FFmpegSource, MissingAndUnreadableFilesGiveTheirCodes) {
  TempFolder folder;
  EXPECT_EQ(LFFmpegSource::Open(folder.File("nichts.mp3").c_str()).GetErrorCode(), kLSourceCannotOpen);
  EXPECT_EQ(LFFmpegSource::Open(std::make_unique<LMemoryStream>(Bytes(5000, 0x33)), "x.bin").GetErrorCode(),
            kLSourceUnsupported);
  EXPECT_EQ(LFFmpegSource::Open(std::make_unique<LMemoryStream>(Bytes()), "leer.mp3").GetErrorCode(),
            kLSourceUnsupported);
}

TEST(FFmpegSource, RF64FilesAbove4GBReadToTheirEnd) {
  // RF64 as other programs write it: the sizes in a ds64 chunk, 5 GB of 16-bit
  // stereo, held sparsely; a staircase lies beyond the 4 GB mark.
  const long long dataBytes = 5000000000LL;
  const long long frames = dataBytes / 4;
  Bytes ds64;
  for (std::uint64_t v : {static_cast<std::uint64_t>(dataBytes) + 72, static_cast<std::uint64_t>(dataBytes),
                          static_cast<std::uint64_t>(frames)}) {
    PutLE32(ds64, static_cast<std::uint32_t>(v));
    PutLE32(ds64, static_cast<std::uint32_t>(v >> 32));
  }
  PutLE32(ds64, 0);  // no table
  Bytes header = Chunk("RF64", {'W', 'A', 'V', 'E'}, 0xFFFFFFFFu, false);
  for (const Bytes& c :
       {Chunk("ds64", ds64), Chunk("fmt ", FmtBody(1, 2, 48000, 16, 4)), Chunk("data", {}, 0xFFFFFFFFu)}) {
    header.insert(header.end(), c.begin(), c.end());
  }
  SparseStream big;
  ASSERT_TRUE(big.WriteAll(header.data(), static_cast<long long>(header.size())));
  const long long stairAt = frames - 100000;  // frame 1,249,900,000: byte 4,999,600,000 of the data
  const Bytes stairs = Staircase16(1000, 2);
  ASSERT_TRUE(big.Seek(static_cast<long long>(header.size()) + stairAt * 4));
  ASSERT_TRUE(big.WriteAll(stairs.data(), static_cast<long long>(stairs.size())));
  const unsigned char last = 0;
  ASSERT_TRUE(big.Seek(static_cast<long long>(header.size()) + dataBytes - 1));
  ASSERT_TRUE(big.WriteAll(&last, 1));

  LSoundFileInfo info;
  LSoundSource s = LFFmpegSource::Open(std::make_unique<SparseStream>(big), "gross.wav", &info);
  ASSERT_FALSE(s.IsError()) << int(s.GetErrorCode());
  EXPECT_EQ(s.GetEndSample(), frames);
  EXPECT_EQ(s.GetChannels(), 2);
  s.Seek(stairAt - 10);
  const std::vector<float> got = ReadFrames(s, 1010);
  for (int i = 0; i < 20; ++i) EXPECT_EQ(got[i], 0.0f);
  for (int i = 0; i < 2000; ++i) ASSERT_EQ(got[20 + i], static_cast<float>(i) / 32767.0f) << i;
}

#endif

TEST(FFmpegSource, ATinyFileWhoseTagClaimsGigabytesIsOpenedWithoutTakingThem) {
  // 125 bytes a fuzzer found: two fmt chunks, the first of 0 bits, and a LIST
  // whose INAM claims 1.6 GB. FFmpeg's WAVE demuxer asked for all of it.
  const Bytes file = {
      'R', 'I', 'F', 'F', 0xb4, 0x01, 0, 0, 'W', 'A', 'V', 'E', 'f', 'm', 't', ' ', 0x10, 0, 0, 0, 1, 0, 1, 0,
      0x40, 0x1f, 0, 0, 0x80, 0x3e, 0, 0, 2, 0, 0, 0, 'f', 'm', 't', ' ', 0x10, 0, 0, 0, 1, 0, 1, 0, 0x40, 0x1f,
      0, 0, 0x80, 0x3e, 0, 0, 2, 0, 0x10, 0, 'L', 'I', 'S', 'T', 0x2a, 'm', 'd', 'l', 'I', 'N', 'F', 'O', 'I',
      'N', 'A', 'M', 0x08, 0, '"', 'c', 'o', 'n', 't', 'e', 'n', 't', '"', '2', 0xcb, '0', '2', '2', 1, 0, 0,
      0, 0x18, 0, 0, 0, '5', '9', '.', '2', '7', '.', '1', '0', '0', 0, 'd', 'a', 't', 'a', 0xff, 0xff, 0xff,
      0xb0, '"', 0, 0, 0xff, 'F', 0, 0};
  ASSERT_EQ(file.size(), 125u);
  // Measured in a child of its own, whose peak is not the test program's.
  std::fflush(nullptr);
  const pid_t child = fork();
  ASSERT_GE(child, 0);
  if (child == 0) {
    LSoundSource s = LFFmpegSource::Open(std::make_unique<LMemoryStream>(file), "fuzz.mkv");
    std::vector<float> block(static_cast<std::size_t>(1000 * std::max<int>(1, s.GetChannels())));
    if (!s.IsError()) s.Read(block.data(), 1000);
    _exit(0);
  }
  int status = 0;
  rusage usage{};
  ASSERT_EQ(wait4(child, &status, 0, &usage), child);
  ASSERT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
  EXPECT_LT(usage.ru_maxrss, 512L * 1024) << "kilobytes at the child's peak";
}
