#include "base/sdf_writer.h"

#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "base/memory_stream.h"
#include "base/sdf_reader.h"
#include "base/sdf_reader_chunk_iterator.h"
#include "support/faulty_stream.h"

namespace {

using Bytes = std::vector<unsigned char>;

unsigned long long U64At(const Bytes& b, std::size_t at) {
  unsigned long long v;
  std::memcpy(&v, b.data() + at, 8);
  return v;
}

// Ids of the chunks of one container, in file order.
std::vector<unsigned short> ChildIds(LSDFReader& reader, const LSDFChunkInfo& container) {
  std::vector<unsigned short> ids;
  LSDFReaderChunkIterator it(reader, container);
  while (it.StartNextChunk()) ids.push_back(it.Id());
  return ids;
}

LSDFUnknownChunk Unknown(unsigned short id, int index, Bytes data) {
  LSDFUnknownChunk chunk;
  chunk.id = id;
  chunk.type = kSDFChunkTypeBlob;
  chunk.index = index;
  chunk.data = std::move(data);
  return chunk;
}

}  // namespace

TEST(SDFWriter, EmptyEffectChainFileIsHeaderRootContainerAndTrailer) {
  LMemoryStream stream;
  LSDFWriter writer;
  ASSERT_TRUE(writer.Open(stream, kSDFFileTypeEffectChain, kSDFDataVersionEffectChain));
  EXPECT_TRUE(writer.IsOK());
  ASSERT_TRUE(writer.Close());
  EXPECT_FALSE(writer.IsOK());
  const Bytes expected = {
      'l', 's', 'd', 'f',      // magic
      1, 0,                    // format version
      11, 0, 0, 0,             // file type
      1, 0,                    // data version
      0, 0, 0, 0,              // root id and type
      0, 0, 0, 0, 0, 0, 0, 0,  // root length
      'l', 's', 'd', 'f',      // trailer
  };
  EXPECT_EQ(stream.Bytes(), expected);

  // An unopened writer does nothing and closes quietly.
  LSDFWriter unopened;
  EXPECT_FALSE(unopened.IsOK());
  EXPECT_FALSE(unopened.WriteInt(1, 1));
  EXPECT_FALSE(unopened.StartChunk(1, kSDFChunkTypeBlob));
  EXPECT_TRUE(unopened.Close());
}

TEST(SDFWriter, ValueChunksCarryTheirTypeWidthAndPatchedLengths) {
  LMemoryStream stream;
  LSDFWriter writer;
  ASSERT_TRUE(writer.Open(stream, kSDFFileTypeProject, kSDFDataVersionProject));
  EXPECT_TRUE(writer.StartContainer(5));
  EXPECT_TRUE(writer.WriteInt(6, -2));
  EXPECT_TRUE(writer.EndContainer(5));
  EXPECT_TRUE(writer.WriteBool(7, true));
  EXPECT_TRUE(writer.WriteInt64(8, 1LL << 40));
  EXPECT_TRUE(writer.WriteFloat(9, 0.5f));
  EXPECT_TRUE(writer.WriteString(10, "ab"));
  const unsigned char blob[3] = {1, 2, 3};
  EXPECT_TRUE(writer.WriteBlob(11, blob, 3));
  EXPECT_TRUE(writer.StartChunk(12, kSDFChunkTypeRecord));
  EXPECT_TRUE(writer.WriteData(blob, 2));
  EXPECT_TRUE(writer.WriteData(blob, 3));
  EXPECT_TRUE(writer.EndChunk(12));
  ASSERT_TRUE(writer.Close());
  const Bytes& b = stream.Bytes();

  // (id, type, length) of every chunk, in order, after the root header at 12.
  struct Expected { unsigned short id, type; unsigned long long length; };
  const Expected chunks[] = {{5, 0, 16}, {6, 2, 4}, {7, 1, 1}, {8, 3, 8}, {9, 4, 4},
                             {10, 6, 3}, {11, 7, 3}, {12, 9, 5}};
  unsigned long long contents = 0;
  std::size_t at = 24;
  for (const Expected& e : chunks) {
    SCOPED_TRACE(e.id);
    EXPECT_EQ(b[at] | b[at + 1] << 8, e.id);
    EXPECT_EQ(b[at + 2] | b[at + 3] << 8, e.type);
    EXPECT_EQ(U64At(b, at + 4), e.length);
    contents += 12 + (e.type == 0 ? 0 : e.length);
    at += 12 + (e.type == 0 ? 0 : e.length);  // step into the container
  }
  EXPECT_EQ(U64At(b, 16), contents);  // root length
  ASSERT_EQ(b.size(), 24 + contents + 4);
  EXPECT_EQ(std::memcmp(b.data() + b.size() - 4, "lsdf", 4), 0);
  EXPECT_EQ(b[36 + 12], 0xFE);                                                 // -2, low byte first
  EXPECT_EQ(std::memcmp(b.data() + 24 + 28 + 13 + 20 + 16 + 12, "ab", 3), 0);  // counts the zero
}

