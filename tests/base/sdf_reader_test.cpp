#include "base/sdf_reader.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "base/memory_stream.h"
#include "base/sdf_reader_chunk.h"
#include "base/sdf_reader_chunk_iterator.h"
#include "base/sdf_writer.h"

namespace {

using Bytes = std::vector<unsigned char>;

enum : unsigned short { kBool = 1, kInt = 2, kInt64 = 3, kFloat = 4, kText = 5, kBlob = 6, kInner = 7 };

// Every kind of chunk, with a nested container.
void WriteSample(LSDFWriter& writer) {
  writer.WriteBool(kBool, true);
  writer.WriteInt(kInt, -123456);
  writer.StartContainer(kInner);
  writer.WriteInt64(kInt64, -(1LL << 50));
  writer.WriteString(kText, "Klänge");
  writer.StartContainer(kInner);
  writer.EndContainer(kInner);
  writer.EndContainer(kInner);
  writer.WriteFloat(kFloat, 0.25f);
  Bytes blob(300);
  for (std::size_t i = 0; i < blob.size(); ++i) blob[i] = static_cast<unsigned char>(i);
  writer.WriteBlob(kBlob, blob.data(), blob.size());
}

Bytes WriteFile(unsigned int fileType, void (*content)(LSDFWriter&), unsigned short dataVersion = 1) {
  LMemoryStream stream;
  LSDFWriter writer;
  EXPECT_TRUE(writer.Open(stream, fileType, dataVersion));
  content(writer);
  EXPECT_TRUE(writer.IsOK());
  EXPECT_TRUE(writer.Close());
  return stream.Bytes();
}

void PutU16(Bytes& b, std::size_t at, unsigned short v) { std::memcpy(b.data() + at, &v, 2); }

// Reads every chunk every way the loaders do and describes what was found.
std::string Walk(LSDFReader& reader, LSDFReaderChunkIterator& it, int depth = 0) {
  std::string out;
  while (it.StartNextChunk()) {
    LSDFReaderChunk chunk = it.Chunk();
    out += std::to_string(it.Id()) + "#" + std::to_string(it.Info().index) + "=";
    switch (it.Id()) {
      case kBool: { bool v = false; out += chunk.ReadBool(v) ? std::to_string(v) : "?"; } break;
      case kInt: { int v = 0; out += chunk.ReadInt(v) ? std::to_string(v) : "?"; } break;
      case kInt64: { long long v = 0; out += chunk.ReadInt64(v) ? std::to_string(v) : "?"; } break;
      case kFloat: { float v = 0; out += chunk.ReadFloat(v) ? std::to_string(v) : "?"; } break;
      case kText: { LStringLong v; out += chunk.ReadString(v) ? v : "?"; } break;
      case kBlob: {
        LArray<unsigned char> data;
        out += chunk.ReadData(data) ? std::to_string(data.size()) + ":" + std::to_string(data.empty() ? -1 : data.back()) : "?";
      } break;
      case kInner:
        if (depth < 8) {
          LSDFReaderChunkIterator inner(reader, it.Info());
          out += "(" + Walk(reader, inner, depth + 1) + ")";
        }
        break;
      default: break;
    }
    out += " ";
  }
  return out;
}

std::string WalkFile(const Bytes& file, std::size_t bufferSize = kSDFReadBufferSize) {
  LMemoryStream stream(file.data(), file.size());
  LSDFReader reader(bufferSize);
  if (!reader.Open(stream, kSDFFileTypeEffectChain)) return "refused";
  LSDFReaderChunkIterator it(reader);
  return Walk(reader, it);
}

bool Opens(const Bytes& file, unsigned int expectedFileType) {
  LMemoryStream stream(file.data(), file.size());
  LSDFReader reader;
  return reader.Open(stream, expectedFileType);
}

}  // namespace

TEST(SDFReader, ReadsBackEveryKindOfChunkWithAnyBufferSize) {
  const Bytes file = WriteFile(kSDFFileTypeEffectChain, WriteSample);
  const std::string expected =
      "1#0=1 2#1=-123456 7#2=(3#0=-1125899906842624 5#1=Klänge 7#2=() ) 4#3=0.250000 6#4=300:43 ";
  for (std::size_t bufferSize : {std::size_t{1}, std::size_t{5}, std::size_t{12}, std::size_t{13}, std::size_t{234},
                                 kSDFReadBufferSize})
    EXPECT_EQ(WalkFile(file, bufferSize), expected) << bufferSize;
  // Passing over what was buffered costs no reading again.
  LMemoryStream stream(file.data(), file.size());
  LSDFReader reader;
  ASSERT_TRUE(reader.Open(stream, kSDFFileTypeEffectChain));
  LSDFReaderChunkIterator it(reader);
  while (it.StartNextChunk()) {
  }
  EXPECT_EQ(stream.BytesRead(), static_cast<long long>(file.size()));
  EXPECT_TRUE(reader.IsOK());
}

