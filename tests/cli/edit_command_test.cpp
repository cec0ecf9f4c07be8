#include <gtest/gtest.h>

#include <csignal>
#include <dirent.h>
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <thread>

#include "base/memory_stream.h"
#include "effects/echo.h"
#include "effects/effect_chain_file.h"
#include "effects/gain.h"
#include "effects/sound_process_unknown.h"
#include "run_command.h"
#include "support/temp_folder.h"
#include "wave_bytes.h"

namespace {

class EditCommand : public ::testing::Test {
protected:
  void SetUp() override {
    in_ = tmp_.File("in.wav");
    WriteFileBytes(in_, WaveBytes16(Staircase16(8000), 1, 8000));
    env_ = {"SONVALE_CACHE_DIR=" + tmp_.File("cache"), "XDG_CONFIG_HOME=" + tmp_.File("config"),
            "XDG_DATA_HOME=" + tmp_.File("data"), "TMPDIR=" + tmp_.Path()};
  }
  CommandResult Edit(const std::vector<std::string>& args, const std::string& input = "") {
    return RunSonvale(args, env_, input);
  }
  std::vector<std::int16_t> Saved(const std::string& name) { return WaveSamples16(ReadFileBytes(tmp_.File(name))); }
  int CacheItems() {
    int n = 0;
    if (DIR* d = opendir(tmp_.File("cache").c_str())) {
      while (dirent* e = readdir(d)) n += std::string(e->d_name).find(".aud") != std::string::npos &&
                                          std::string(e->d_name).find(".audinfo") == std::string::npos;
      closedir(d);
    }
    return n;
  }

  TempFolder tmp_;
  std::string in_;
  std::vector<std::string> env_;
};

}  // namespace

TEST_F(EditCommand, AShellSessionOnStandardInputRunsTheSameCommands) {
  std::string script = "open " + in_ + "\nselect 10f 20f\ndelete\nsave " + tmp_.File("shell.wav") + "\nstatus\nquit\n";
  CommandResult r = Edit({"shell"}, script);
  ASSERT_EQ(r.status, 0) << r.err;
  std::vector<std::int16_t> m = Staircase16(8000);
  m.erase(m.begin() + 10, m.begin() + 20);
  EXPECT_EQ(Saved("shell.wav"), m);
  EXPECT_NE(r.out.find("7990 Frames"), std::string::npos) << r.out;
}

TEST_F(EditCommand, BadInputStopsWithAGermanMessageAndTouchesNoFile) {
  std::string target = tmp_.File("target.wav");
  WriteFileBytes(target, "previous");
  const std::string original = ReadFileBytes(in_);
  WriteFileBytes(tmp_.File("damaged.wav"), original.substr(0, 20));
  struct Case {
    std::vector<std::string> args;
    const char* message;
  } cases[] = {
      {{"edit", tmp_.File("missing.wav"), "-o", target}, "kann nicht geöffnet werden"},
      {{"edit", tmp_.File("damaged.wav"), "-o", target}, "beschädigt"},
      {{"edit", in_, "-e", "frobnicate", "-o", target}, "Unbekannter Befehl"},
      {{"edit", in_, "-e", "select 1f", "-o", target}, "Aufruf: select ANFANG ENDE | select all"},
      {{"edit", in_, "-e", "amplify laut", "-o", target}, "Aufruf: amplify DB"},
      {{"edit", in_, "-e", "save --to", "-o", target}, "Aufruf: save [PFAD] [--to FORMAT]"},
      {{"edit", in_, "-e", "undo", "-o", target}, "nichts rückgängig"},
      {{"edit", in_, "-e", "select 1:2:3:4:5 2", "-o", target}, "Ungültige Zeitangabe"},
      {{"edit", in_, "-e", "select 0 5", "-o", target}, "hinter dem Ende"},
      {{"edit", in_, "-e", "band 2000 1000", "-o", target}, "unter der unteren"},
      {{"edit", in_, "-e", "delete; reverse", "-o", target}, "zuerst einen Bereich"},
      {{"edit", in_, "-e", "effect echo Zunahme=150", "-o", target}, "zwischen 1 und 99 %"},
      {{"edit", in_, "-e", "normalize -23 Volt", "-o", target}, "Aufruf: normalize"},
      {{"edit", in_, "-o", tmp_.File("no/such/folder/x.wav")}, "kann nicht geschrieben werden"},
      {{"edit", in_, "-e", "save " + target + " --to mp5"}, "Unbekanntes Format"},
  };
  for (const Case& c : cases) {
    CommandResult r = Edit(c.args);
    EXPECT_EQ(r.status, 2) << c.message;
    EXPECT_NE(r.err.find(c.message), std::string::npos) << c.message << ": " << r.err;
    EXPECT_EQ(ReadFileBytes(target), "previous");
    EXPECT_EQ(ReadFileBytes(in_), original);
  }
}

