// SDF input that has broken other chunked-format readers: length fields of 2^63
// and beyond, wherever they stand, read every way the loaders read.
#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "base/memory_stream.h"
#include "base/sdf_reader.h"
#include "base/sdf_reader_chunk.h"
#include "base/sdf_reader_chunk_iterator.h"
#include "base/sdf_writer.h"

namespace {

using Bytes = std::vector<unsigned char>;

constexpr unsigned short kValue = 5;
constexpr unsigned short kText = 6;
constexpr unsigned short kInner = 7;

// Root: a value, a string, a container holding a value; offsets of their length fields.
struct Sample {
  Bytes bytes;
  std::vector<std::size_t> lengthFields;
};

Sample MakeSample() {
  LMemoryStream stream;
  LSDFWriter writer;
  EXPECT_TRUE(writer.Open(stream, kSDFFileTypeEffectChain, 1));
  writer.WriteInt(kValue, 42);
  writer.WriteString(kText, "Länge");
  writer.StartContainer(kInner);
  writer.WriteInt64(kValue, 7);
  writer.EndContainer(kInner);
  EXPECT_TRUE(writer.Close());
  const std::size_t root = kSDFFileHeaderSize;
  const std::size_t value = root + kSDFChunkHeaderSize;
  const std::size_t text = value + kSDFChunkHeaderSize + 4;
  const std::size_t inner = text + kSDFChunkHeaderSize + std::strlen("Länge") + 1;
  const std::size_t innerValue = inner + kSDFChunkHeaderSize;
  Sample sample{stream.Bytes(), {}};
  for (std::size_t header : {root, value, text, inner, innerValue}) sample.lengthFields.push_back(header + 4);
  return sample;
}

// Reads every chunk in every way; answers how many chunks were met.
int ReadEveryWay(LSDFReader& reader, LSDFReaderChunkIterator& it, int depth = 0) {
  int chunks = 0;
  while (it.StartNextChunk()) {
    ++chunks;
    LArray<unsigned char> data;
    (void)it.Chunk().ReadData(data);
    EXPECT_LE(data.size(), reader.StreamSize());
    char text[kSDFStringBufferSize];
    (void)it.Chunk().ReadString(text);
    LStringLong whole;
    (void)it.Chunk().ReadString(whole);
    EXPECT_LE(whole.size(), reader.StreamSize());
    LList<LSDFUnknownChunk> kept;
    (void)it.Chunk().ReadUnknownChunk(kept);
    long long value = 0;
    (void)it.Chunk().ReadInt64(value);
    if (it.Type() == kSDFChunkTypeContainer && depth < 4) {
      LSDFReaderChunkIterator inner(reader, it.Info());
      chunks += ReadEveryWay(reader, inner, depth + 1);
    }
  }
  return chunks;
}

int ReadFile(const Bytes& bytes) {
  LMemoryStream stream(bytes.data(), bytes.size());
  LSDFReader reader;
  if (!reader.Open(stream, kSDFFileTypeEffectChain)) return -1;
  LSDFReaderChunkIterator it(reader);
  return ReadEveryWay(reader, it);
}

}  // namespace

TEST(SDFBadInput, ALengthOf2To63AnywhereNeitherAllocatesNorReadsPastTheFile) {
  const Sample sample = MakeSample();
  ASSERT_EQ(ReadFile(sample.bytes), 4);
  // A root that claims too much is cut to the file; a chunk that does ends the walk of its container.
  const int chunksLeft[] = {4, 0, 1, 2, 3};
  for (unsigned long long length : {1ULL << 63, (1ULL << 63) - 1, ~0ULL, ~0ULL - 11, 1ULL << 62, 1ULL << 40}) {
    for (std::size_t i = 0; i < sample.lengthFields.size(); ++i) {
      Bytes bad = sample.bytes;
      std::memcpy(bad.data() + sample.lengthFields[i], &length, 8);
      EXPECT_EQ(ReadFile(bad), chunksLeft[i]) << i << " " << length;
    }
  }
}

TEST(SDFBadInput, AForgedInfoWhoseLengthOverflowsIsNeitherWalkedNorRead) {
  const Sample sample = MakeSample();
  LMemoryStream stream(sample.bytes.data(), sample.bytes.size());
  LSDFReader reader;
  ASSERT_TRUE(reader.Open(stream, kSDFFileTypeEffectChain));
  // An info whose offset plus length wraps around.
  LSDFChunkInfo forged;
  forged.type = kSDFChunkTypeContainer;
  forged.dataOffset = sample.bytes.size() - 2;
  forged.length = ~0ULL;
  LSDFReaderChunkIterator walk(reader, forged);
  EXPECT_FALSE(walk.StartNextChunk());
  forged.dataOffset = ~0ULL - 4;
  LSDFReaderChunkIterator beyond(reader, forged);
  EXPECT_FALSE(beyond.StartNextChunk());

  forged.dataOffset = kSDFFileHeaderSize;
  forged.length = 1ULL << 63;
  LArray<unsigned char> data;
  EXPECT_FALSE(LSDFReaderChunk(reader, forged).ReadData(data));
  LList<LSDFUnknownChunk> list;
  EXPECT_FALSE(LSDFReaderChunk(reader, forged).ReadUnknownChunk(list));
  EXPECT_TRUE(list.empty());
}