TEST(SDFReader, OpenChecksMagicFormatVersionFileTypeAndRootButNotDataVersion) {
  const Bytes good = WriteFile(kSDFFileTypeEffectChain, WriteSample, 99);
  {
    LMemoryStream stream(good.data(), good.size());
    LSDFReader reader;
    ASSERT_TRUE(reader.Open(stream, kSDFFileTypeEffectChain));
    EXPECT_EQ(reader.DataVersion(), 99);
    EXPECT_EQ(reader.FormatVersion(), kSDFFormatVersion);
  }
  // Magic, format version, root id, root type.
  for (auto [at, value] : {std::pair<std::size_t, unsigned short>{2, 'F' << 8 | 'd'}, {4, 2}, {12, 1},
                           {14, kSDFChunkTypeBlob}}) {
    Bytes bad = good;
    PutU16(bad, at, value);
    EXPECT_FALSE(Opens(bad, kSDFFileTypeEffectChain)) << at;
  }
  EXPECT_FALSE(Opens(Bytes(good.begin(), good.begin() + 23), kSDFFileTypeEffectChain));

  const auto nothing = [](LSDFWriter&) {};
  EXPECT_FALSE(Opens(WriteFile(kSDFFileTypeProject, nothing), kSDFFileTypeEffectChain));
  EXPECT_TRUE(Opens(WriteFile(kSDFFileTypeSpectrum, nothing), kSDFFileTypeSpectrum));
  EXPECT_FALSE(Opens(WriteFile(kSDFFileTypeSpectrum, nothing), 0xFFFFFFFEu));
  EXPECT_FALSE(Opens(WriteFile(kSDFFileTypeEffectChain, nothing), kSDFFileTypeSpectrum));
}

TEST(SDFReader, SkipsAnUnknownMegabyteChunkWithoutReadingIt) {
  const Bytes file = WriteFile(kSDFFileTypeEffectChain, [](LSDFWriter& writer) {
    Bytes big(1000000, 0xAB);
    writer.WriteBlob(500, big.data(), big.size());
    writer.WriteInt(kInt, 42);
  });
  for (std::size_t bufferSize : {std::size_t{64}, kSDFReadBufferSize}) {
    LMemoryStream stream(file.data(), file.size());
    LSDFReader reader(bufferSize);
    ASSERT_TRUE(reader.Open(stream, kSDFFileTypeEffectChain));
    LSDFReaderChunkIterator it(reader);
    ASSERT_TRUE(it.StartNextChunk());
    EXPECT_EQ(it.Length(), 1000000u);
    ASSERT_TRUE(it.StartNextChunk());
    int value = 0;
    EXPECT_TRUE(it.Chunk().ReadInt(value));
    EXPECT_EQ(value, 42);
    EXPECT_FALSE(it.StartNextChunk());
    EXPECT_LE(stream.BytesRead(), static_cast<long long>(2 * bufferSize + 64));
  }
}

TEST(SDFReader, ChunksOfANewerBuildAreKeptWithTheirPlaceAmongTheKnownOnes) {
  // A newer build put chunk 9 between the known chunks 1 and 2 of container 50.
  const Bytes newer = WriteFile(kSDFFileTypeEffectChain, [](LSDFWriter& writer) {
    writer.StartContainer(50);
    writer.WriteInt(1, 11);
    writer.WriteString(9, "new");
    writer.WriteBlob(8, nullptr, 0);
    writer.WriteInt(2, 22);
    writer.EndContainer(50);
  });

  LMemoryStream in(newer.data(), newer.size());
  LSDFReader reader;
  ASSERT_TRUE(reader.Open(in, kSDFFileTypeEffectChain));
  LSDFReaderChunkIterator root(reader);
  ASSERT_TRUE(root.StartNextChunk());
  LSDFReaderChunkIterator it(reader, root.Info());
  int first = 0, second = 0;
  LList<LSDFUnknownChunk> preserved;
  while (it.StartNextChunk()) {
    if (it.Id() == 1) EXPECT_TRUE(it.Chunk().ReadInt(first));
    else if (it.Id() == 2) EXPECT_TRUE(it.Chunk().ReadInt(second));
    else EXPECT_TRUE(it.Chunk().ReadUnknownChunk(preserved));
  }
  // Where they go back on writing is the writer's test; here, that they carry their place.
  ASSERT_EQ(preserved.size(), 2u);
  EXPECT_EQ(preserved.front().index, 1);
  EXPECT_EQ(preserved.front().type, kSDFChunkTypeString);
  EXPECT_EQ(preserved.back().index, 2);
  EXPECT_EQ(preserved.back().DataLength(), 0u);
  EXPECT_EQ(first, 11);
  EXPECT_EQ(second, 22);
}

