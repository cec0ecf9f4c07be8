// A document's file: construction, the path, and outside changes.
#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>

#include <cstring>

#include "app/app_settings.h"
#include "app/file.h"
#include "base/user_settings.h"
#include "document_fixture.h"

namespace {

using FileTest = DocumentTest;

void TouchAt(const std::string& path, long seconds) {
  struct timespec times[2] = {{seconds, 0}, {seconds, 0}};
  ASSERT_EQ(::utimensat(AT_FDCWD, path.c_str(), times, 0), 0);
}

TEST_F(FileTest, ANewDocumentStartsModifiedWithAFreeRing) {
  SVFile file("/Musik/Take.wav", StaircaseList(100, 2));
  EXPECT_TRUE(file.IsModified());
  EXPECT_TRUE(file.IsChanged());
  EXPECT_STREQ(file.FileName(), "Take.wav");
  EXPECT_EQ(file.UndoIndexCurrent(), 0u);
  EXPECT_EQ(file.UndoIndexOldest(), 0u);
  EXPECT_EQ(file.UndoIndexLastSave(), kSVUndoIndexUnknown);
  for (unsigned long i = 0; i < kSVUndoRingSize; ++i) EXPECT_FALSE(file.UndoEntry(i).IsUsed());
  EXPECT_EQ(file.TimeModifiedRecorded(), 0) << "the file does not exist";

  const std::string longPath(600, 'x');
  file.PathSet(longPath.c_str());
  EXPECT_EQ(std::strlen(file.Path()), kSVFilePathMax - 1);
}

TEST_F(FileTest, EachOutsideChangeIsReportedOnceUnlessTheSettingSwitchesItOff) {
  const std::string path = WriteStaircaseWave("take.wav", 10, 1);
  TouchAt(path, 1000000);
  SVFile file(path.c_str(), StaircaseList(10, 1));
  EXPECT_EQ(file.TimeModifiedRecorded(), 1000000);
  EXPECT_FALSE(file.TestForFileModifications());

  TouchAt(path, 2000000);
  EXPECT_TRUE(file.TestForFileModifications());
  EXPECT_FALSE(file.TestForFileModifications()) << "reported once";
  TouchAt(path, 3000000);
  EXPECT_TRUE(file.TestForFileModifications());

  // A save records the new time.
  EXPECT_TRUE(file.FileTimeModifiedUpdate());
  EXPECT_EQ(file.TimeModifiedRecorded(), 3000000);
  TouchAt(path, 1000000);
  EXPECT_TRUE(file.TestForFileModifications());
  EXPECT_FALSE(file.TestForFileModifications());

  // The setting switches the detection off.
  ASSERT_TRUE(LUserSettings::Instance().Set(kLSettingsDomain, kSVSettingsSection, kSVSettingFileModAlert, "0"));
  SVFile unwatched(path.c_str(), StaircaseList(10, 1));
  EXPECT_EQ(unwatched.TimeModifiedRecorded(), 0);
  EXPECT_FALSE(unwatched.FileTimeModifiedUpdate());
  TouchAt(path, 2000000);
  EXPECT_FALSE(unwatched.TestForFileModifications());
}

}  // namespace
