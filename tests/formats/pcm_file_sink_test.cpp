#include "formats/pcm_file_sink.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>

#include "formats/pcm_file_source.h"
#include "formats/wave_file.h"
#include "support/temp_folder.h"
#include "wave_fixtures.h"

namespace {

std::vector<float> Ramp(int frames, int channels) {
  std::vector<float> v(static_cast<size_t>(frames * channels));
  for (size_t i = 0; i < v.size(); ++i) v[i] = -0.99f + 1.98f * static_cast<float>(i) / static_cast<float>(v.size());
  return v;
}

void WriteInBlocks(LSoundSink& sink, const std::vector<float>& v, long long block) {
  const long long frames = static_cast<long long>(v.size()) / sink.GetChannels();
  for (long long done = 0; done < frames; done += block) {
    sink.Write(v.data() + done * sink.GetChannels(), std::min(block, frames - done));
  }
}

// A writer that starts as if it had already written frames frames: the chunk
// geometry above 4 GB, tested on a sparse stream.
class LateSink : public LSNKPCMFile<LSF16> {
 public:
  LateSink(const SparseStream& stream, long long frames)
      : LSNKPCMFile<LSF16>(std::make_unique<SparseStream>(stream), 44100, 2, LWaveHeaderKind::kPlain) {
    SetPosition(frames);
    // The placeholder headers that the writer put before the chunks it filled.
    const unsigned char placeholder[8] = {'d', 'a', 't', 'a', 0, 0, 0, 0};
    for (long long b = kLPCMFirstChunkMax; b < frames * 4; b += kLPCMFurtherChunkMax) {
      EXPECT_TRUE(Stream()->Seek(Geometry().FileOffset(b)) && Stream()->WriteAll(placeholder, 8));
    }
    EXPECT_TRUE(Stream()->Seek(Geometry().FileOffset(frames * 4)));
  }
};

// Stereo 16-bit frames that name their own index, up to 2^30 frames.
void FrameMark(long long frame, float* out) {
  out[0] = static_cast<float>(frame & 0x7FFF) / 32767.0f;
  out[1] = static_cast<float>((frame >> 15) & 0x7FFF) / 32767.0f;
}

std::vector<float> Marks(long long first, long long count) {
  std::vector<float> v(static_cast<size_t>(count * 2));
  for (long long i = 0; i < count; ++i) FrameMark(first + i, v.data() + 2 * i);
  return v;
}

constexpr long long kFirstChunkFrames = 0xFFFFFFD8LL / 4;
constexpr long long kFurtherChunkFrames = 0xFFFFFFF0LL / 4;

}  // namespace

TEST(PCMFileSink, The44ByteHeaderIsProvisionalWhileOpenAndTrueAfterCloseWithAPadByteWhenOdd) {
  TempFolder folder;
  const std::string path = folder.File("a.wav");
  WriteFileBytes(path, Bytes(1000, 0xAA));  // an older, longer file is cut after the header
  LSoundSink sink = LWaveFile::OpenSinkPCM(path.c_str(), 44100, 2, 16, 12345, false);
  ASSERT_FALSE(sink.HasError());
  Bytes open = FileBytes(path);
  ASSERT_EQ(open.size(), 44u);
  EXPECT_EQ(GetLE32(open, 4), 0xFFFFFFFFu);
  EXPECT_EQ(GetLE32(open, 40), 0xFFFFFFDBu);
  const std::vector<float> ramp = Ramp(3, 2);
  sink.Write(ramp.data(), 3);
  sink.Close();
  const Bytes b = FileBytes(path);
  ASSERT_EQ(b.size(), 44u + 12u);
  const Bytes header = {'R', 'I', 'F', 'F', 48, 0, 0, 0, 'W', 'A', 'V', 'E', 'f', 'm', 't', ' ', 16, 0, 0, 0,
                        1,    0,    2, 0, 0x44, 0xAC, 0, 0,  // PCM, 2 channels, 44100 Hz
                        0x10, 0xB1, 2, 0,                    // 44100 * 4 bytes per second
                        4,    0,    16, 0, 'd', 'a', 't', 'a', 12, 0, 0, 0};
  EXPECT_EQ(Bytes(b.begin(), b.begin() + 44), header);

  // 8-bit mono with an odd frame count: the data chunk gets its pad byte.
  const std::string odd = folder.File("p.wav");
  {
    LSoundSink mono = LWaveFile::OpenSinkPCM(odd.c_str(), 8000, 1, 8, 0, true);
    mono.Write(ramp.data(), 5);
  }
  const Bytes p = FileBytes(odd);
  ASSERT_EQ(p.size(), 44u + 6u);
  EXPECT_EQ(GetLE32(p, 40), 5u);
  EXPECT_EQ(GetLE32(p, 4), 5u + 36u);
  EXPECT_EQ(p.back(), 0);
  EXPECT_EQ(LWaveFile::OpenSource(odd.c_str()).GetEndSample(), 5);
}

