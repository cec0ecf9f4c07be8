#include "engine/sound_source.h"

#include <gtest/gtest.h>

#include <vector>

#include "engine/sound_sink.h"

namespace {

int gLiveRamps = 0;

// A staircase: frame f holds f in every channel; silence outside 0 .. end.
class RampSource final : public LSoundSourceBase {
public:
  RampSource(long long end, int channels) : LSoundSourceBase(48000, static_cast<std::uint8_t>(channels)), end_(end) {
    ++gLiveRamps;
  }
  ~RampSource() override { --gLiveRamps; }
  void Read(float* buffer, long long frames) override {
    for (long long i = 0; i < frames; ++i, ++pos_) {
      for (int c = 0; c < GetChannels(); ++c) {
        buffer[i * GetChannels() + c] = (pos_ >= 0 && pos_ < end_) ? static_cast<float>(pos_) : 0.0f;
      }
    }
  }
  long long GetPositionSample() const override { return pos_; }
  long long GetEndSample() const override { return end_; }
  void Seek(long long frame) override { pos_ = frame; }

private:
  long long end_;
  long long pos_ = 0;
};

}  // namespace

TEST(SoundSource, AssignmentSharesTheObjectAndSelfAssignmentKeepsItAlive) {
  {
    LSoundSource a = LMakeSource<RampSource>(100, 1);
    EXPECT_EQ(a.RefCount(), 1);
    LSoundSource b = a;
    EXPECT_EQ(a.RefCount(), 2);
    LSoundSource& self = a;  // self-assignment, past the compiler's warning
    a = self;
    EXPECT_EQ(a.RefCount(), 2);
    LSoundSource empty;
    b = empty;  // an empty handle changes nothing
    EXPECT_EQ(b.Get(), a.Get());
    b = LMakeSource<RampSource>(5, 1);
    EXPECT_EQ(gLiveRamps, 2);
    EXPECT_EQ(a.RefCount(), 1);
  }
  EXPECT_EQ(gLiveRamps, 0);
}

TEST(SoundSource, CloseLeavesASilentErrorSourceAndClosingTwiceReleasesTheFirst) {
  LSoundSource s = LMakeSource<RampSource>(100, 2);
  s.Close();
  EXPECT_EQ(gLiveRamps, 0);
  EXPECT_EQ(s.GetErrorCode(), kLSourceClosed);
  EXPECT_EQ(s.GetSampleRate(), 11025u);
  EXPECT_EQ(s.GetChannels(), 1);
  EXPECT_EQ(s.GetEndSample(), 0);
  LSoundSourceBase* first = s.Get();
  s.Close();
  EXPECT_NE(s.Get(), nullptr);
  EXPECT_EQ(s.RefCount(), 1);
  (void)first;
  float buffer[4] = {1, 2, 3, 4};
  s.Read(buffer, 3);
  EXPECT_EQ(buffer[0], 0.0f);
  EXPECT_EQ(buffer[2], 0.0f);
  EXPECT_EQ(buffer[3], 4.0f);
  s.Read(buffer, -1);  // writes nothing
  LSoundSource empty;
  empty.Close();
  EXPECT_TRUE(empty.IsEmpty());
}

TEST(SoundSource, ReadingFromANegativePositionYieldsSilenceFirst) {
  LSoundSource s = LMakeSource<RampSource>(100, 1);
  s.Seek(-10);
  std::vector<float> b(20, -1.0f);
  s.Read(b.data(), 20);
  for (int i = 0; i < 10; ++i) EXPECT_EQ(b[i], 0.0f);
  for (int i = 10; i < 20; ++i) EXPECT_EQ(b[i], static_cast<float>(i - 10));
  EXPECT_EQ(s.GetPositionSample(), 10);
  std::vector<float> untouched(4, 7.0f);
  s.Read(untouched.data(), 0);
  EXPECT_EQ(untouched[0], 7.0f);
  EXPECT_EQ(s.GetPositionSample(), 10);
}

TEST(SoundSink, ErrorSinkDiscardsWithoutAdvancingAndStubCounts) {
  LSoundSink sink = LMakeSink<LSoundSinkStubBase>(48000, 2);
  float frames[8] = {};
  sink.Write(frames, 4);
  EXPECT_EQ(sink.GetPosition(), 4);
  EXPECT_FALSE(sink.HasError());
  sink.Close();
  EXPECT_TRUE(sink.HasError());
  EXPECT_EQ(sink.GetSampleRate(), 44100u);
  EXPECT_EQ(sink.GetChannels(), 1);
  sink.Write(frames, 4);
  EXPECT_EQ(sink.GetPosition(), 0);
  LSoundSink copy = sink;
  EXPECT_EQ(sink.RefCount(), 2);
  LSoundSink& self = copy;
  copy = self;
  EXPECT_EQ(sink.RefCount(), 2);
}
