// The recent-files list and the filter of what it shows.
#include <gtest/gtest.h>

#include <string>

#include "app/recent_file_list.h"
#include "base/user_settings.h"
#include "document_fixture.h"

namespace {

using RecentFileListTest = DocumentTest;

std::vector<std::string> Stored(const LRecentFileList& list) {
  std::vector<std::string> out;
  for (const LStringLong& path : list.Entries()) out.push_back(path);
  return out;
}

TEST_F(RecentFileListTest, TheNewestComesFirstWithoutDuplicatesAndTenAtMost) {
  LRecentFileList& list = Dialog().RecentFiles();
  for (int i = 0; i < 12; ++i) list.RecentFileListAdd(("/a/" + std::to_string(i) + ".wav").c_str());
  std::vector<std::string> expected;
  for (int i = 11; i >= 2; --i) expected.push_back("/a/" + std::to_string(i) + ".wav");
  EXPECT_EQ(Stored(list), expected) << "the oldest fell off";
  EXPECT_EQ(LUserSettings::Instance().Get(kLRecentFileListDomain, "", "File9"), "/a/2.wav");

  list.RecentFileListAdd("/a/11.wav");
  EXPECT_EQ(Stored(list), expected) << "the newest again changes nothing";

  list.RecentFileListAdd("/a/5.wav");
  std::vector<std::string> moved = {"/a/5.wav", "/a/11.wav", "/a/10.wav", "/a/9.wav", "/a/8.wav",
                                    "/a/7.wav", "/a/6.wav",  "/a/4.wav",  "/a/3.wav", "/a/2.wav"};
  EXPECT_EQ(Stored(list), moved) << "a listed path moves to the top, the ones above it down";
}

TEST_F(RecentFileListTest, TheMenuShowsProjectsAndAudioButNoVideo) {
  LRecentFileList& list = Dialog().RecentFiles();
  // Extensions are judged ignoring case; a name without one, or a dot only in the folder, is neither.
  for (const char* path : {"/a/film.MP4", "/a/projekt.svp", "/a/ohne", "/a.b/ton.FLAC", "/a/lied.mp3", "/a/x.txt",
                           "/a.wav/ohne"})
    list.RecentFileListAdd(path);
  EXPECT_EQ(list.MenuList(), (LArray<LStringLong>{"/a/lied.mp3", "/a.b/ton.FLAC", "/a/projekt.svp"}));
}

}  // namespace