TEST(PCMFileSink, TheFloatSinkWritesThe46ByteHeaderSayingTag1SoItReadsBackAsIntegers) {
  TempFolder folder;
  const std::string path = folder.File("f.wav");
  LSoundSink sink = LWaveFile::OpenSink(path.c_str(), LWaveFileFormat{kLWaveTagIEEEFloat, 1, 48000, 32, false});
  EXPECT_EQ(GetLE32(FileBytes(path), 42), 0xFFFFFFD9u);
  const float values[2] = {0.5f, -0.25f};
  sink.Write(values, 2);
  sink.Close();
  const Bytes b = FileBytes(path);
  ASSERT_EQ(b.size(), 46u + 8u);
  EXPECT_EQ(GetLE32(b, 4), 8u + 38u);
  EXPECT_EQ(GetLE32(b, 16), 18u);
  EXPECT_EQ(GetLE16(b, 20), 1);  // tag 1 for float samples: kept as it is
  EXPECT_EQ(GetLE16(b, 34), 32);
  EXPECT_EQ(GetLE16(b, 36), 0);
  EXPECT_EQ(GetLE32(b, 42), 8u);
  LSoundSource source = LWaveFile::OpenSource(path.c_str());
  std::int32_t bits;
  std::memcpy(&bits, &values[0], 4);
  EXPECT_EQ(ReadFrames(source, 1)[0], static_cast<float>(bits / 2147483647.0));
  EXPECT_TRUE(LWaveFile::OpenSink(path.c_str(), LWaveFileFormat{kLWaveTagIEEEFloat, 1, 48000, 64, false}).HasError());
}

TEST(PCMFileSink, EveryBitDepthRoundTripsThroughItsReaderMonoAndStereo) {
  TempFolder folder;
  for (int channels : {1, 2}) {
    for (unsigned short bits : {8, 16, 24, 32}) {
      const std::string path = folder.File("rt.wav");
      const std::vector<float> ramp = Ramp(20000, channels);
      {
        LSoundSink sink =
            LWaveFile::OpenSinkPCM(path.c_str(), 44100, static_cast<unsigned char>(channels), bits, 0, false);
        WriteInBlocks(sink, ramp, 234);
        EXPECT_EQ(sink.GetPosition(), 20000);
      }
      LSoundSource source = LWaveFile::OpenSource(path.c_str());
      ASSERT_EQ(source.GetEndSample(), 20000) << bits;
      std::vector<float> expect = bits == 8    ? Quantised<LSFU8>(ramp)
                                  : bits == 16 ? Quantised<LSF16>(ramp)
                                  : bits == 24 ? Quantised<LSFLE24>(ramp)
                                               : Quantised<LSF32>(ramp);
      EXPECT_EQ(ReadFrames(source, 20000, 234), expect) << bits << " bits, " << channels << " channels";
    }
  }
}

