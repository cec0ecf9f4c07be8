#include "edit_fixture.h"

#include <cmath>
#include <complex>
#include <numbers>

#include "app/main_dialog.h"
#include "engine/cut_list_segment.h"

SVFileGUI* EditTest::NewDocument(const LCutListAudio& list) {
  SVFileGUI* window = Dialog().FileNewFromCutList(list, "Neu", MainDialog::kInitialNewFile);
  EXPECT_NE(window, nullptr);
  return window;
}

LCutListAudio EditTest::PiecewiseStaircase(long long frames, int channels, int pieces, std::uint32_t rate) {
  const std::vector<float> all = DocStaircase(frames, channels);
  LCutListAudio list;
  list.SetFormat(rate, static_cast<std::uint8_t>(channels));
  const long long step = frames / pieces;
  for (int p = 0; p < pieces; ++p) {
    const long long from = p * step;
    const long long to = p == pieces - 1 ? frames : from + step;
    const LCutListAudio piece = DocListOf(Frames(all, channels, from, to), channels, rate);
    list.EfInsert(list.GetLength(), piece);
  }
  return list;
}

std::vector<SegmentShape> ShapeOf(const LCutListAudio& list) {
  std::vector<SegmentShape> shape;
  for (const LCutListSegment& s : list.Segments()) shape.emplace_back(s.ItemNumber(), s.length, s.gain, s.offset);
  return shape;
}

DocumentState StateOf(const SVFile& file) {
  std::vector<long long> bookmarks;
  for (const LSVBookmark& b : file.Bookmarks()) bookmarks.push_back(b.position);
  const LCutListAudio& list = file.CutList();
  return {ShapeOf(list),         DocReadAll(list),      list.GetSampleRate(), list.GetChannels(),
          file.Selection().start, file.Selection().end, file.Cursor(),        bookmarks,
          file.IsModified(),      file.IsChanged()};
}

std::vector<float> Tones(const std::vector<Tone>& tones, long long frames, double rate) {
  std::vector<float> out(static_cast<std::size_t>(frames));
  for (long long f = 0; f < frames; ++f) {
    double sum = 0.0;
    for (const Tone& t : tones) sum += t.amplitude * std::sin(2.0 * std::numbers::pi * t.hz * f / rate);
    out[static_cast<std::size_t>(f)] = static_cast<float>(sum);
  }
  return out;
}

double ToneAmplitude(const std::vector<float>& mono, long long from, long long count, double hz, double rate) {
  std::complex<double> sum = 0.0;
  for (long long f = from; f < from + count; ++f)
    sum += static_cast<double>(mono[static_cast<std::size_t>(f)]) *
           std::polar(1.0, -2.0 * std::numbers::pi * hz * f / rate);
  return 2.0 * std::abs(sum) / static_cast<double>(count);
}

std::vector<float> Frames(const std::vector<float>& samples, int channels, long long from, long long to) {
  return std::vector<float>(samples.begin() + from * channels, samples.begin() + to * channels);
}
