#include "engine/source_to_sink.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

class CountingSource final : public LSoundSourceBase {
public:
  explicit CountingSource(long long end) : LSoundSourceBase(8000, 2), end_(end) {}
  void Read(float* buffer, long long frames) override {
    for (long long i = 0; i < frames; ++i, ++pos_) buffer[2 * i] = buffer[2 * i + 1] = static_cast<float>(pos_);
  }
  long long GetPositionSample() const override { return pos_; }
  long long GetEndSample() const override { return end_; }
  void Seek(long long frame) override { pos_ = frame; }

private:
  long long end_;
  long long pos_ = 0;
};

class CollectingSink final : public LSoundSinkBase {
public:
  CollectingSink(std::vector<float>* out, long long failAt) : LSoundSinkBase(8000, 2), out_(out), failAt_(failAt) {}
  void Write(const float* buffer, long long frames) override {
    out_->insert(out_->end(), buffer, buffer + frames * 2);
    AdvancePosition(frames);
    if (failAt_ >= 0 && GetPosition() >= failAt_) SetError();
  }

private:
  std::vector<float>* out_;
  long long failAt_;
};

}  // namespace

TEST(SourceToSink, PumpsEveryFrameInOrderAndReportsFullProgress) {
  std::vector<float> out;
  LPRSourceToSink job("Kopieren", LMakeSource<CountingSource>(20000), LMakeSink<CollectingSink>(&out, -1));
  LProcessInterfaceQuiet process;
  EXPECT_EQ(Process(process, job), kLProcessSuccess);
  ASSERT_EQ(out.size(), 40000u);
  for (long long f = 0; f < 20000; ++f) ASSERT_EQ(out[2 * f + 1], static_cast<float>(f));
  EXPECT_EQ(process.Progress(), 1.0);
  EXPECT_EQ(process.Status(0), "Kopieren");
  EXPECT_EQ(job.FramesDone(), 20000);
}

TEST(SourceToSink, CancelStopsBetweenBlocksAndASinkErrorFails) {
  std::vector<float> out;
  LPRSourceToSink job("x", LMakeSource<CountingSource>(100000), LMakeSink<CollectingSink>(&out, -1));
  LProcessInterfaceQuiet process;
  process.CancelAfterChecks(2);
  EXPECT_EQ(Process(process, job), kLProcessCancelled);
  EXPECT_EQ(out.size(), 2u * 2 * kLPumpBlockFrames);

  std::vector<float> out2;
  LPRSourceToSink failing("x", LMakeSource<CountingSource>(100000), LMakeSink<CollectingSink>(&out2, 10000), true);
  LProcessInterfaceQuiet p2;
  EXPECT_EQ(Process(p2, failing), kLProcessFailed);
  EXPECT_TRUE(failing.Sink().HasError());  // closed: an error sink is left
}
