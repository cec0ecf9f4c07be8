#include <gtest/gtest.h>

#include <sys/stat.h>

#include "run_command.h"
#include "support/temp_folder.h"
#include "wave_bytes.h"

namespace {

// 16-bit stereo WAVE bytes of a staircase.
std::string RampWave(int frames) { return WaveBytes16(Staircase16(2 * frames), 2, 8000); }

class ConvertCommand : public ::testing::Test {
protected:
  void SetUp() override {
    in_ = tmp_.File("in.wav");
    WriteFileBytes(in_, RampWave(5001));
  }
  TempFolder tmp_;
  std::string in_;
};

}  // namespace

TEST_F(ConvertCommand, RawOutputAndInputRoundTrip) {
  std::string raw = tmp_.File("x.raw"), back = tmp_.File("back.wav");
  ASSERT_EQ(RunSonvale({"convert", in_, raw, "--raw", "8000,2,3"}).status, 0);
  EXPECT_EQ(ReadFileBytes(raw), ReadFileBytes(in_).substr(44));
  CommandResult r = RunSonvale({"convert", raw, back, "--raw-in", "8000,2,3", "--to", "pcm16"});
  ASSERT_EQ(r.status, 0) << r.err;
  EXPECT_EQ(ReadFileBytes(back), ReadFileBytes(in_));
}

TEST_F(ConvertCommand, BadInputGivesAGermanMessageAndLeavesTheTargetAsItWas) {
  std::string target = tmp_.File("target.wav");
  WriteFileBytes(target, "old contents");
  struct Case {
    std::vector<std::string> args;
    const char* expected;
  } cases[] = {
      {{"convert", tmp_.File("missing.wav"), target}, "kann nicht geöffnet werden"},
      {{"convert", in_, target, "--to", "mp5"}, "Unbekanntes Format"},
      {{"convert", in_, target, "--raw-in", "8000,x,1"}, "--raw-in erwartet"},
      {{"convert", in_}, "erwartet eine Eingabe- und eine Ausgabedatei"},
      {{"convert", in_, target, "--rate", "12"}, "--rate erwartet"},
      {{"convert", in_, tmp_.File("x.xyz")}, "an der Endung erkennen"},
      {{"frobnicate"}, "Unbekannter Befehl"},
  };
  for (const Case& c : cases) {
    CommandResult r = RunSonvale(c.args);
    EXPECT_EQ(r.status, 2) << c.expected;
    EXPECT_NE(r.err.find(c.expected), std::string::npos) << r.err;
    EXPECT_EQ(ReadFileBytes(target), "old contents");
  }
  WriteFileBytes(tmp_.File("damaged.wav"), RampWave(100).substr(0, 30));
  CommandResult damaged = RunSonvale({"convert", tmp_.File("damaged.wav"), target});
  EXPECT_EQ(damaged.status, 2);
  EXPECT_NE(damaged.err.find("beschädigt"), std::string::npos) << damaged.err;
  EXPECT_EQ(ReadFileBytes(target), "old contents");
}

TEST_F(ConvertCommand, AnUnwritableFolderFailsWithoutTouchingAnything) {
  if (geteuid() == 0) GTEST_SKIP() << "root writes into read-only folders";
  std::string folder = tmp_.File("ro");
  mkdir(folder.c_str(), 0555);
  CommandResult r = RunSonvale({"convert", in_, folder + "/x.wav"});
  EXPECT_EQ(r.status, 2);
  EXPECT_NE(r.err.find("kann nicht geschrieben werden"), std::string::npos);
}

TEST(InfoCommand, PrintsTheDurationAsHoursMinutesSecondsAndMilliseconds) {
  TempFolder tmp;
  std::string path = tmp.File("a.wav");
  WriteFileBytes(path, RampWave(12000));
  CommandResult r = RunSonvale({"info", path});
  ASSERT_EQ(r.status, 0) << r.err;
  EXPECT_NE(r.out.find("0:00:01.500"), std::string::npos) << r.out;
  EXPECT_NE(r.out.find("WAVE, PCM 16 Bit"), std::string::npos);
  r = RunSonvale({"info", "--loudness", path});
  EXPECT_NE(r.out.find("  Lautheit:     "), std::string::npos) << r.out;
  r = RunSonvale({"info", "--json", "--loudness", path});
  EXPECT_NE(r.out.find("\"loudness\": {\"integratedLufs\": "), std::string::npos) << r.out;
}

TEST_F(ConvertCommand, TheOutputKeepsTheInputsDepthAndATargetThatCannotHoldWhatIsAskedIsRefused) {
  const std::string deep = tmp_.File("tief.wav"), flac = tmp_.File("tief.flac"), back = tmp_.File("zurueck.aiff");
  ASSERT_EQ(RunSonvale({"convert", in_, deep, "--to", "pcm24"}).status, 0);
  ASSERT_EQ(RunSonvale({"convert", deep, flac}).status, 0);
  ASSERT_EQ(RunSonvale({"convert", flac, back}).status, 0);
  for (const std::string& file : {flac, back}) EXPECT_NE(RunSonvale({"info", file}).out.find("24 Bit"), std::string::npos);

  for (const std::vector<std::string>& refused :
       {std::vector<std::string>{in_, tmp_.File("a.mp3"), "--to", "pcm16"}, {in_, tmp_.File("a.raw")},
        {in_, tmp_.File("a.opus"), "--quality", "5"}, {in_, tmp_.File("a.flac"), "--quality", "128k"},
        {in_, tmp_.File("b.mp3"), "--quality", "12"}}) {
    std::vector<std::string> args = {"convert"};
    args.insert(args.end(), refused.begin(), refused.end());
    CommandResult r = RunSonvale(args);
    EXPECT_EQ(r.status, 2) << refused[1];
    EXPECT_FALSE(r.err.empty());
    struct stat st {};
    EXPECT_NE(::stat(refused[1].c_str(), &st), 0) << refused[1];
  }
  // A bit rate the encoder is given.
  const std::string mp3 = tmp_.File("q.mp3");
  CommandResult r = RunSonvale({"convert", in_, mp3, "--quality", "64k"});
  if (r.status == 0 && ToolAvailable("ffprobe")) {
    std::string rate;
    ASSERT_EQ(RunTool("ffprobe -v error -show_entries stream=bit_rate -of csv=p=0 '" + mp3 + "'", &rate), 0);
    EXPECT_EQ(std::stol(rate), 64000);
  }
}

TEST_F(ConvertCommand, WithoutFFmpegOrLameTheMissingCodecIsNamed) {
  const std::string flac = tmp_.File("x.flac"), mp3 = tmp_.File("x.mp3");
  if (RunSonvale({"convert", in_, flac}).status != 0) GTEST_SKIP() << "this machine has no FFmpeg";
  // The same file, on a machine without FFmpeg's libraries.
  CommandResult info = RunSonvale({"info", flac}, {"SONVALE_MISSING_LIBRARIES=libavcodec"});
  EXPECT_NE(info.status, 0);
  EXPECT_NE(info.err.find("benötigt den Codec \"FFmpeg\""), std::string::npos) << info.err;
  CommandResult encode = RunSonvale({"convert", in_, mp3}, {"SONVALE_MISSING_LIBRARIES=libmp3lame"});
  EXPECT_NE(encode.status, 0);
  EXPECT_NE(encode.err.find("Der Codec \"LAME (MP3)\""), std::string::npos) << encode.err;
  struct stat st;
  EXPECT_NE(stat(mp3.c_str(), &st), 0);
}
