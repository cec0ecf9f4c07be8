// SVChunkOrder: known chunks written with its orders put the preserved ones
// back at the positions they were read from.
#include <gtest/gtest.h>

#include "app/project_chunk_order.h"
#include "base/memory_stream.h"
#include "base/sdf_writer.h"
#include "project_fixture.h"

namespace {

LSDFUnknownChunk Kept(unsigned short id, int index, bool empty = false) {
  LSDFUnknownChunk chunk;
  chunk.id = id;
  chunk.type = kSDFChunkTypeInt;
  chunk.index = index;
  if (!empty) chunk.data = {1, 0, 0, 0};
  return chunk;
}

// Writes the known ids into a container holding preserved; answers the ids as they stand.
std::vector<unsigned short> Written(const LList<LSDFUnknownChunk>& preserved, const std::vector<unsigned short>& known,
                                   const std::vector<int>& readAt = {}) {
  LMemoryStream stream;
  LSDFWriter writer;
  EXPECT_TRUE(writer.Open(stream, kSDFFileTypeProject, kSDFDataVersionProject));
  SVChunkOrder order(preserved);
  writer.StartContainer(1, preserved);
  for (std::size_t i = 0; i < known.size(); ++i)
    writer.WriteInt(known[i], 0, i < readAt.size() && readAt[i] >= 0 ? order.At(readAt[i]) : order.Next());
  writer.EndContainer(1);
  EXPECT_TRUE(writer.IsOK());
  writer.Close();
  const SdfFile file = SdfParse(stream.Bytes());
  EXPECT_TRUE(file.valid);
  return file.valid ? SdfIds(file.top.at(0).children) : std::vector<unsigned short>{};
}

TEST(ProjectChunkOrderTest, KeptChunksStandWhereTheyWereReadAmongTheKnownOnes) {
  // Read as: 900, K, (901 empty), 902, K, K, 903, K, 904.
  const LList<LSDFUnknownChunk> preserved{Kept(900, 0), Kept(901, 2, true), Kept(902, 3), Kept(903, 6),
                                          Kept(904, 8)};
  EXPECT_EQ(Written(preserved, {10, 11, 12, 13}),
            (std::vector<unsigned short>{900, 10, 902, 11, 12, 903, 13, 904}));
  // Fewer known chunks than were read: the rest go at the end, in their order.
  EXPECT_EQ(Written(preserved, {10}), (std::vector<unsigned short>{900, 10, 902, 903, 904}));
  // Nothing kept: the known chunks alone.
  EXPECT_EQ(Written({}, {10, 11}), (std::vector<unsigned short>{10, 11}));
}

TEST(ProjectChunkOrderTest, AChunkWhoseIndexAsReadIsKnownGoesBackThere) {
  // Read as: 900, B(1), 901, 902, B(4); a new chunk after them.
  const LList<LSDFUnknownChunk> preserved{Kept(900, 0), Kept(901, 2), Kept(902, 3)};
  EXPECT_EQ(Written(preserved, {20, 21, 22}, {1, 4, -1}),
            (std::vector<unsigned short>{900, 20, 901, 902, 21, 22}));
  // Written in another order than read: each still follows the kept chunks read before it.
  EXPECT_EQ(Written(preserved, {21, 20}, {4, 1}), (std::vector<unsigned short>{900, 901, 902, 21, 20}));
}

}  // namespace
