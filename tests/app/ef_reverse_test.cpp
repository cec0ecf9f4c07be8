// Reverse: the selection read backwards frame by frame, across segment and
// block boundaries, with the channels of each frame in their order.
#include <gtest/gtest.h>

#include "app/ef_reverse.h"
#include "edit_fixture.h"
#include "engine/sound_cache.h"

namespace {

using EfReverseTest = EditTest;
// Mono and stereo take loops of their own.
class EfReverseChannelsTest : public EditTest, public ::testing::WithParamInterface<int> {};

TEST_P(EfReverseChannelsTest, TheSelectionIsReadBackwardsFrameByFrameAcrossSegments) {
  const int kChannels = GetParam();
  constexpr long long kFrames = 30000;
  LCutListAudio list = PiecewiseStaircase(kFrames, kChannels, 4);
  const LCutListAudio kept = list;  // holds the items, as an undo snapshot would
  const std::vector<float> before = DocReadAll(list);
  // More than two blocks of 8192 frames, over all four items.
  const long long start = 1234;
  const long long end = 28765;
  SVSelection selection{start, end, 0, 0, 0};
  SVEfReverse reverse(list, selection);
  EXPECT_STREQ(reverse.GetEffectName(), "Umkehren");
  LProcessInterfaceQuiet process;
  ASSERT_EQ(reverse.ProcessAndInsertCutList(process), 0);
  EXPECT_EQ(process.Status(0), "Soundumkehrung");
  EXPECT_EQ(process.Status(1), "Bitte warten...");
  EXPECT_EQ(selection.end, end);

  const std::vector<float> after = DocReadAll(list);
  ASSERT_EQ(after.size(), before.size());
  for (long long f = 0; f < kFrames; ++f) {
    const long long from = f >= start && f < end ? end - 1 - (f - start) : f;
    for (int c = 0; c < kChannels; ++c)
      ASSERT_EQ(after[static_cast<std::size_t>(f * kChannels + c)], DocStaircaseValue(from, c))
          << "frame " << f << " channel " << c;
  }
  EXPECT_EQ(CacheAudioFiles(), 5);
}

INSTANTIATE_TEST_SUITE_P(Channels, EfReverseChannelsTest, ::testing::Values(1, 2, 3));

// Reads through the piece's source but reports an error from the second read on.
class FailingSource final : public LSoundSourceBase {
public:
  explicit FailingSource(LSoundSource inner)
      : LSoundSourceBase(inner.GetSampleRate(), inner.GetChannels()), inner_(std::move(inner)) {}
  void Read(float* buffer, long long frames) override {
    inner_.Read(buffer, frames);
    if (++reads_ >= 2) SetErrorCode(kLSourceDamaged);
  }
  long long GetPositionSample() const override { return inner_.GetPositionSample(); }
  long long GetEndSample() const override { return inner_.GetEndSample(); }
  void Seek(long long frame) override { inner_.Seek(frame); }

private:
  LSoundSource inner_;
  int reads_ = 0;
};

class FailingReverse final : public SVEfReverse {
public:
  using SVEfReverse::SVEfReverse;

protected:
  LSoundSource OpenInput(const LCutListAudio& piece) const override {
    return LMakeSource<FailingSource>(piece.OpenSource());
  }
};

TEST_F(EfReverseTest, AReadThatFailsFailsTheEditWithTheDocumentAsItWas) {
  LCutListAudio list = PiecewiseStaircase(40000, 2, 2);
  const auto shape = ShapeOf(list);
  SVSelection selection{100, 39000, 0, 0, 0};
  FailingReverse reverse(list, selection);
  LProcessInterfaceQuiet process;
  EXPECT_EQ(reverse.ProcessAndInsertCutList(process), kLProcessFailed);
  EXPECT_EQ(process.Error(), kSVReverseReadFailedText);
  EXPECT_EQ(ShapeOf(list), shape);
  EXPECT_EQ(CacheAudioFiles(), 2);
}

}  // namespace
