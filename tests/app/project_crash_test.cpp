// A project save that runs out of room or whose process is killed part way:
// the project file on disk stays the old one, byte for byte, and still loads.
#include <gtest/gtest.h>

#include <filesystem>
#include <unistd.h>

#include "base/platform_file.h"
#include "project_fixture.h"
#include "support/file_size_limit.h"
#include "support/reporting_child.h"

namespace {

// Reports the Kth cancellation check to the parent through a pipe, then waits
// there to be killed.
class StallingProcess final : public LProcessInterface {
public:
  StallingProcess(long stallAt, int reportFd) : stallAt_(stallAt), reportFd_(reportFd) {}
  bool IsCancelled() override {
    if (++checks_ == stallAt_) {
      const char byte = 1;
      if (write(reportFd_, &byte, 1) != 1) _exit(3);
      for (;;) pause();
    }
    return false;
  }
  void SetStatus(const char*, int) override {}
  void SetProgress(double) override {}
  void SetError(const char*) override {}

private:
  long checks_ = 0;
  long stallAt_;
  int reportFd_;
};

class ProjectCrashTest : public ProjectTest {
protected:
  // Two documents long enough that their audio goes out in many blocks.
  void Build() {
    SVFile& a = AddDocument(StaircaseList(40000, 2), "/music/a.wav");
    a.AddBookmark("Anfang", 10);
    AddDocument(StaircaseList(9000, 1, 22050), "/music/b.wav");
  }

  // An older save of one small document, the file every failed save must leave.
  std::vector<unsigned char> WriteOldProject(const std::string& target) {
    SVWindowManager& windows = Windows();
    AddDocument(StaircaseList(300, 1), "/music/alt.wav");
    EXPECT_EQ(SVProjectSave(windows, target.c_str(), false), kLProcessSuccess);
    windows.FileWindowClose(windows.FileWindowAt(0, 0));
    return FileBytes(target);
  }

  void ExpectOldProjectThere(const std::string& target, const std::vector<unsigned char>& old) {
    ASSERT_EQ(FileBytes(target), old);
    SVWindowManager other(frontEnd_);
    EXPECT_EQ(LoadFromMemory(other, FileBytes(target)), kLProcessSuccess);
  }

  // Counts the checks of a whole save, the points where a kill can land.
  long ChecksOfASave(const std::string& path) {
    LProcessInterfaceQuiet process;
    LSVSaveProject request(Windows(), path.c_str());
    EXPECT_EQ(SVProjectSaveSafe(process, request, false), kLProcessSuccess);
    return process.Checks();
  }
};

TEST_F(ProjectCrashTest, ASaveThatRunsOutOfRoomAnywhereLeavesTheOldProject) {
  const std::string target = temp_.File("song.svp");
  const std::vector<unsigned char> old = WriteOldProject(target);
  Build();
  const std::string scratch = temp_.File("probe.svp");
  ChecksOfASave(scratch);
  const long long size = static_cast<long long>(FileBytes(scratch).size());
  ASSERT_GT(size, 100000);
  std::filesystem::remove(scratch);

  // Limits in steps no larger than an audio block, so that every write of the
  // save is the failing one for some limit.
  for (long long limit = 0; limit < size; limit += 3001) {
    SCOPED_TRACE(limit);
    const int status = RunWithFileSizeLimit(limit, [&] {
      LProcessInterfaceQuiet process;
      LSVSaveProject request(Windows(), target.c_str());
      const LProcessResult result = SVProjectSaveSafe(process, request, false);
      return result == kLProcessFailed && !process.Error().empty() ? 0 : 1;
    });
    ASSERT_EQ(status, 0) << "the save did not fail with a reason";
    ExpectOldProjectThere(target, old);
  }
  // No temporary file stays beside the target.
  int files = 0;
  for (const auto& entry : std::filesystem::directory_iterator(temp_.Path())) {
    files += entry.path().extension() == ".svp" || entry.path().filename().string().rfind(".song", 0) == 0;
  }
  EXPECT_EQ(files, 1);
}

TEST_F(ProjectCrashTest, ASaveKilledPartWayLeavesTheOldProject) {
  const std::string target = temp_.File("song.svp");
  const std::vector<unsigned char> old = WriteOldProject(target);
  Build();
  const long checks = ChecksOfASave(temp_.File("probe.svp"));
  ASSERT_GT(checks, 10);
  for (long stallAt : {1L, 2L, checks / 3, checks / 2, checks - 1}) {
    SCOPED_TRACE(stallAt);
    ReportingChild child([&](int reportFd) {
      StallingProcess process(stallAt, reportFd);
      LSVSaveProject request(Windows(), target.c_str());
      (void)SVProjectSaveSafe(process, request, false);
      return 2;  // the save ended before the stall point
    });
    ASSERT_TRUE(child.Started());
    char byte = 0;
    const bool stalled = child.Read(&byte, 1);
    (void)child.Kill();
    ASSERT_TRUE(stalled) << "the save ended before the stall point";
    ExpectOldProjectThere(target, old);
  }
}

}  // namespace