TEST_F(EditCommand, InterruptingALongEffectLeavesTheTargetUntouched) {
  std::string target = tmp_.File("long.wav");
  WriteFileBytes(target, "previous");
  const std::string script = "new 44100 2; generate noise 20:00; effect echo; save " + target;
  pid_t pid = fork();
  if (pid == 0) {
    for (const auto& e : env_) putenv(const_cast<char*>(e.c_str()));
    int null = open("/dev/null", O_WRONLY);
    dup2(null, 1);
    dup2(null, 2);
    execl(SONVALE_BINARY, "sonvale", "edit", "-e", script.c_str(), static_cast<char*>(nullptr));
    _exit(127);
  }
  std::this_thread::sleep_for(std::chrono::milliseconds(700));
  kill(pid, SIGINT);
  int status = 0;
  waitpid(pid, &status, 0);
  ASSERT_TRUE(WIFEXITED(status));
  EXPECT_EQ(WEXITSTATUS(status), 1);
  EXPECT_EQ(ReadFileBytes(target), "previous");
  EXPECT_EQ(CacheItems(), 0);
}

TEST_F(EditCommand, ABatchRunsEveryFileIndependentlyAndSumsUp) {
  const std::string out = tmp_.File("out");
  ASSERT_EQ(RunTool("mkdir '" + out + "'"), 0);
  WriteFileBytes(tmp_.File("b.wav"), WaveBytes16(Staircase16(100), 1, 8000));
  CommandResult r = Edit({"batch", "-j", "2", "-e", "select 0f 10f; delete", "--out", out, in_, tmp_.File("b.wav"),
                          tmp_.File("missing.wav")});
  EXPECT_EQ(r.status, 2);
  EXPECT_NE(r.out.find("2 erfolgreich, 1 fehlgeschlagen"), std::string::npos) << r.out;
  EXPECT_EQ(WaveSamples16(ReadFileBytes(out + "/b.wav")).size(), 90u);
  EXPECT_EQ(WaveSamples16(ReadFileBytes(out + "/in.wav")).size(), 7990u);
  // Shard 2 of 2 takes only the second file.
  ASSERT_EQ(RunTool("rm -f '" + out + "'/*"), 0);
  r = Edit({"batch", "--shard", "2/2", "-e", "reverse", "--to", "flac", "--out", out, in_, tmp_.File("b.wav")});
  EXPECT_EQ(r.status, 0) << r.err;
  EXPECT_EQ(ReadFileBytes(out + "/in.flac"), "");
  EXPECT_NE(ReadFileBytes(out + "/b.flac"), "");
  // Inputs of one name from two folders get two outputs, the same on every shard.
  ASSERT_EQ(RunTool("rm -f '" + out + "'/* && mkdir '" + tmp_.File("d1") + "' '" + tmp_.File("d2") + "'"), 0);
  WriteFileBytes(tmp_.File("d1/take.wav"), WaveBytes16(Staircase16(100), 1, 8000));
  WriteFileBytes(tmp_.File("d2/take.wav"), WaveBytes16(Staircase16(50), 1, 8000));
  r = Edit({"batch", "--shard", "2/2", "-e", "reverse", "--out", out, tmp_.File("d1/take.wav"), tmp_.File("d2/take.wav")});
  EXPECT_EQ(r.status, 0) << r.err;
  EXPECT_NE(r.out.find("als take_2.wav gespeichert"), std::string::npos) << r.out;
  EXPECT_EQ(WaveSamples16(ReadFileBytes(out + "/take_2.wav")).size(), 50u);
  EXPECT_EQ(ReadFileBytes(out + "/take.wav"), "");
  r = Edit({"batch", "-e", "reverse", "--out", out, tmp_.File("d1/take.wav"), tmp_.File("d2/take.wav")});
  EXPECT_NE(r.out.find("2 erfolgreich"), std::string::npos) << r.out;
  EXPECT_EQ(WaveSamples16(ReadFileBytes(out + "/take.wav")).size(), 100u);
  EXPECT_EQ(WaveSamples16(ReadFileBytes(out + "/take_2.wav")).size(), 50u);
}

