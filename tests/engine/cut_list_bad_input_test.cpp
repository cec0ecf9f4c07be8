// A persisted cut list whose segment count promises more records than the file
// holds: Restore reads what is there, answers false, and allocates nothing for
// the records that are missing.
#include <gtest/gtest.h>

#include <cstring>

#include "base/memory_stream.h"
#include "cut_list_fixture.h"

TEST_F(CutListTest, ASegmentCountBeyondTheFileRestoresTheRecordsThereAndAnswersFalse) {
  LSoundCacheItemHandle item = TaggedItem(1, 100);
  LCutListAudio list;
  list.SetFormat(44100, kChannels);
  for (int i = 0; i < 3; ++i) list.SegmentAppend(LCutListSegment(item, 20, 1.0f, i * 20));
  LMemoryStream saved;
  ASSERT_TRUE(list.Save(saved));

  for (std::int32_t count : {4, 257, 1000000, 0x7FFFFFFF}) {
    std::vector<unsigned char> bytes = saved.Bytes();
    std::memcpy(bytes.data() + 6, &count, 4);
    LMemoryStream stream(bytes.data(), bytes.size());
    LCutListAudio restored;
    EXPECT_FALSE(restored.Restore(stream)) << count;
    EXPECT_EQ(restored.SegmentCount(), 3) << count;
    EXPECT_EQ(ReadList(restored), Render(ModelOf(1, 0, 60), kChannels)) << count;
  }
  EXPECT_EQ(RefCount(item), 1 + 3);
}
