// Lossless MP3 gain: the file's frames keep their count and sizes and decode
// (by ffmpeg) to the same samples scaled by whole 1.5 dB steps; the document
// follows its file; a cancelled or refused change leaves the file as it was,
// and a file of another kind is never changed.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "app/command_dispatcher.h"
#include "edit_fixture.h"

namespace {

using EfNormalizeLosslessTest = EditTest;

std::string Output(const std::string& command) {
  std::string text;
  FILE* pipe = popen((command + " 2>/dev/null").c_str(), "r");
  if (!pipe) return text;
  char buffer[4096];
  for (std::size_t n; (n = std::fread(buffer, 1, sizeof buffer, pipe)) > 0;) text.append(buffer, n);
  pclose(pipe);
  return text;
}

std::vector<float> Decoded(const std::string& path) {
  const std::string raw = Output("ffmpeg -nostdin -v error -i '" + path + "' -f f32le -");
  std::vector<float> samples(raw.size() / sizeof(float));
  std::memcpy(samples.data(), raw.data(), samples.size() * sizeof(float));
  return samples;
}

std::string Bytes(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream out;
  out << in.rdbuf();
  return out.str();
}

TEST_F(EfNormalizeLosslessTest, ThreeDecibelsAreTwoGainStepsOfTheSameFrames) {
  const std::string mp3 = temp_.File("ton.mp3");
  NewDocument(DocListOf(Tones({{440, 0.3}, {3000, 0.1}}, 3 * 44100, 44100), 1));
  SVCommandDispatcher commands(Dialog());
  ASSERT_EQ(commands.Run(kSVCmdSaveAs, SVCommandArgs{{}, {}, {mp3}, {}}).result, kLProcessSuccess);
  const std::vector<float> before = Decoded(mp3);
  if (before.empty()) GTEST_SKIP() << "ffmpeg is not available";
  const std::string packets = "ffprobe -v error -show_entries packet=size -of csv=p=0 '" + mp3 + "'";
  const std::string sizes = Output(packets);
  const std::string original = Bytes(mp3);

  // A cancelled rewrite, and one over unsaved edits, leave the file alone.
  frontEnd_.cancelAfterChecks = 0;
  EXPECT_EQ(commands.Run(kSVCmdMp3Gain, SVCommandArgs{{}, {3}, {}, {}}).result, kLProcessCancelled);
  frontEnd_.cancelAfterChecks = -1;
  ASSERT_EQ(commands.Run(kSVCmdAmplify, SVCommandArgs{{}, {1}, {}, {}}).result, kLProcessSuccess);
  EXPECT_EQ(commands.Run(kSVCmdMp3Gain, SVCommandArgs{{}, {3}, {}, {}}).result, kLProcessFailed);
  EXPECT_EQ(Bytes(mp3), original);
  // A file of another kind is never searched for frames.
  const std::string wave = WriteStaircaseWave("treppe.wav", 44100, 2), waveBytes = Bytes(wave);
  ASSERT_EQ(commands.Run(kSVCmdOpen, SVCommandArgs{{}, {}, {wave}, {}}).result, kLProcessSuccess);
  const SVCommandResult refused = commands.Run(kSVCmdMp3Gain, SVCommandArgs{{}, {3}, {}, {}});
  EXPECT_NE(refused.message.find("keine MP3-Frames"), std::string::npos) << refused.message;
  EXPECT_EQ(Bytes(wave), waveBytes);
  int files = 0;
  for (const auto& entry : std::filesystem::directory_iterator(temp_.Path())) files += entry.is_regular_file();
  EXPECT_EQ(files, 2) << "no temporary file is left";

  ASSERT_EQ(commands.Run(kSVCmdOpen, SVCommandArgs{{}, {}, {mp3}, {}}).result, kLProcessSuccess);
  const std::vector<float> document = DocReadAll(Dialog().Windows().CurrentFileWindow()->File()->CutList());
  const SVCommandResult changed = commands.Run(kSVCmdMp3Gain, SVCommandArgs{{}, {3}, {}, {}});
  ASSERT_EQ(changed.result, kLProcessSuccess) << changed.message;
  EXPECT_EQ(Output(packets), sizes);
  const std::vector<float> after = Decoded(mp3);
  ASSERT_EQ(after.size(), before.size());
  const double factor = std::sqrt(2.0);
  double worst = 0;
  for (std::size_t i = 0; i < after.size(); ++i) worst = std::max(worst, std::fabs(after[i] - before[i] * factor));
  EXPECT_LT(worst, 1e-5);
  // The document sounds as its file now does, and is clean.
  const SVFile& file = *Dialog().Windows().CurrentFileWindow()->File();
  EXPECT_FALSE(file.IsModified());
  const std::vector<float> followed = DocReadAll(file.CutList());
  ASSERT_EQ(followed.size(), document.size());
  for (std::size_t i = 0; i < followed.size(); i += 97) EXPECT_NEAR(followed[i], document[i] * factor, 1e-6);
}

}  // namespace