TEST_F(EditCommand, ChangesThatAreNotSavedAreNotDiscardedWithoutAWord) {
  EXPECT_EQ(Edit({"edit", in_, "-e", "status"}).err, "");
  CommandResult r = Edit({"edit", in_, "-e", "reverse"});
  EXPECT_EQ(r.status, 0);
  EXPECT_NE(r.err.find("Warnung: Die Änderungen an \"in.wav\" wurden nicht gespeichert"), std::string::npos) << r.err;
  r = Edit({"shell"}, "open " + in_ + "\nreverse\nquit\n");
  EXPECT_NE(r.err.find("nicht gespeichert"), std::string::npos) << r.err;
}

TEST_F(EditCommand, ALoadedChainNamesTheEffectsItCannotRunAndIsSavedAgainAsItWas) {
  LSoundProcessMulti chain;
  auto echo = std::make_unique<LSPEcho>();
  echo->SetGain(40);
  echo->SetTime(10);
  chain.Append(std::move(echo));
  auto newer = std::make_unique<LSPUnknown>(99);
  newer->listChunks.push_back(LSDFUnknownChunk{0x2001, kSDFChunkTypeInt, {7, 0, 0, 0}, 1});
  chain.Append(std::move(newer));
  chain.Append(std::make_unique<LSPUnknown>(32766));
  auto off = std::make_unique<LSPGain>(-6.0);
  off->bDisabled = true;
  chain.Append(std::move(off));
  LMemoryStream bytes;
  ASSERT_TRUE(LEffectChainSave(chain, bytes));
  const std::string original(bytes.Bytes().begin(), bytes.Bytes().end());
  WriteFileBytes(tmp_.File("in.ecf"), original);

  CommandResult r = Edit({"edit", in_, "-e", "chain " + tmp_.File("in.ecf") + "; chain save " + tmp_.File("again.ecf")});
  ASSERT_EQ(r.status, 0) << r.err;
  EXPECT_NE(r.err.find("Warnung: "), std::string::npos) << r.err;
  EXPECT_NE(r.err.find("Typ 99, Audio-Unit-Plug-in (Typ 32766)"), std::string::npos) << r.err;
  EXPECT_EQ(ReadFileBytes(tmp_.File("again.ecf")), original);
}

TEST_F(EditCommand, ASaveKeepsTheFilesFormatAndSaysWhatTheChosenFormatCannotKeep) {
  // 24 bits, float and FLAC come back as they were, not as 16-bit PCM.
  const std::string deep = tmp_.File("tief.wav"), loud = tmp_.File("laut.wav"), flac = tmp_.File("tief.flac");
  ASSERT_EQ(Edit({"convert", in_, deep, "--to", "pcm24"}).status, 0);
  ASSERT_EQ(Edit({"edit", in_, "-e", "amplify 20", "-o", loud, "--to", "float"}).status, 0);
  ASSERT_EQ(Edit({"convert", deep, flac}).status, 0);
  const std::pair<std::string, const char*> kept[] = {
      {deep, "WAVE, PCM 24 Bit"}, {loud, "WAVE, Gleitkomma 32 Bit"}, {flac, "24 Bit"}};
  for (const auto& [file, format] : kept) {
    CommandResult r = Edit({"edit", file, "-e", "select 0 0.1; amplify -1", "-o", file});
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_NE(Edit({"info", file}).out.find(format), std::string::npos) << file;
  }
  // Peaks above full scale say so when saved to integers; tags MP3 has no frame for are named.
  CommandResult r = Edit({"edit", loud, "-o", tmp_.File("ganz.wav"), "--to", "pcm16"});
  ASSERT_EQ(r.status, 0) << r.err;
  EXPECT_NE(r.err.find("Vollaussteuerung"), std::string::npos) << r.err;
  r = Edit({"edit", in_, "-e", "tag COMPOSER=Bach; tag TRACK=4/10; tag TITLE=Fuge", "-e", "save " + tmp_.File("t.mp3")});
  if (r.status == 0) {
    EXPECT_NE(r.err.find("COMPOSER=Bach"), std::string::npos) << r.err;
    EXPECT_NE(r.err.find("TRACK=4/10"), std::string::npos) << r.err;
    EXPECT_EQ(r.err.find("TITLE"), std::string::npos) << r.err;
  }
}
