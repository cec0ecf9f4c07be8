#pragma once
// What the audio tests share: a cache of their own in a temporary folder,
// checked at the end for items still counted, and signals built in code.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "audio/audio_null_backend.h"
#include "engine/cut_list_audio.h"
#include "engine/sound_source.h"
#include "support/temp_folder.h"

class AudioTest : public ::testing::Test {
protected:
  void SetUp() override;
  void TearDown() override;

  TempFolder temp_;
};

// Sample (frame f, channel c) = (f + 1) / 2^20 + c / 4: never 0, exact in float,
// and every misplaced frame names itself.
[[nodiscard]] float RampValue(long long frame, int channel);

// Serves the ramp for frames [0, frames), silence outside.
class RampSource final : public LSoundSourceBase {
public:
  RampSource(long long frames, int channels, std::uint32_t rate);
  void Read(float* buffer, long long frames) override;
  long long GetPositionSample() const override { return position_; }
  long long GetEndSample() const override { return end_; }
  void Seek(long long frame) override { position_ = frame; }

private:
  long long end_;
  long long position_ = 0;
};

[[nodiscard]] LSoundSource MakeRamp(long long frames, int channels, std::uint32_t rate = 48000);
// Reads frames [from, from + frames) of source in one go.
[[nodiscard]] std::vector<float> ReadAll(LSoundSource source, long long from, long long frames);
// A cut list of the ramp cut into segments of two cache items: the first item's
// frames [0, split) and the second's, each written through the cut-list sink.
[[nodiscard]] LCutListAudio RampCutList(long long frames, long long split, int channels, std::uint32_t rate);

// A paced null input that delivers the ramp.
[[nodiscard]] LAudioNullBackend::Options RampInput(int channels);
// In a child (tests/support/reporting_child.h): records frames of the ramp into
// the cache at folder, reports the frames written (a long long) and waits to be killed.
[[noreturn]] void RecordUntilKilled(const std::string& folder, int reportFd, long long frames, int channels);
