#include "app/wave_columns.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "app/wave_levels.h"
#include "app/wave_scale.h"
#include "document_fixture.h"
#include "engine/cut_list_segment.h"

namespace {

constexpr int kChannels = 2;
constexpr long long kItemFrames = 300000;
// The coding keeps the integer part of peak * 4134.916.
constexpr float kCodeStep = 1.0f / 4134.0f;

// A sine whose pitch differs per channel, with a spike every 9973 frames, so
// that neighbouring columns differ.
float Value(long long frame, int channel) {
  if (frame % 9973 == 5000) return channel == 0 ? 0.99f : -0.97f;
  return 0.8f * static_cast<float>(std::sin(static_cast<double>(frame) * 0.00731 * (channel + 1)));
}

struct Range {
  float low = 0.0f;
  float high = 0.0f;
};

// Lowest and highest sample of frames [a, b) of the item, from the samples:
// whole 256-frame pieces from a table, the edges frame by frame.
class ItemRanges {
public:
  explicit ItemRanges(const std::vector<float>& samples) : samples_(samples) {
    for (int c = 0; c < kChannels; ++c)
      for (long long p = 0; p * 256 < kItemFrames; ++p) pieces_[c].push_back(Scan(c, p * 256, std::min(kItemFrames, p * 256 + 256)));
  }
  Range Of(int c, long long a, long long b) const {
    b = std::min(b, kItemFrames);
    Range r{2.0f, -2.0f};
    auto add = [&r](Range x) {
      r.low = std::min(r.low, x.low);
      r.high = std::max(r.high, x.high);
    };
    while (a < b && a % 256 != 0) add(Scan(c, a, a + 1)), ++a;
    while (a + 256 <= b) add(pieces_[c][static_cast<std::size_t>(a / 256)]), a += 256;
    if (a < b) add(Scan(c, a, b));
    return r;
  }

private:
  Range Scan(int c, long long a, long long b) const {
    Range r{2.0f, -2.0f};
    for (long long f = a; f < b; ++f) {
      const float v = samples_[static_cast<std::size_t>(f * kChannels + c)];
      r.low = std::min(r.low, v);
      r.high = std::max(r.high, v);
    }
    return r;
  }
  const std::vector<float>& samples_;
  std::vector<Range> pieces_[kChannels];
};

class WaveColumnsTest : public DocumentTest {
protected:
  void SetUp() override {
    DocumentTest::SetUp();
    for (long long f = 0; f < kItemFrames; ++f)
      for (int c = 0; c < kChannels; ++c) samples_.push_back(Value(f, c));
    item_ = DocListOf(samples_, kChannels);
    ranges_ = std::make_unique<ItemRanges>(samples_);
  }
  void TearDown() override {
    item_.Clear();
    DocumentTest::TearDown();
  }
  const LSoundCacheItemHandle& Item() const { return item_.Segments().front().item; }

  // Checks every column of list at a zoom against the samples: exact where
  // samples are read; over the overview, never less than the column's frames
  // and never more than the whole blocks of the level that hold them.
  void Check(const LCutListAudio& list, long long first, long long fpp, int width, SVWaveColumns::Source expected) {
    SCOPED_TRACE(testing::Message() << "first " << first << ", " << fpp << " frames per column");
    SVWaveColumns columns;
    std::vector<SVWaveColumn> out;
    columns.Peaks(list, first, fpp, width, out);
    ASSERT_EQ(columns.LastSource(), expected);
    const bool exact = expected == SVWaveColumns::Source::kSamples;
    const long long block = exact ? 1
                            : expected == SVWaveColumns::Source::kOverview ? 256
                            : expected == SVWaveColumns::Source::kLevel1   ? 4096
                                                                          : 65536;
    for (int x = 0; x < width; ++x) {
      const long long a = std::max(0LL, first + x * fpp);
      const long long b = std::min(list.GetLength(), first + (x + 1) * fpp);
      for (int c = 0; c < kChannels; ++c) {
        const SVWaveColumn column = out[static_cast<std::size_t>(c * width + x)];
        if (a >= b) {
          EXPECT_TRUE(column.IsEmpty()) << "column " << x;
          continue;
        }
        Range inside{2.0f, -2.0f};
        Range blocks{exact ? 2.0f : 0.0f, exact ? -2.0f : 0.0f};  // codes never go past 0
        long long start = 0;
        for (const LCutListSegment& s : list.Segments()) {
          const long long pa = std::max(a, start);
          const long long pb = std::min(b, start + s.length);
          if (pa < pb) {
            Range r{0.0f, 0.0f};
            Range w{0.0f, 0.0f};
            if (!s.IsSilence()) {
              const long long ia = s.offset + pa - start;
              const long long ib = s.offset + pb - start;
              r = ranges_->Of(c, ia, ib);
              w = ranges_->Of(c, ia / block * block, (ib + block - 1) / block * block);
              for (Range* q : {&r, &w}) {
                *q = Range{q->low * s.gain, q->high * s.gain};
                if (s.gain < 0) std::swap(q->low, q->high);
              }
            }
            inside = Range{std::min(inside.low, r.low), std::max(inside.high, r.high)};
            blocks = Range{std::min(blocks.low, w.low), std::max(blocks.high, w.high)};
          }
          start += s.length;
        }
        if (exact) {
          EXPECT_FLOAT_EQ(column.min, inside.low) << "column " << x << " channel " << c;
          EXPECT_FLOAT_EQ(column.max, inside.high) << "column " << x << " channel " << c;
        } else {
          EXPECT_LE(column.min, inside.low + kCodeStep) << "column " << x << " channel " << c;
          EXPECT_GE(column.max, inside.high - kCodeStep) << "column " << x << " channel " << c;
          EXPECT_GE(column.min, blocks.low - 1e-6f) << "column " << x << " channel " << c;
          EXPECT_LE(column.max, blocks.high + 1e-6f) << "column " << x << " channel " << c;
        }
      }
    }
  }

