// Saves that run out of room at any write: the command must fail with a
// message and leave the previous file as it was, with no temporary file
// behind; a command that succeeds wrote the whole file. The effect chain's
// save is the chain writer's (checked for full disks in the effect tests)
// behind the same safe save, which this sweep and the project sweep check.
#include <gtest/gtest.h>

#include <fcntl.h>
#include <unistd.h>
#include <sys/wait.h>

#include <cstdint>
#include <cstdio>
#include <set>
#include <string>

#include "run_command.h"
#include "support/file_size_limit.h"
#include "support/temp_folder.h"
#include "wave_bytes.h"

namespace {

constexpr int kFrames = 20001;  // more than two blocks of the pump, and odd
constexpr std::uint32_t kRate = 8000;
const std::string kOldContent = "der alte Inhalt";

std::string MonoWave(int frames = kFrames) { return WaveBytes16(Staircase16(frames), 1, kRate); }

// Runs the command with every file it writes limited to limit bytes; answers
// its exit status and what it said on standard error (through a pipe, which
// the limit does not touch).
struct LimitedRun {
  int status = -1;
  std::string said;
};
LimitedRun RunLimited(const std::vector<std::string>& args, long long limit, const std::vector<std::string>& env = {}) {
  LimitedRun run;
  int pipeFds[2];
  if (pipe(pipeFds) != 0) return run;
  std::fflush(nullptr);
  const pid_t child = fork();
  if (child < 0) return run;
  if (child == 0) {
    const int quiet = open("/dev/null", O_WRONLY);
    dup2(quiet, STDOUT_FILENO);
    dup2(pipeFds[1], STDERR_FILENO);
    close(pipeFds[0]);
    close(pipeFds[1]);
    for (const std::string& e : env) putenv(const_cast<char*>(e.c_str()));
    if (!LimitFileSizeOfThisProcess(limit)) _exit(126);
    std::vector<char*> argv = {const_cast<char*>(SONVALE_BINARY)};
    for (const std::string& a : args) argv.push_back(const_cast<char*>(a.c_str()));
    argv.push_back(nullptr);
    execv(SONVALE_BINARY, argv.data());
    _exit(127);
  }
  close(pipeFds[1]);
  char buffer[512];
  ssize_t n = 0;
  while ((n = read(pipeFds[0], buffer, sizeof buffer)) > 0) run.said.append(buffer, static_cast<std::size_t>(n));
  close(pipeFds[0]);
  int status = 0;
  if (waitpid(child, &status, 0) == child && WIFEXITED(status)) run.status = WEXITSTATUS(status);
  return run;
}

// Hidden names included: the temporary files of a save start with a dot.
std::set<std::string> NamesIn(const std::string& folder) {
  const std::vector<std::string> names = FolderNames(folder);
  return {names.begin(), names.end()};
}

}  // namespace

TEST(ConvertFaults, AConversionThatRunsOutOfRoomFailsAndLeavesTheOldFileAsItWas) {
  TempFolder folder;
  const std::string in = folder.File("ein.wav");
  WriteFileBytes(in, MonoWave());
  // Layouts whose last writes come when the writer finishes: a pad byte, a header, the last block.
  for (const char* layout : {"pcm8", "ulaw", "ima", "pcm16"}) {
    const std::string reference = folder.File(std::string("ref-") + layout + ".wav");
    CommandResult made = RunSonvale({"convert", in, reference, "--to", layout});
    ASSERT_EQ(made.status, 0) << layout << ": " << made.err;
    const std::string clean = ReadFileBytes(reference);
    const auto size = static_cast<long long>(clean.size());
    ASSERT_GT(size, 1000);

    const std::string out = folder.File(std::string("ziel-") + layout + ".wav");
    const std::set<long long> limits = {0, 20, 43, 57, size / 3, size / 2, size - 70, size - 2, size - 1, size};
    for (long long limit : limits) {
      WriteFileBytes(out, kOldContent);
      const std::set<std::string> before = NamesIn(folder.Path());
      const LimitedRun run = RunLimited({"convert", in, out, "--to", layout}, limit);
      const int status = run.status;
      if (limit < size) {
        EXPECT_NE(status, 0) << layout << ": a conversion limited to " << limit << " of " << size << " bytes succeeded";
        EXPECT_FALSE(run.said.empty()) << layout << " at " << limit << ": the failure went unsaid";
        EXPECT_EQ(run.said.find(".sonvale-"), std::string::npos) << layout << " at " << limit << ": " << run.said;
        EXPECT_EQ(ReadFileBytes(out), kOldContent) << layout << " at " << limit << ": the old file was replaced";
      } else {
        EXPECT_EQ(status, 0) << layout;
        EXPECT_EQ(ReadFileBytes(out), clean) << layout;
      }
      EXPECT_EQ(NamesIn(folder.Path()), before) << layout << " at " << limit << ": a temporary file stayed";
    }
  }
}