TEST(PCMFileSink, TheFloatExportIsTaggedFloatWithAFactChunkAndRoundTripsExactly) {
  TempFolder folder;
  const std::string path = folder.File("x.wav");
  const std::vector<float> ramp = Ramp(9000, 2);
  {
    LSoundSink sink = LWaveFile::OpenSinkFloatExport(path.c_str(), 96000, 2);
    WriteInBlocks(sink, ramp, 234);
  }
  const Bytes b = FileBytes(path);
  ASSERT_EQ(b.size(), 58u + 72000u);
  EXPECT_EQ(GetLE16(b, 20), kLWaveTagIEEEFloat);
  EXPECT_EQ(GetLE32(b, 28), 96000u * 8);
  EXPECT_EQ(GetLE16(b, 32), 8);
  EXPECT_EQ(Bytes(b.begin() + 38, b.begin() + 42), (Bytes{'f', 'a', 'c', 't'}));
  EXPECT_EQ(GetLE32(b, 46), 9000u);
  EXPECT_EQ(GetLE32(b, 54), 72000u);
  LSoundSource source = LWaveFile::OpenSource(path.c_str());
  EXPECT_EQ(ReadFrames(source, 9000), ramp);
}

TEST(PCMFileSink, SeekingBackwardsTruncatesAndSeekingForwardIsIgnored) {
  TempFolder folder;
  const std::string path = folder.File("s.wav");
  const std::vector<float> ramp = Ramp(100, 1);
  LSoundSink sink = LWaveFile::OpenSinkPCM(path.c_str(), 8000, 1, 16, 0, false);
  sink.Write(ramp.data(), 100);
  sink.Seek(150);
  EXPECT_EQ(sink.GetPosition(), 100);
  EXPECT_EQ(FileBytes(path).size(), 44u + 200u);
  sink.Seek(40);
  EXPECT_EQ(sink.GetPosition(), 40);
  EXPECT_EQ(FileBytes(path).size(), 44u + 80u);
  sink.Write(ramp.data() + 90, 10);
  sink.Seek(-5);
  EXPECT_EQ(sink.GetPosition(), 0);
  sink.Write(ramp.data(), 50);
  sink.Close();
  LSoundSource source = LWaveFile::OpenSource(path.c_str());
  EXPECT_EQ(source.GetEndSample(), 50);
}

TEST(PCMFileSink, AFileStillBeingWrittenOpensAsStreamingAndFollowsItsGrowth) {
  TempFolder folder;
  const std::string path = folder.File("g.wav");
  std::vector<float> stairs(1500);
  for (int i = 0; i < 1500; ++i) stairs[i] = static_cast<float>(i) / 32767.0f;
  LSoundSink sink = LWaveFile::OpenSinkPCM(path.c_str(), 8000, 1, 16, 0, false);
  sink.Write(stairs.data(), 1000);
  LSoundSource source = LWaveFile::OpenSource(path.c_str());
  ASSERT_EQ(source.GetErrorCode(), kLSourceOK);
  EXPECT_TRUE(source.IsStreaming());
  EXPECT_EQ(source.GetEndSample(), 1000);
  EXPECT_EQ(ReadFrames(source, 1000, 234), std::vector<float>(stairs.begin(), stairs.begin() + 1000));
  sink.Write(stairs.data() + 1000, 500);
  EXPECT_EQ(source.GetEndSample(), 1500);
  EXPECT_TRUE(source.IsStreaming());
  EXPECT_EQ(ReadFrames(source, 500), std::vector<float>(stairs.begin() + 1000, stairs.end()));
  sink.Close();
  EXPECT_EQ(source.GetEndSample(), 1500);
  EXPECT_FALSE(source.IsStreaming());
}