  std::vector<float> samples_;
  LCutListAudio item_;
  std::unique_ptr<ItemRanges> ranges_;
};

using Source = SVWaveColumns::Source;

TEST_F(WaveColumnsTest, ColumnsHoldTheSamplesRangeAtEveryZoomThroughGainsAndSilence) {
  // Segments that start inside blocks, a quieter one, an inverted one, silence.
  LCutListAudio list;
  list.SetFormat(44100, kChannels);
  list.SegmentAppend(LCutListSegment(Item(), 70001, 1.0f, 12345));
  list.SegmentAppend(LCutListSegment(Item(), 50000, 0.5f, 100));
  list.SegmentAppend(LCutListSegment::Silence(30000));
  list.SegmentAppend(LCutListSegment(Item(), 140000, -1.0f, 150000));
  const struct {
    long long fpp;
    Source source;
  } zooms[] = {{1, Source::kSamples},    {37, Source::kSamples},  {255, Source::kSamples},
               {256, Source::kOverview}, {1000, Source::kOverview}, {4096, Source::kLevel1},
               {5000, Source::kLevel1},  {70000, Source::kLevel2}};
  for (const auto& zoom : zooms) {
    Check(item_, 0, zoom.fpp, 300, zoom.source);
    Check(list, 6789, zoom.fpp, 300, zoom.source);
  }
  // Past the end every column is empty.
  Check(list, list.GetLength() - 1000, 300, 10, Source::kOverview);
}

TEST_F(WaveColumnsTest, ALongListOverOneItemDrawsFarInAndWholeFromLittleMemory) {
  // Three hours of stereo from one item of under seven seconds.
  LCutListAudio list;
  list.SetFormat(44100, kChannels);
  long long length = 0;
  for (int i = 0; length < 3LL * 3600 * 44100; ++i) {
    const long long offset = (i * 7919) % 100000;
    list.SegmentAppend(LCutListSegment(Item(), 200000, i % 3 == 0 ? 0.25f : 1.0f, offset));
    length += 200000;
  }
  SVWaveLevels::Instance().Clear();
  Check(list, length - 1920LL * 100 - 3, 100, 1920, Source::kSamples);
  Check(list, length / 2 + 77, 3000, 1920, Source::kOverview);
  Check(list, 12345, 9000, 1920, Source::kLevel1);
  Check(list, 0, (length + 1919) / 1920, 1920, Source::kLevel2);
  // The coarse levels hold one item, however long the list.
  EXPECT_LE(SVWaveLevels::Instance().MemoryBytes(), static_cast<std::size_t>(kItemFrames / 4096 + 1) * kChannels * 4 * 2);
}

TEST(WaveScale, PixelsAndFramesRoundTripDeepInALongDocument) {
  const long long far = 24LL * 3600 * 192000 + 12345;  // a day at 192 kHz
  for (double zoom : {1.0 / 256, 1.0 / 3, 1.0, 7.0, 4096.0, 1e6}) {
    const SVWaveScale scale = SVWaveScale::FromZoom(zoom);
    EXPECT_DOUBLE_EQ(scale.Zoom(), zoom);
    const long long column = scale.ColumnOfFrame(far);
    EXPECT_LE(scale.FrameOfColumn(column), far);
    const long long next = column + (scale.IsPoints() ? scale.pixelsPerFrame : 1);
    EXPECT_EQ(scale.FrameOfColumn(next), far + (scale.IsPoints() ? 1 : scale.framesPerPixel - far % scale.framesPerPixel));
    EXPECT_EQ(scale.ColumnOfFrame(scale.FrameOfColumn(column)), column);
    if (scale.IsPoints()) {
      EXPECT_EQ(scale.FrameOfColumn(column + scale.pixelsPerFrame - 1), far);
    }
  }
}

}  // namespace
