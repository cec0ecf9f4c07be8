#include "effects/sound_process_base.h"

#include <gtest/gtest.h>

#include <new>

#include "effect_test_sources.h"
#include "effects/echo.h"
#include "effects/gain.h"

namespace {

class PassSource final : public LSoundProcessBase {
public:
  using LSoundProcessBase::LSoundProcessBase;
  void Read(float* buffer, long long frames) override { ReadInput(buffer, frames); }
};

class FailingSource final : public LSoundProcessBase {
public:
  explicit FailingSource(const LSoundSource& input) : LSoundProcessBase(input) { throw std::bad_alloc(); }
  void Read(float*, long long) override {}
};

}  // namespace

TEST(SoundProcessBase, AnInputAtRateZeroYieldsA44100HzSourceWithErrorCode3) {
  LSoundSource input = LMakeSource<TestBufferSource>(std::vector<float>(100, 0.5f), 0, 1);
  LSPEcho echo;
  LSoundSource echoed = echo.OpenSource(input);
  EXPECT_EQ(echoed.GetSampleRate(), 44100u);
  EXPECT_EQ(echoed.GetErrorCode(), kLSourceDamaged);
  LSPGain gain(6.0);
  LSoundSource gained = gain.OpenSource(input);
  EXPECT_EQ(gained.GetSampleRate(), 44100u);
  EXPECT_EQ(gained.GetErrorCode(), kLSourceDamaged);
  EXPECT_EQ(gained.GetChannels(), 1);
}

TEST(SoundProcessBase, AnInputWithoutChannelsBecomesMonoSilenceWithErrorCode3) {
  LSoundSource input = LMakeSource<TestBufferSource>(std::vector<float>{}, 8000, 0);
  LSoundSource s = LMakeSource<PassSource>(input);
  EXPECT_EQ(s.GetChannels(), 1);
  EXPECT_EQ(s.GetSampleRate(), 8000u);
  EXPECT_EQ(s.GetErrorCode(), kLSourceDamaged);
  std::vector<float> out(10, 7.0f);
  s.Read(out.data(), 10);
  EXPECT_EQ(out, std::vector<float>(10, 0.0f));
}

TEST(SoundProcessBase, AnInputInErrorGivesErrorCode2) {
  LSoundSource input = LMakeSource<TestBufferSource>(std::vector<float>(4), 22050, 2, kLSourceCannotOpen);
  LSoundSource s = LMakeSource<PassSource>(input);
  EXPECT_EQ(s.GetErrorCode(), kLSourceBadInput);
  EXPECT_EQ(s.GetSampleRate(), 22050u);
  EXPECT_EQ(s.GetChannels(), 2);
  // An error source as input (rate 11025, error code 1) keeps its format.
  LSoundSource closed = LSoundSource::Error(kLSourceClosed);
  EXPECT_EQ(LMakeSource<PassSource>(closed).GetErrorCode(), kLSourceBadInput);
  // An empty handle reads as silence rather than leaving the buffer untouched.
  LSoundSource empty;
  LSoundSource overEmpty = LMakeSource<PassSource>(empty);
  float sample = 3.0f;
  overEmpty.Read(&sample, 1);
  EXPECT_EQ(sample, 0.0f);
}

TEST(SoundProcessBase, EverythingButReadGoesToTheInputWhichItHoldsAlive) {
  LSoundSource input = MakeBufferSource(Staircase(50, 1), 8000, 1);
  {
    LSoundSource s = LMakeSource<PassSource>(input);
    EXPECT_EQ(input.RefCount(), 2);
    EXPECT_EQ(s.GetEndSample(), 50);
    s.Seek(-3);
    EXPECT_EQ(input.GetPositionSample(), -3);
    std::vector<float> out(5);
    s.Read(out.data(), 5);
    EXPECT_EQ(out, (std::vector<float>{0, 0, 0, 0, 1}));
    EXPECT_EQ(s.GetPositionSample(), 2);
    EXPECT_FALSE(s.IsStreaming());
    EXPECT_EQ(s.ControlMessage(17, nullptr), 0);
    EXPECT_EQ(s.AdjustRelativeOffset(123, 4), 123);
  }
  EXPECT_EQ(input.RefCount(), 1);
}

TEST(SoundProcessBase, ASourceWhoseConstructionFailsReleasesItsInput) {
  LSoundSource input = MakeBufferSource(Staircase(10, 1), 8000, 1);
  EXPECT_THROW((void)LMakeSource<FailingSource>(input), std::bad_alloc);
  EXPECT_EQ(input.RefCount(), 1);
}
