#include "audio_fixture.h"

#include <unistd.h>

#include <chrono>
#include <thread>

#include "audio/audio_recorder.h"
#include "base/disk_space.h"
#include "engine/sound_cache.h"

void AudioTest::SetUp() {
  ASSERT_FALSE(temp_.Path().empty());
  LSoundCache::Instance().FolderSet(temp_.File("cache").c_str());
}

void AudioTest::TearDown() {
  EXPECT_EQ(LSoundCache::Instance().CountedItemCount(), 0) << "an item is still counted";
  LDiskFreeBytesOverride(nullptr);
  LSoundCache::Instance().FolderSet("");
}

float RampValue(long long frame, int channel) {
  return static_cast<float>(frame + 1) / 1048576.0f + 0.25f * static_cast<float>(channel);
}

RampSource::RampSource(long long frames, int channels, std::uint32_t rate)
    : LSoundSourceBase(rate, static_cast<std::uint8_t>(channels)), end_(frames) {}

void RampSource::Read(float* buffer, long long frames) {
  const int channels = GetChannels();
  for (long long i = 0; i < frames; ++i, ++position_)
    for (int c = 0; c < channels; ++c)
      buffer[i * channels + c] = position_ >= 0 && position_ < end_ ? RampValue(position_, c) : 0.0f;
}

LSoundSource MakeRamp(long long frames, int channels, std::uint32_t rate) {
  return LMakeSource<RampSource>(frames, channels, rate);
}

std::vector<float> ReadAll(LSoundSource source, long long from, long long frames) {
  std::vector<float> out(static_cast<std::size_t>(frames * source.GetChannels()));
  source.Seek(from);
  source.Read(out.data(), frames);
  return out;
}

LCutListAudio RampCutList(long long frames, long long split, int channels, std::uint32_t rate) {
  const std::vector<float> ramp = ReadAll(MakeRamp(frames, channels, rate), 0, frames);
  LCutListAudio head, tail;
  {
    LSoundSink sink = head.OpenSink(static_cast<int>(rate), static_cast<unsigned char>(channels), nullptr);
    sink.Write(ramp.data(), split);
    LSoundSink other = tail.OpenSink(static_cast<int>(rate), static_cast<unsigned char>(channels), nullptr);
    other.Write(ramp.data() + split * channels, frames - split);
  }
  head.EfInsert(split, tail);
  return head;
}

LAudioNullBackend::Options RampInput(int channels) {
  return LAudioNullBackend::Options{false, 0, 0, [channels](float* out, long frames, long long at) {
                                      for (long f = 0; f < frames; ++f)
                                        for (int c = 0; c < channels; ++c) out[f * channels + c] = RampValue(at + f, c);
                                    }};
}

void RecordUntilKilled(const std::string& folder, int reportFd, long long frames, int channels) {
  LSoundCache::Instance().FolderSet("");
  LSoundCache::Instance().FolderSet(folder.c_str());
  LAudioNullBackend backend(RampInput(channels));
  LCutListAudio list;
  LAudioRecorder recorder(backend);
  LAudioStreamSpec shape;
  shape.channels = channels;
  shape.bufferFrames = 500;
  if (recorder.Start(shape, &list) != LAudioStatus::kOK) _exit(1);
  (void)backend.LastStream()->Pump(frames);
  while (recorder.Frames() < frames) std::this_thread::sleep_for(std::chrono::milliseconds(1));
  const long long written = recorder.Frames();
  if (write(reportFd, &written, sizeof written) != sizeof written) _exit(1);
  for (;;) std::this_thread::sleep_for(std::chrono::seconds(1));
}
