// A recording whose process is killed in the middle of writing: the WAVE file
// keeps the writer's provisional header and opens as a growing stream holding
// every frame written so far.
#include <gtest/gtest.h>

#include <unistd.h>

#include "base/platform_file.h"
#include "formats/wave_file.h"
#include "support/reporting_child.h"
#include "support/temp_folder.h"
#include "wave_fixtures.h"

namespace {

constexpr long long kBlockFrames = 700;
constexpr int kChannels = 2;
constexpr long long kBlocksBeforeKill = 6;
// The writer stops growing the file here, so 16-bit steps stay exact.
constexpr long long kMostFrames = 30000;

// 16-bit steps: frame f holds f in channel 0 and -f in channel 1.
float Step(long long frame, int channel) {
  return static_cast<float>(channel == 0 ? frame : -frame) / 32767.0f;
}

[[noreturn]] void RecordUntilKilled(const std::string& path, int reportFd) {
  LSoundSink sink = LWaveFile::OpenSinkPCM(path.c_str(), 8000, kChannels, 16, 0, false);
  std::vector<float> block(static_cast<std::size_t>(kBlockFrames * kChannels));
  for (;;) {
    if (sink.GetPosition() + kBlockFrames <= kMostFrames) {
      for (long long i = 0; i < kBlockFrames; ++i) {
        for (int c = 0; c < kChannels; ++c) block[static_cast<std::size_t>(i * kChannels + c)] = Step(sink.GetPosition() + i, c);
      }
      sink.Write(block.data(), kBlockFrames);
      const long long written = sink.HasError() ? -1 : sink.GetPosition();
      if (write(reportFd, &written, sizeof written) != sizeof written) _exit(1);
    }
    LSleepMs(2);
  }
}

}  // namespace

TEST(WaveCrash, AFileWhoseWriterWasKilledOpensAsAStreamOfTheFramesWrittenSoFar) {
  TempFolder folder;
  const std::string path = folder.File("aufnahme.wav");
  ReportingChild child([&](int reportFd) -> int { RecordUntilKilled(path, reportFd); });
  ASSERT_TRUE(child.Started());
  long long reported = 0;
  for (long long blocks = 0; blocks < kBlocksBeforeKill; ++blocks) {
    ASSERT_TRUE(child.Read(&reported, sizeof reported));
    ASSERT_GT(reported, 0) << "the writer failed";
  }
  ASSERT_TRUE(child.Kill());
  // Blocks the writer finished before it died.
  long long more = 0;
  while (child.Read(&more, sizeof more)) reported = more;

  const Bytes bytes = FileBytes(path);
  ASSERT_GE(bytes.size(), 44u);
  EXPECT_EQ(GetLE32(bytes, 40), 0xFFFFFFDBu) << "the header is still the provisional one";

  LSoundSource source = LWaveFile::OpenSource(path.c_str());
  ASSERT_FALSE(source.IsError());
  EXPECT_TRUE(source.IsStreaming());
  // A block written but not yet reported may be there too.
  const long long frames = source.GetEndSample();
  EXPECT_GE(frames, reported);
  EXPECT_LE(frames, reported + kBlockFrames);
  std::vector<float> samples = ReadFrames(source, frames, 234);
  for (long long f = 0; f < frames; ++f) {
    for (int c = 0; c < kChannels; ++c) {
      ASSERT_EQ(samples[static_cast<std::size_t>(f * kChannels + c)], Step(f, c)) << "frame " << f << " channel " << c;
    }
  }
}