TEST(SDFWriter, CloseEndsChunksLeftOpen) {
  LMemoryStream stream;
  LSDFWriter writer;
  ASSERT_TRUE(writer.Open(stream, kSDFFileTypeEffectChain, 1));
  EXPECT_TRUE(writer.StartContainer(1));
  EXPECT_TRUE(writer.StartChunk(2, kSDFChunkTypeBlob));
  EXPECT_TRUE(writer.WriteData("abc", 3));
  ASSERT_TRUE(writer.Close());
  const Bytes& b = stream.Bytes();
  ASSERT_EQ(b.size(), 24u + 12 + 12 + 3 + 4);
  EXPECT_EQ(U64At(b, 16), 27u);
  EXPECT_EQ(U64At(b, 28), 15u);
  EXPECT_EQ(U64At(b, 40), 3u);
}

TEST(SDFWriter, PreservedChunksGoBackWhereTheyStoodAndEmptyOnesAreDropped) {
  // As read from a newer build: 100 stood first, 101 between the known chunks
  // at 1 and 3, 104 and 102 after them, 103 was empty.
  LList<LSDFUnknownChunk> preserved;
  preserved.push_back(Unknown(100, 0, {1}));
  preserved.push_back(Unknown(101, 2, {2, 2}));
  preserved.push_back(Unknown(104, 3, {4}));
  preserved.push_back(Unknown(103, 4, {}));
  preserved.push_back(Unknown(102, 5, {3}));
  LList<LSDFUnknownChunk> rootPreserved;
  rootPreserved.push_back(Unknown(200, 0, {9}));

  LMemoryStream stream;
  LSDFWriter writer;
  ASSERT_TRUE(writer.Open(stream, kSDFFileTypeEffectChain, 1, rootPreserved));
  EXPECT_TRUE(writer.StartContainer(50, preserved, 1));
  EXPECT_TRUE(writer.WriteInt(1, 10, 1));
  EXPECT_TRUE(writer.WriteBlob(7, nullptr, 0, 9));  // blobs never take a position
  EXPECT_TRUE(writer.WriteInt(3, 30, 3));
  EXPECT_TRUE(writer.EndContainer(50));
  ASSERT_TRUE(writer.Close());

  LMemoryStream in(stream.Bytes().data(), stream.Bytes().size());
  LSDFReader reader;
  ASSERT_TRUE(reader.Open(in, kSDFFileTypeEffectChain));
  EXPECT_EQ(ChildIds(reader, reader.RootInfo()), (std::vector<unsigned short>{200, 50}));
  LSDFReaderChunkIterator root(reader);
  ASSERT_TRUE(root.StartNextChunk());
  ASSERT_TRUE(root.StartNextChunk());
  EXPECT_EQ(ChildIds(reader, root.Info()), (std::vector<unsigned short>{100, 1, 7, 101, 3, 104, 102}));
}

TEST(SDFWriter, FailingStreamStopsTheWriterWhichThenAnswersFalseAndLeavesNoTrailer) {
  auto writeFile = [](LSDFWriter& writer, LByteStream& stream) {
    bool ok = writer.Open(stream, kSDFFileTypeCacheItemInfo, 1);
    ok = writer.WriteInt(16, 44100) && ok;
    ok = writer.StartContainer(80) && ok;
    ok = writer.WriteString(81, "name") && ok;
    ok = writer.EndContainer(80) && ok;
    ok = writer.WriteInt64(17, 2) && ok;
    return ok;
  };
  FaultCounts clean;
  {
    LMemoryStream whole;
    FaultyStream stream(whole, clean);
    LSDFWriter reference;
    ASSERT_TRUE(writeFile(reference, stream));
    ASSERT_TRUE(reference.Close());
  }
  for (const FaultPlan& plan : EveryFaultPlan(clean)) {
    SCOPED_TRACE(Describe(plan));
    LMemoryStream target;
    FaultCounts counts;
    FaultyStream stream(target, counts, plan);
    LSDFWriter writer;
    bool ok = writeFile(writer, stream);
    bool closed = writer.Close();
    if (ok) {
      EXPECT_FALSE(closed);  // only the end failed, and Close says so
    } else {
      EXPECT_TRUE(closed);  // deliberate: Close does not report earlier failures
      EXPECT_FALSE(writer.IsOK());
      const long long calls = counts.Calls();
      EXPECT_FALSE(writer.WriteInt(1, 1));
      EXPECT_FALSE(writer.StartContainer(2));
      EXPECT_FALSE(writer.WriteData("x", 1));
      EXPECT_FALSE(writer.EndChunk(2));
      EXPECT_EQ(counts.Calls(), calls);
    }
    const Bytes& b = target.Bytes();
    if (b.size() > kSDFFileHeaderSize) {
      EXPECT_NE(std::memcmp(b.data() + b.size() - 4, "lsdf", 4), 0);
    }
  }
}
