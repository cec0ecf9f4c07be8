// Walking the chunks of AIFF files.
#include "formats/aiff_chunk_walker.h"

#include <gtest/gtest.h>

#include "base/memory_stream.h"
#include "formats/aiff_format.h"

TEST(AiffChunkWalker, StepsOverOddBodiesWithTheirPadByteAndStopsWhereNoWholeHeaderIsLeft) {
  LArray<unsigned char> file;
  for (char c : std::string("FORM\0\0\0\0AIFC", 12)) file.push_back(static_cast<unsigned char>(c));
  LAiffPutBE32(file, kLAiffIdName);
  LAiffPutBE32(file, 3);
  for (unsigned char c : {'a', 'b', 'c', '\0'}) file.push_back(c);  // odd body and its pad byte
  LAiffPutBE32(file, kLAiffIdSsnd);
  LAiffPutBE32(file, 1000);  // claims more than the file holds
  LAiffPutBE32(file, 0);
  file.push_back('S');  // not a whole header

  LMemoryStream stream(file.data(), file.size());
  LAiffChunkWalker walker(stream);
  bool aifc = false;
  ASSERT_TRUE(walker.Start(&aifc));
  EXPECT_TRUE(aifc);
  LAiffChunk chunk;
  ASSERT_TRUE(walker.Next(&chunk));
  EXPECT_EQ(chunk.id, kLAiffIdName);
  EXPECT_EQ(chunk.size, 3u);
  ASSERT_TRUE(walker.Next(&chunk));
  EXPECT_EQ(chunk.id, kLAiffIdSsnd);
  EXPECT_EQ(chunk.offset, 24);
  EXPECT_EQ(stream.Tell(), chunk.BodyOffset()) << "the stream stands at the body";
  EXPECT_FALSE(walker.Next(&chunk));

  file[8] = 'W';  // FORM/WIFC is no AIFF
  LMemoryStream other(file.data(), file.size());
  LAiffChunkWalker refused(other);
  EXPECT_FALSE(refused.Start());
}
