#include "engine/cut_list_grf.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include "cut_list_fixture.h"
#include "engine/sound_cache_overview.h"

namespace {

// Block b of item tag t peaks at (b + 1) * t / 100 on channel 0 and at minus half that on channel 1.
std::vector<float> Blocks(int tag, long long frames) {
  std::vector<float> s;
  for (long long f = 0; f < frames; ++f) {
    const float peak = static_cast<float>(f / 256 + 1) * static_cast<float>(tag) / 100.0f;
    const bool top = f % 256 == 17;
    s.push_back(top ? peak : peak / 4);
    s.push_back(top ? -peak / 2 : 0.0f);
  }
  return s;
}

using Records = std::vector<std::pair<std::uint16_t, std::uint16_t>>;

// The records of one block of an item, as its ".grf" holds them.
Records ItemRecords(const std::vector<unsigned char>& grf, long long block) {
  Records records;
  for (int c = 0; c < 2; ++c) {
    const std::size_t at = static_cast<std::size_t>((block * 2 + c) * 4);
    records.emplace_back(grf[at] | grf[at + 1] << 8, grf[at + 2] | grf[at + 3] << 8);
  }
  return records;
}

Records FrameRecords(const LCutListGrfFrame& frame) {
  Records records;
  for (int c = 0; c < frame.Channels(); ++c) records.emplace_back(frame[c].positive, frame[c].negative);
  return records;
}

Records Merged(const Records& a, const Records& b) {
  Records m;
  for (std::size_t c = 0; c < a.size(); ++c)
    m.emplace_back(std::max(a[c].first, b[c].first), std::max(a[c].second, b[c].second));
  return m;
}

}  // namespace

TEST_F(CutListTest, TheOverviewOf1000FramesIsFourFramesOfTheItemsRecords) {
  LSoundCacheItemHandle a = AddItem(LMakeSource<VectorSource>(Blocks(1, 1000), 2));
  const std::vector<unsigned char> grf = FileBytes(CachePath(a.Number(), kLSoundCacheExtOverview));
  LCutListAudio list = ListOver(a, 1000);
  LArray<LCutListGrfFrame> out;
  EXPECT_EQ(list.GrfBufferGet(out, 0, 1000), 4);
  ASSERT_EQ(out.size(), 4u);
  for (long long b = 0; b < 4; ++b) EXPECT_EQ(FrameRecords(out[static_cast<std::size_t>(b)]), ItemRecords(grf, b)) << b;
  EXPECT_EQ(out[0][0].positive, LSoundCachePeakCode(0.01f));

  // From inside a segment the records follow the item's own grid.
  EXPECT_EQ(list.GrfBufferGet(out, 100, 512), 2);
  ASSERT_EQ(out.size(), 2u);
  EXPECT_EQ(FrameRecords(out[0]), ItemRecords(grf, 0));
  EXPECT_EQ(FrameRecords(out[1]), ItemRecords(grf, 1));
  EXPECT_EQ(list.GrfBufferGet(out, 0, 0), 0);
  EXPECT_TRUE(out.empty());
}

TEST_F(CutListTest, TheOverviewMergesAcrossSegmentBoundariesAndStopsAtSilence) {
  LSoundCacheItemHandle quiet = AddItem(LMakeSource<VectorSource>(Blocks(1, 1000), 2));
  LSoundCacheItemHandle loud = AddItem(LMakeSource<VectorSource>(Blocks(7, 1000), 2));
  const std::vector<unsigned char> q = FileBytes(CachePath(quiet.Number(), kLSoundCacheExtOverview));
  const std::vector<unsigned char> l = FileBytes(CachePath(loud.Number(), kLSoundCacheExtOverview));
  LCutListAudio list = ListOver(quiet, 300);
  list.SegmentAppend(LCutListSegment(loud, 700, 0.25f, 0));  // gains do not touch the overview
  LArray<LCutListGrfFrame> out;
  ASSERT_EQ(list.GrfBufferGet(out, 0, 1000), 4);
  EXPECT_EQ(FrameRecords(out[0]), ItemRecords(q, 0));
  EXPECT_EQ(FrameRecords(out[1]), Merged(ItemRecords(q, 1), ItemRecords(l, 0)));
  EXPECT_EQ(FrameRecords(out[2]), ItemRecords(l, 0));
  EXPECT_EQ(FrameRecords(out[3]), ItemRecords(l, 1));

  LCutListAudio gap = ListOver(quiet, 600);
  gap.SegmentAppend(LCutListSegment::Silence(1000));
  gap.SegmentAppend(LCutListSegment(loud, 1000, 1.0f, 0));
  for (auto& frame : out) frame.ChannelsSet(0);
  EXPECT_EQ(gap.GrfBufferGet(out, 0, 2000), 3);
  EXPECT_EQ(out.size(), 8u);
  EXPECT_EQ(FrameRecords(out[2]), ItemRecords(q, 2));
  EXPECT_EQ(gap.GrfBufferGet(out, 700, 1000), 0);

  // An overview file that cannot be opened ends the fill; the frame begun before it counts.
  ASSERT_EQ(::unlink(CachePath(loud.Number(), kLSoundCacheExtOverview).c_str()), 0);
  EXPECT_EQ(list.GrfBufferGet(out, 0, 1000), 2);
  EXPECT_EQ(FrameRecords(out[1]), ItemRecords(q, 1));
}
