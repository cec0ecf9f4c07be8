#include "effects/sound_process_base.h"

#include <gtest/gtest.h>

#include <algorithm>
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

TEST(SoundProcessBase, BadInputsGiveAnErrorCodeAFormatThatCanBePlayedAndSilence) {
  struct Case {
    const char* what;
    LSoundSource input;
    unsigned char error;
    unsigned rate;
    int channels;
  };
  Case cases[] = {
      {"rate zero", LMakeSource<VectorSource>(std::vector<float>(100), 1, 0), kLSourceDamaged, 44100, 1},
      {"no channels", LMakeSource<VectorSource>(std::vector<float>{}, 0, 8000), kLSourceDamaged, 8000, 1},
      {"in error", LMakeSource<VectorSource>(std::vector<float>(4), 2, 22050, kLSourceCannotOpen),
       kLSourceBadInput, 22050, 2},
      {"closed", LSoundSource::Error(kLSourceClosed), kLSourceBadInput, 11025, 1},
      {"empty handle", LSoundSource(), kLSourceOK, 0, 0},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    LSoundSource s = LMakeSource<PassSource>(c.input);
    if (!c.input.IsEmpty()) {  // an empty handle need only read as silence
      EXPECT_EQ(s.GetErrorCode(), c.error);
      EXPECT_EQ(s.GetSampleRate(), c.rate);
      EXPECT_EQ(s.GetChannels(), c.channels);
    }
    std::vector<float> out(10, 7.0f);
    s.Read(out.data(), 10 / std::max(1, static_cast<int>(s.GetChannels())));
    EXPECT_EQ(out, std::vector<float>(10, 0.0f));
  }
  // Effects built on the base answer the same.
  LSPEcho echo;
  LSPGain gain(6.0);
  LSoundSource echoed = echo.OpenSource(cases[0].input);
  LSoundSource gained = gain.OpenSource(cases[0].input);
  for (const LSoundSource* s : {&echoed, &gained}) {
    EXPECT_EQ(s->GetSampleRate(), 44100u);
    EXPECT_EQ(s->GetErrorCode(), kLSourceDamaged);
    EXPECT_EQ(s->GetChannels(), 1);
  }
}

TEST(SoundProcessBase, EverythingButReadGoesToTheInputWhichItHoldsAliveAndReleasesOnFailure) {
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
  EXPECT_THROW((void)LMakeSource<FailingSource>(input), std::bad_alloc);
  EXPECT_EQ(input.RefCount(), 1);
}
