#include "audio/audio_recorder.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>

#include "audio/audio_null_backend.h"
#include "audio_fixture.h"
#include "base/disk_space.h"

namespace {

constexpr int kChannels = 2;

// A paced input that delivers the ramp.
LAudioNullBackend::Options RampInput() {
  return LAudioNullBackend::Options{false, 0, 0, [](float* out, long frames, long long at) {
                                      for (long f = 0; f < frames; ++f)
                                        for (int c = 0; c < kChannels; ++c) out[f * kChannels + c] = RampValue(at + f, c);
                                    }};
}

LAudioStreamSpec Shape() {
  LAudioStreamSpec shape;
  shape.sampleRate = 48000;
  shape.channels = kChannels;
  shape.bufferFrames = 500;
  return shape;
}

// The recorder ends by itself (limit, loss, full disk); waits for it without timing anything.
void AwaitEnd(const LAudioRecorder& recorder) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
  while (recorder.IsRecording() && std::chrono::steady_clock::now() < deadline)
    std::this_thread::sleep_for(std::chrono::milliseconds(2));
  ASSERT_FALSE(recorder.IsRecording());
}

}  // namespace

TEST_F(AudioTest, RecordingLandsInTheCacheThroughTheCutListAndGrowsInWholeBlocks) {
  LAudioNullBackend backend(RampInput());
  LCutListAudio list;
  {
    LAudioRecorder recorder(backend);
    ASSERT_EQ(recorder.Start(Shape(), &list, 12345), LAudioStatus::kOK);
    auto* stream = backend.LastStream();
    ASSERT_TRUE(stream->Pump(5000));
    while (recorder.Frames() < 5000) std::this_thread::sleep_for(std::chrono::milliseconds(1));
    const LCutListAudio growing = recorder.Snapshot();
    EXPECT_EQ(growing.GetLength(), 4864) << "committed up to the last whole overview block";
    ASSERT_TRUE(stream->Pump(10000));
    AwaitEnd(recorder);
    EXPECT_TRUE(recorder.Message().empty()) << recorder.Message();
    recorder.Stop();
  }
  ASSERT_EQ(list.GetLength(), 12345);
  EXPECT_EQ(list.GetSampleRate(), 48000u);
  EXPECT_EQ(ReadAll(list.OpenSource(), 0, 12345), ReadAll(MakeRamp(12345, kChannels), 0, 12345));
}

TEST_F(AudioTest, AFullDiskOrALostDeviceStopsTheRecordingAndKeepsWhatCame) {
  LAudioNullBackend backend(RampInput());
  for (const bool diskFull : {true, false}) {
    SCOPED_TRACE(diskFull ? "disk full" : "device lost");
    std::atomic<bool> full{false};
    LDiskFreeBytesOverride([&](const char*) { return full.load() ? 1000LL : 1LL << 40; });
    LCutListAudio list;
    LAudioRecorder recorder(backend);
    ASSERT_EQ(recorder.Start(Shape(), &list), LAudioStatus::kOK);
    auto* stream = backend.LastStream();
    ASSERT_TRUE(stream->Pump(24000));
    while (recorder.Frames() < 24000) std::this_thread::sleep_for(std::chrono::milliseconds(1));
    if (diskFull) {
      full = true;
      ASSERT_TRUE(stream->Pump(24000));
    } else {
      stream->Vanish();
    }
    AwaitEnd(recorder);
    const std::string message = recorder.Message();
    EXPECT_NE(message.find(diskFull ? "Datenträger ist voll" : "nicht mehr verfügbar"), std::string::npos) << message;
    EXPECT_NE(message.find("bleiben erhalten"), std::string::npos) << message;
    recorder.Stop();
    const long long kept = list.GetLength();
    EXPECT_GE(kept, 24000);
    EXPECT_EQ(kept, recorder.Frames());
    EXPECT_EQ(ReadAll(list.OpenSource(), 0, kept), ReadAll(MakeRamp(kept, kChannels), 0, kept));
  }
}