TEST(PCMFileSink, WritingAcrossChunkBoundariesGivesChunksThatReadAsOneStream) {
  for (long long start : {kFirstChunkFrames - 100, kFirstChunkFrames + kFurtherChunkFrames - 100}) {
    SparseStream file;
    {
      LateSink sink(file, start);
      const std::vector<float> marks = Marks(start, 300);
      sink.Write(marks.data(), 50);
      // A reader of the file still being written finds the chunk headers where the writer puts them.
      LSoundSource growing = LWaveFile::OpenSource(std::make_unique<SparseStream>(file));
      sink.Write(marks.data() + 100, 250);  // crosses one boundary in one call
      EXPECT_TRUE(growing.IsStreaming());
      EXPECT_EQ(growing.GetEndSample(), start + 300);
      growing.Seek(start);
      EXPECT_EQ(ReadFrames(growing, 300, 7), marks);
      EXPECT_EQ(LWaveFile::OpenSource(std::make_unique<SparseStream>(file)).GetEndSample(), start + 300);
    }
    SparseStream reader = file;
    const long long total = (start + 300) * 4;
    const long long chunks = start < kFirstChunkFrames ? 2 : 3;
    EXPECT_EQ(file.Size(), 44 + total + 8 * (chunks - 1));
    ASSERT_TRUE(reader.Seek(0));
    Bytes head(44);
    ASSERT_EQ(reader.Read(head.data(), 44), 44);
    EXPECT_EQ(GetLE32(head, 40), 0xFFFFFFD8u);
    EXPECT_EQ(GetLE32(head, 4), 0xFFFFFFD8u + 36u);
    // Further chunks are full but for the last, which holds the 200 frames past the boundary.
    long long at = 44 + 0xFFFFFFD8LL;
    for (long long chunk = 2; chunk <= chunks; ++chunk, at += 8 + 0xFFFFFFF0LL) {
      Bytes header(8);
      ASSERT_TRUE(reader.Seek(at));
      ASSERT_EQ(reader.Read(header.data(), 8), 8);
      EXPECT_EQ(std::string(header.begin(), header.begin() + 4), "data");
      EXPECT_EQ(GetLE32(header, 4), chunk == chunks ? 800u : 0xFFFFFFF0u);
    }

    LSoundSource source = LWaveFile::OpenSource(std::make_unique<SparseStream>(file));
    ASSERT_EQ(source.GetErrorCode(), kLSourceOK);
    EXPECT_EQ(source.GetEndSample(), start + 300);
    auto* pcm = dynamic_cast<LSRCPCMFileBase*>(source.Get());
    ASSERT_NE(pcm, nullptr);
    EXPECT_EQ(pcm->Extents().size(), static_cast<size_t>(chunks));
    source.Seek(start - 5);
    std::vector<float> got = ReadFrames(source, 310, 7);
    for (int i = 0; i < 10; ++i) EXPECT_EQ(got[i], 0.0f);  // pretended frames are zeros
    std::vector<float> expect = Marks(start, 300);
    EXPECT_EQ(std::vector<float>(got.begin() + 10, got.begin() + 610), expect);
    EXPECT_EQ(got[615], 0.0f);
  }
}

TEST(PCMFileSink, SeekingBackToAChunkStartDropsItsHeaderAndWritingPutsItBack) {
  SparseStream file;
  {
    LateSink sink(file, kFirstChunkFrames - 10);
    const std::vector<float> marks = Marks(kFirstChunkFrames - 10, 30);
    sink.Write(marks.data(), 30);
    sink.Seek(kFirstChunkFrames + 5);
    EXPECT_EQ(file.Size(), 44 + 0xFFFFFFD8LL + 8 + 20);
    sink.Seek(kFirstChunkFrames);
    EXPECT_EQ(file.Size(), 44 + 0xFFFFFFD8LL);
    sink.Write(marks.data() + 20, 5);
  }
  LSoundSource source = LWaveFile::OpenSource(std::make_unique<SparseStream>(file));
  EXPECT_EQ(source.GetEndSample(), kFirstChunkFrames + 5);
  source.Seek(kFirstChunkFrames - 1);
  std::vector<float> got = ReadFrames(source, 3);
  EXPECT_EQ(got, (std::vector<float>{Marks(kFirstChunkFrames - 1, 3)}));
}
