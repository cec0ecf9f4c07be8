// Loudness: the meter agrees with ffmpeg's ebur128 filter on signals made here,
// "normalize -23 LUFS" brings a document there as ffmpeg measures it, and the
// "loudness" command reports the selection's figures.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <numbers>
#include <regex>

#include "app/command_dispatcher.h"
#include "edit_fixture.h"
#include "effects/loudness_meter.h"
#include "support/vector_source.h"

namespace {

using LoudnessTest = EditTest;

constexpr int kRate = 44100;

// Stereo: 4 s of 1 kHz at -20 dBFS, then 300 Hz and 3 kHz at -8 dBFS for 11 s,
// fading out over the last 5, right a little softer, so range and true peak
// have something to show.
std::vector<float> Program() {
  std::vector<float> s;
  for (long long i = 0; i < 20LL * kRate; ++i) {
    const double t = static_cast<double>(i) / kRate;
    const double v = i < 4LL * kRate ? 0.1 * std::sin(2 * std::numbers::pi * 1000 * t)
                                     : std::min(1.0, (20 - t) / 5) * (0.2 * std::sin(2 * std::numbers::pi * 300 * t) +
                                                                      0.2 * std::sin(2 * std::numbers::pi * 3000 * t + 0.3));
    s.push_back(static_cast<float>(v));
    s.push_back(static_cast<float>(0.7 * v));
  }
  return s;
}

struct Measured {
  double integrated = NAN, range = NAN, truePeak = NAN;
};

// ffmpeg's ebur128 summary of interleaved stereo floats.
Measured FfmpegLoudness(const std::vector<float>& samples, const std::string& path) {
  Measured m;
  FILE* raw = std::fopen(path.c_str(), "wb");
  if (!raw) return m;
  std::fwrite(samples.data(), sizeof(float), samples.size(), raw);
  std::fclose(raw);
  FILE* pipe = popen(("ffmpeg -nostdin -hide_banner -nostats -f f32le -ar 44100 -ac 2 -i '" + path +
                      "' -af ebur128=peak=true -f null - 2>&1")
                         .c_str(),
                     "r");
  if (!pipe) return m;
  std::string text;
  char buffer[4096];
  for (std::size_t n; (n = std::fread(buffer, 1, sizeof buffer, pipe)) > 0;) text.append(buffer, n);
  pclose(pipe);
  const std::string summary = text.substr(std::min(text.size(), text.rfind("Summary:")));
  std::smatch match;
  if (std::regex_search(summary, match, std::regex(R"(I:\s+(-?[0-9.]+) LUFS)"))) m.integrated = std::stod(match[1]);
  if (std::regex_search(summary, match, std::regex(R"(LRA:\s+(-?[0-9.]+) LU)"))) m.range = std::stod(match[1]);
  if (std::regex_search(summary, match, std::regex(R"(Peak:\s+(-?[0-9.]+) dBFS)"))) m.truePeak = std::stod(match[1]);
  return m;
}

TEST_F(LoudnessTest, TheMeterAndLoudnessNormalisingAgreeWithFfmpeg) {
  const std::vector<float> program = Program();
  const Measured reference = FfmpegLoudness(program, temp_.File("program.raw"));
  if (std::isnan(reference.integrated)) GTEST_SKIP() << "ffmpeg with ebur128 is not available";
  LSoundSource source = LMakeSource<VectorSource>(program, 2, kRate);
  LProcessInterfaceQuiet process;
  LLoudness loudness;
  ASSERT_EQ(LLoudnessMeasure(process, source, loudness), kLProcessSuccess);
  EXPECT_NEAR(loudness.integratedLufs, reference.integrated, 0.1);
  EXPECT_NEAR(loudness.rangeLu, reference.range, 0.1);
  EXPECT_NEAR(loudness.truePeakDb, reference.truePeak, 0.1);

  SVFileGUI* window = NewDocument(DocListOf(program, 2));
  SVCommandDispatcher commands(Dialog());
  ASSERT_EQ(commands.Run(kSVCmdNormalize, SVCommandArgs{{}, {-23}, {"LUFS"}, {}}).result, kLProcessSuccess);
  const Measured after = FfmpegLoudness(DocReadAll(window->File()->CutList()), temp_.File("after.raw"));
  EXPECT_NEAR(after.integrated, -23.0, 0.1);
  // A target that lifts the peaks over full scale says so.
  const SVCommandResult loud = commands.Run(kSVCmdNormalize, SVCommandArgs{{}, {-2}, {"LUFS"}, {}});
  EXPECT_NE(loud.warning.find("übersteuern"), std::string::npos) << loud.message << loud.warning;
  ASSERT_EQ(commands.Run(kSVCmdUndo).result, kLProcessSuccess);
  const SVCommandResult report = commands.Run(kSVCmdLoudness);
  EXPECT_NE(report.message.find("-23.0 LUFS"), std::string::npos) << report.message;
  // Out of the loudness scale, and units that are neither dB nor LUFS, are refused.
  EXPECT_EQ(commands.Run(kSVCmdNormalize, SVCommandArgs{{}, {-80}, {"LUFS"}, {}}).result, kLProcessFailed);
  EXPECT_EQ(commands.Run(kSVCmdNormalize, SVCommandArgs{{}, {-3}, {"Volt"}, {}}).result, kLProcessFailed);

  // Silence has no loudness, and is left alone.
  LSoundSource silence = LMakeSource<VectorSource>(std::vector<float>(2 * kRate, 0.0f), 2, kRate);
  ASSERT_EQ(LLoudnessMeasure(process, silence, loudness), kLProcessSuccess);
  EXPECT_EQ(loudness.integratedLufs, kLLoudnessSilent);
}

}  // namespace
