// The selected audio as a cut list: ranges, band rectangles rendered through
// the equaliser, and the equal-band rule.
#include <gtest/gtest.h>

#include <cmath>

#include "app/selection.h"
#include "edit_fixture.h"
#include "effects/eq.h"
#include "effects/point_list.h"
#include "engine/sound_cache.h"

namespace {

using SelectionTest = EditTest;

std::vector<float> Sine(double hz, long long frames) { return Tones({{hz, 0.5}}, frames, 44100.0); }

double Rms(const std::vector<float>& s, std::size_t from, std::size_t to) {
  double sum = 0;
  for (std::size_t i = from; i < to; ++i) sum += double(s[i]) * s[i];
  return std::sqrt(sum / double(to - from));
}

TEST_F(SelectionTest, ARangeIsTrimmedWithoutRenderingAndWithoutOneTheWholeListIsSelected) {
  const LCutListAudio list = StaircaseList(1000, 2);
  LProcessInterfaceQuiet process;
  EXPECT_EQ(DocReadAll(SVSelection{}.Trim(process, list)), DocReadAll(list));
  EXPECT_EQ(DocReadAll(SVSelection{400, 400, 0, 0, 0}.Trim(process, list)), DocReadAll(list));
  EXPECT_EQ(DocReadAll(SVSelection{400, 400, 100, 900, 1}.Trim(process, list)), DocReadAll(list));

  const LCutListAudio range = SVSelection{100, 350, 0, 0, 0}.Trim(process, list);
  ASSERT_EQ(range.GetLength(), 250);
  EXPECT_EQ(range.GetChannels(), 2);
  const std::vector<float> samples = DocReadAll(range);
  EXPECT_EQ(samples.front(), DocStaircaseValue(100, 0));
  EXPECT_EQ(samples.back(), DocStaircaseValue(349, 1));
  EXPECT_EQ(CacheAudioFiles(), 1);
  EXPECT_EQ(DocReadAll(SVSelection{100, 350, 0, 0, 0}.OpenTrimmedSource(range)), samples);

  // A band whose frequencies are equal is no band: the same range, nothing rendered.
  const SVSelection equal{100, 350, 700, 700, 1};
  EXPECT_FALSE(equal.HasBand());
  EXPECT_EQ(DocReadAll(equal.Trim(process, list)), samples);
  EXPECT_EQ(DocReadAll(equal.OpenTrimmedSource(range)), samples);
  EXPECT_EQ(CacheAudioFiles(), 1);
}

TEST_F(SelectionTest, ABandIsRenderedThroughTheEqualiser) {
  const long long frames = 44100;
  std::vector<float> mixed = Sine(1000, frames);
  const std::vector<float> high = Sine(6000, frames);
  for (std::size_t i = 0; i < mixed.size(); ++i) mixed[i] += high[i];
  const LCutListAudio list = DocListOf(mixed, 1);
  const SVSelection band{0, frames, 800, 1200, 1};
  LProcessInterfaceQuiet process;
  const LCutListAudio rendered = band.Trim(process, list);
  ASSERT_EQ(rendered.GetLength(), frames);
  EXPECT_EQ(process.Status(0), "Auswahl zum Audio");
  EXPECT_EQ(CacheAudioFiles(), 2) << "the band's audio is a new item";

  const std::vector<float> out = DocReadAll(rendered);
  const std::vector<float> lowOnly = Sine(1000, frames);
  std::vector<float> difference(out.size());
  for (std::size_t i = 0; i < out.size(); ++i) difference[i] = out[i] - lowOnly[i];
  const std::size_t from = 4410, to = static_cast<std::size_t>(frames) - 4410;
  EXPECT_LT(Rms(difference, from, to), Rms(high, from, to) * 0.01) << "the 6 kHz tone is gone, 1 kHz is kept";

  // The same curve applied by hand gives the same samples.
  LPointList points;
  for (auto [hz, db] : {std::pair{10.0, -60.0}, {799.0, -60.0}, {800.0, 0.0}, {1200.0, 0.0}, {1201.0, -60.0},
                        {20000.0, -60.0}})
    points.Add(hz, db);
  LSPEq eq;
  points.MapPointListToEq(eq, 44100);
  LSoundSource input = list.OpenSource();
  EXPECT_EQ(DocReadAll(eq.OpenSource(input)), out);
}

TEST_F(SelectionTest, ACancelledBandRenderGivesAnEmptyList) {
  const LCutListAudio list = DocListOf(Sine(1000, 44100), 1, 48000);
  LProcessInterfaceQuiet process;
  process.Cancel();
  const LCutListAudio rendered = SVSelection{0, 40000, 800, 1200, 1}.Trim(process, list);
  EXPECT_TRUE(rendered.IsEmpty());
  EXPECT_EQ(rendered.GetSampleRate(), 44100u);
  EXPECT_EQ(rendered.GetChannels(), 1);
  EXPECT_EQ(CacheAudioFiles(), 1) << "the partial render is released";
}

}  // namespace