TEST(SDFReader, LongStringIsCutAt1560BytesAndTheNextChunkStillReads) {
  const Bytes file = WriteFile(kSDFFileTypeEffectChain, [](LSDFWriter& writer) {
    std::string text(1999, 'x');
    for (std::size_t i = 0; i < text.size(); ++i) text[i] = static_cast<char>('a' + i % 26);
    writer.WriteString(kText, text.c_str());
    writer.WriteInt(kInt, 7);
  });
  LMemoryStream stream(file.data(), file.size());
  LSDFReader reader(100);
  ASSERT_TRUE(reader.Open(stream, kSDFFileTypeEffectChain));
  LSDFReaderChunkIterator it(reader);
  ASSERT_TRUE(it.StartNextChunk());
  EXPECT_EQ(it.Length(), 2000u);
  std::vector<char> buffer(kSDFStringBufferSize + 16, '#');
  EXPECT_TRUE(it.Chunk().ReadString(buffer.data()));
  for (std::size_t i = 0; i < kSDFStringBufferSize; ++i) ASSERT_EQ(buffer[i], 'a' + i % 26) << i;
  EXPECT_EQ(buffer[kSDFStringBufferSize], '#');
  ASSERT_TRUE(it.StartNextChunk());
  int value = 0;
  EXPECT_TRUE(it.Chunk().ReadInt(value));
  EXPECT_EQ(value, 7);
}

TEST(SDFReader, ShortValueChunkGivesAShortReadAndTheWalkGoesOn) {
  const Bytes file = WriteFile(kSDFFileTypeEffectChain, [](LSDFWriter& writer) {
    writer.StartChunk(kInt64, kSDFChunkTypeInt);
    writer.WriteData("\x01\x02\x03\x04", 4);
    writer.EndChunk(kInt64);
    writer.WriteInt64(kInt64, 5);
    writer.WriteBool(kBool, true);
  });
  LMemoryStream stream(file.data(), file.size());
  LSDFReader reader;
  ASSERT_TRUE(reader.Open(stream, kSDFFileTypeEffectChain));
  LSDFReaderChunkIterator it(reader);
  ASSERT_TRUE(it.StartNextChunk());
  long long value = -1;
  EXPECT_FALSE(it.Chunk().ReadInt64(value));
  EXPECT_EQ(static_cast<unsigned long long>(value), 0xFFFFFFFF04030201ULL);  // what arrived
  ASSERT_TRUE(it.StartNextChunk());
  int low = 0;
  EXPECT_TRUE(it.Chunk().ReadInt(low));  // half of the chunk; the rest is passed over
  EXPECT_EQ(low, 5);
  ASSERT_TRUE(it.StartNextChunk());
  EXPECT_EQ(it.Id(), kBool);

  // A value chunk is no container: iterating it yields nothing.
  LSDFReaderChunkIterator none(reader, it.Info());
  EXPECT_FALSE(none.IsValid());
  EXPECT_FALSE(none.StartNextChunk());
}

TEST(SDFReader, TruncatedFileReadsUpToTheCut) {
  const Bytes file = WriteFile(kSDFFileTypeEffectChain, [](LSDFWriter& writer) {
    writer.WriteInt(kInt, 1);    // ends at 24 + 16
    writer.WriteInt(kInt, 2);    // ends at 56
    writer.WriteBool(kBool, 1);  // ends at 69
  });
  for (std::size_t cut = 0; cut <= file.size(); ++cut) {
    SCOPED_TRACE(cut);
    std::string walked = WalkFile(Bytes(file.begin(), file.begin() + cut));
    std::string expected = cut < 24    ? "refused"
                           : cut < 40  ? ""
                           : cut < 56  ? "2#0=1 "
                           : cut < 69  ? "2#0=1 2#1=2 "
                                       : "2#0=1 2#1=2 1#2=1 ";
    EXPECT_EQ(walked, expected);
    // Only a file whose root is whole (the trailer may be missing) reads as complete.
    LMemoryStream stream(file.data(), cut);
    LSDFReader reader;
    if (!reader.Open(stream, kSDFFileTypeEffectChain)) continue;
    LSDFReaderChunkIterator it(reader);
    while (it.StartNextChunk()) {
    }
    EXPECT_EQ(reader.IsOK(), cut >= file.size() - kSDFTrailerSize);
  }
}

TEST(SDFReader, ASeekBackIntoTheTailOfALargeReadFindsTheFileNotTheOldBuffer) {
  const Bytes file = WriteFile(kSDFFileTypeEffectChain, [](LSDFWriter& writer) {
    Bytes blob(3 * kSDFReadBufferSize);
    for (std::size_t i = 0; i < blob.size(); ++i) blob[i] = static_cast<unsigned char>(i * 7 + i / 251);
    writer.WriteBlob(kBlob, blob.data(), blob.size());
  });
  LMemoryStream stream(file.data(), file.size());
  LSDFReader reader;
  ASSERT_TRUE(reader.Open(stream, kSDFFileTypeEffectChain));
  LSDFReaderChunkIterator it(reader);
  ASSERT_TRUE(it.StartNextChunk());
  LArray<unsigned char> whole;
  ASSERT_TRUE(it.Chunk().ReadData(whole));
  for (unsigned long long back : {1ULL, 100ULL, kSDFReadBufferSize - 13ULL}) {
    const unsigned long long at = it.Info().dataOffset + whole.size() - back;
    ASSERT_TRUE(reader.SeekTo(at));
    Bytes tail(back);
    ASSERT_EQ(reader.Read(tail.data(), back), back);
    EXPECT_EQ(tail, Bytes(file.begin() + static_cast<long>(at), file.begin() + static_cast<long>(at + back))) << back;
  }
}
