#include "base/platform_file.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "base/disk_space.h"
#include "base/file_stream.h"
#include "base/memory_stream.h"
#include "base/user_folders.h"
#include "support/temp_folder.h"

TEST(PlatformFile, ALockHeldElsewhereMakesAnOpenWaitThenGiveUpBeforeItTruncates) {
  TempFolder tmp;
  std::string path = tmp.File("locked");
  int holder = LFileOpen(path.c_str(), kLFileWrite | kLFileCreate, LFileLock::Exclusive);
  ASSERT_GE(holder, 0);
  EXPECT_TRUE(fcntl(holder, F_GETFD) & FD_CLOEXEC);
  // flock locks belong to the open file description, so a second open conflicts even in one process.
  int reader = LFileOpen(path.c_str(), kLFileRead, LFileLock::Shared, 200);
  EXPECT_EQ(reader, -1);
  EXPECT_EQ(errno, EWOULDBLOCK);
  EXPECT_EQ(LFileOpen(path.c_str(), kLFileRead | kLFileNonBlock, LFileLock::Shared), -1);
  ::close(holder);
  reader = LFileOpen(path.c_str(), kLFileRead, LFileLock::Shared, 200);
  EXPECT_GE(reader, 0);
  int second = LFileOpen(path.c_str(), kLFileRead, LFileLock::Shared, 0);
  EXPECT_GE(second, 0);  // shared locks coexist
  ::close(reader);
  ::close(second);

  // A truncating open waits for the lock before it truncates.
  {
    LFileStream s(LFileOpen(path.c_str(), kLFileWrite | kLFileTruncate));
    ASSERT_TRUE(s.WriteAll("hello", 5));
  }
  int shared = LFileOpen(path.c_str(), kLFileRead, LFileLock::Shared);
  EXPECT_EQ(LFileOpen(path.c_str(), kLFileWrite | kLFileTruncate, LFileLock::Exclusive, 50), -1);
  LFileDetails d;
  ASSERT_TRUE(LFileDetailsGet(path.c_str(), &d));
  EXPECT_EQ(d.size, 5u);
  ::close(shared);
}

TEST(PlatformFile, DeleteClearsWriteProtectionAndMissingFilesCountAsGone) {
  TempFolder tmp;
  std::string path = tmp.File("protected");
  ::close(LFileOpen(path.c_str(), kLFileWrite | kLFileCreate, LFileLock::None, 0, 0444));
  EXPECT_TRUE(LFileDelete(path.c_str()));
  EXPECT_FALSE(LFileExists(path.c_str()));
  EXPECT_TRUE(LFileDelete(path.c_str()));
}

TEST(PlatformFile, FreeSpaceIsMeasuredAndAMissingFolderHasNone) {
  TempFolder tmp;
  EXPECT_GT(LDiskFreeBytes(tmp.Path().c_str()), 0);
  EXPECT_EQ(LDiskFreeBytes("/no/such/folder/anywhere"), -1);
}

TEST(PlatformFile, UserFoldersFollowXdgAndCreateParents) {
  TempFolder tmp;
  std::string saved = getenv("XDG_DATA_HOME") ? getenv("XDG_DATA_HOME") : "";
  setenv("XDG_DATA_HOME", tmp.Path().c_str(), 1);
  EXPECT_EQ(LUserDataFolder(), tmp.Path() + "/sonvale");
  setenv("XDG_DATA_HOME", "relative/ignored", 1);
  EXPECT_NE(LUserDataFolder().rfind("relative", 0), 0u);
  if (saved.empty()) unsetenv("XDG_DATA_HOME"); else setenv("XDG_DATA_HOME", saved.c_str(), 1);
  EXPECT_TRUE(LFolderCreate(tmp.File("a/b/c")));
  struct stat st {};
  EXPECT_EQ(::stat(tmp.File("a/b/c").c_str(), &st), 0);
}

TEST(ByteStream, MemoryAndFileStreamsAgreeOnShortReadsGapsAndTruncation) {
  TempFolder tmp;
  LFileStream file(LFileOpen(tmp.File("s").c_str(), kLFileWrite | kLFileCreate));
  LMemoryStream memory;
  for (LByteStream* s : {static_cast<LByteStream*>(&file), static_cast<LByteStream*>(&memory)}) {
    ASSERT_TRUE(s->WriteAll("abc", 3));
    ASSERT_TRUE(s->Seek(6));
    ASSERT_TRUE(s->WriteAll("z", 1));
    EXPECT_EQ(s->Size(), 7);
    ASSERT_TRUE(s->Seek(1));
    char b[16] = {};
    EXPECT_EQ(s->Read(b, 16), 6);
    EXPECT_EQ(b[0], 'b');
    EXPECT_EQ(b[3], '\0');
    EXPECT_EQ(b[5], 'z');
    EXPECT_TRUE(s->Truncate(2));
    EXPECT_EQ(s->Size(), 2);
    EXPECT_FALSE(s->Seek(-1));
  }
  // Offsets beyond 4 GB reach the file itself, which stays sparse.
  const long long far = (5LL << 30) + 3;
  ASSERT_TRUE(file.Seek(far));
  ASSERT_TRUE(file.WriteAll("far", 3));
  EXPECT_EQ(file.Size(), far + 3);
  ASSERT_TRUE(file.Seek(far - 1));
  char back[5] = {};
  EXPECT_EQ(file.Read(back, 5), 4);
  EXPECT_EQ(std::string(back, 4), std::string("\0far", 4));
  const char fixed[] = "ro";
  LMemoryStream view(fixed, 2);
  EXPECT_EQ(view.Write("x", 1), -1);
  EXPECT_FALSE(view.Truncate(0));
}
