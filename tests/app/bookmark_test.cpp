// Bookmarks of a document: adding in order, deleting by name, and following
// insertions and deletions of the audio.
#include <gtest/gtest.h>

#include "app/bookmark.h"
#include "app/file.h"
#include "app/frame_time.h"
#include "document_fixture.h"

namespace {

std::vector<long long> Positions(const SVFile& file) {
  std::vector<long long> out;
  for (const LSVBookmark& b : file.Bookmarks()) out.push_back(b.position);
  return out;
}

std::vector<std::string> Names(const SVFile& file) {
  std::vector<std::string> out;
  for (const LSVBookmark& b : file.Bookmarks()) out.push_back(b.name);
  return out;
}

using BookmarkTest = DocumentTest;

TEST_F(BookmarkTest, ADeletionRemovesTheBookmarksInsideAndAnInsertionMovesThoseAtAndAfterItsStart) {
  SVFile file(StaircaseList(3000, 1));
  for (long long at : {999, 1000, 1999, 2000, 2500}) file.AddBookmark(std::to_string(at).c_str(), at);
  file.CutList().EfDelete(1000, 2000);
  file.OffsetBookmarks(1000, -1000);
  EXPECT_EQ(Names(file), (std::vector<std::string>{"999", "2000", "2500"}));
  EXPECT_EQ(Positions(file), (std::vector<long long>{999, 1000, 1500}));
  EXPECT_EQ(file.Bookmarks().back().positionMs, SVFramesToMs(1500, 44100));

  file.OffsetBookmarks(1000, 250);
  EXPECT_EQ(Positions(file), (std::vector<long long>{999, 1250, 1750}));
}

TEST_F(BookmarkTest, BookmarksStaySortedAndEqualPositionsKeepTheirOrder) {
  SVFile file("/Musik/Aufnahme 1.wav", StaircaseList(100, 1, 48000));
  file.ModifiedSet(false);
  file.ChangedSet(false);
  file.AddBookmark("zweiter", 2000);
  file.AddBookmark("erster", 1000);
  file.AddBookmark("zweiter gleich", 2000);
  file.AddBookmark("dritter", 72000);
  EXPECT_EQ(Names(file), (std::vector<std::string>{"erster", "zweiter", "zweiter gleich", "dritter"}));
  EXPECT_TRUE(file.IsModified());
  EXPECT_TRUE(file.IsChanged());

  const LSVBookmark& last = file.Bookmarks().back();
  EXPECT_EQ(last.identifier, 4);
  EXPECT_EQ(last.sampleRate, 48000);
  EXPECT_EQ(last.positionMs, 1500);
  EXPECT_STREQ(last.sourceFileName, "Aufnahme 1.wav");
  EXPECT_EQ(last.enabled, 1);
  EXPECT_EQ(last.sdfValue, kLSVBookmarkSdfValueNew);
  EXPECT_GT(last.creationTime, 0);

  EXPECT_TRUE(file.DeleteBookmark("zweiter"));
  EXPECT_FALSE(file.DeleteBookmark("fehlt"));
  EXPECT_EQ(Names(file), (std::vector<std::string>{"erster", "zweiter gleich", "dritter"}));
  file.AddBookmark("neu", 0);
  EXPECT_EQ(file.Bookmarks().front().identifier, 5) << "one more than the largest identifier";
}

TEST(FrameTime, MillisecondsAreComputedInTwoPartsWithoutOverflow) {
  EXPECT_EQ(SVFramesToMs(44099, 44100), 999);
  EXPECT_EQ(SVFramesToMs(44100, 44100), 1000);
  EXPECT_EQ(SVFramesToMs(100, 0), 0);
  EXPECT_EQ(SVFramesToMs(100, -5), 0);
  // 2^62 frames would overflow frames * 1000.
  EXPECT_EQ(SVFramesToMs(4611686018427387904LL, 48000), 4611686018427387904LL / 48000 * 1000 +
                                                            (4611686018427387904LL % 48000) * 1000 / 48000);
  EXPECT_EQ(SVMsToFrames(1500, 48000), 72000);
}

TEST(Region, ANewRateRecomputesTheFramesFromTheMilliseconds) {
  SVRegion region;
  region.RangeSet(44100, 88200, 44100);
  EXPECT_EQ(region.startMs, 1000);
  EXPECT_EQ(region.endMs, 2000);
  region.SampleRateSet(48000);
  EXPECT_EQ(region.start, 48000);
  EXPECT_EQ(region.end, 96000);
  region.LengthSet(24000);
  EXPECT_EQ(region.end, 72000);
  EXPECT_EQ(region.endMs, 1500);
}

}  // namespace
