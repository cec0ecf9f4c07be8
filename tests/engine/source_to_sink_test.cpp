#include "engine/source_to_sink.h"

#include <gtest/gtest.h>

#include <vector>

#include "sound_cache_fixture.h"

namespace {

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

TEST(SourceToSink, PumpsEveryFrameInOrderStopsBetweenBlocksWhenCancelledAndFailsOnASinkError) {
  std::vector<float> out;
  LPRSourceToSink job("Kopieren", MakeStaircase(20000, 2, 8000), LMakeSink<CollectingSink>(&out, -1));
  LProcessInterfaceQuiet process;
  EXPECT_EQ(Process(process, job), kLProcessSuccess);
  EXPECT_EQ(out, Staircase(20000, 2));
  EXPECT_EQ(process.Progress(), 1.0);
  EXPECT_EQ(process.Status(0), "Kopieren");
  EXPECT_EQ(job.FramesDone(), 20000);

  std::vector<float> cut;
  LPRSourceToSink cancelled("x", MakeStaircase(100000, 2, 8000), LMakeSink<CollectingSink>(&cut, -1));
  LProcessInterfaceQuiet cancelling;
  cancelling.CancelAfterChecks(2);
  EXPECT_EQ(Process(cancelling, cancelled), kLProcessCancelled);
  EXPECT_EQ(cut.size(), 2u * 2 * kLPumpBlockFrames);

  std::vector<float> some;
  LPRSourceToSink failing("x", MakeStaircase(100000, 2, 8000), LMakeSink<CollectingSink>(&some, 10000), true);
  LProcessInterfaceQuiet p2;
  EXPECT_EQ(Process(p2, failing), kLProcessFailed);
  EXPECT_TRUE(failing.Sink().HasError());  // closed: an error sink is left
}
