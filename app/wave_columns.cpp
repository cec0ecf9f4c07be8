#include "app/wave_columns.h"

#include <algorithm>

#include "app/wave_levels.h"
#include "engine/cut_list_segment.h"
#include "engine/sound_cache_overview.h"

namespace {

// Frames read from the source at a time.
constexpr long long kReadFrames = 16384;

}  // namespace

void SVWaveColumns::DocumentChanged() {
  // Assigning an empty handle would keep the old source: close it.
  source_.Close();
  sourceOpen_ = false;
  sourceList_ = nullptr;
}

LSoundSource& SVWaveColumns::SourceFor(const LCutListAudio& list) {
  // The source holds copies of the segments: kept until the document changes.
  if (!sourceOpen_ || sourceList_ != &list) {
    source_ = list.OpenSource();
    sourceList_ = &list;
    sourceOpen_ = true;
  }
  return source_;
}

void SVWaveColumns::Samples(const LCutListAudio& list, long long first, long long count, std::vector<float>& out) {
  const int channels = list.GetChannels();
  out.assign(static_cast<std::size_t>(std::max(count, 0LL) * channels), 0.0f);
  const long long from = std::max(first, 0LL);
  const long long to = std::min(first + count, list.GetLength());
  if (to <= from || channels == 0) return;
  LSoundSource& source = SourceFor(list);
  source.Seek(from);
  source.Read(out.data() + (from - first) * channels, to - from);
}

void SVWaveColumns::Peaks(const LCutListAudio& list, long long first, long long framesPerPixel, int width,
                          std::vector<SVWaveColumn>& out) {
  const int channels = list.GetChannels();
  out.assign(static_cast<std::size_t>(std::max(width, 0) * channels), SVWaveColumn{});
  lastSource_ = Source::kNone;
  if (width <= 0 || channels == 0 || framesPerPixel <= 0) return;
  if (framesPerPixel < kSVWaveLevelFrames[0]) {
    lastSource_ = Source::kSamples;
    PeaksFromSamples(list, first, framesPerPixel, width, out);
    return;
  }
  int level = 0;
  while (level + 1 < kSVWaveLevelCount && framesPerPixel >= kSVWaveLevelFrames[level + 1]) ++level;
  lastSource_ = level == 0 ? Source::kOverview : level == 1 ? Source::kLevel1 : Source::kLevel2;
  PeaksFromOverview(list, first, framesPerPixel, width, level, out);
}

void SVWaveColumns::PeaksFromSamples(const LCutListAudio& list, long long first, long long fpp, int width,
                                     std::vector<SVWaveColumn>& out) {
  const int channels = list.GetChannels();
  const long long from = std::max(first, 0LL);
  const long long to = std::min(first + static_cast<long long>(width) * fpp, list.GetLength());
  if (to <= from) return;
  LSoundSource& source = SourceFor(list);
  source.Seek(from);
  buffer_.resize(static_cast<std::size_t>(kReadFrames * channels));
  for (long long at = from; at < to; at += kReadFrames) {
    const long long n = std::min(kReadFrames, to - at);
    source.Read(buffer_.data(), n);
    long long f = 0;
    while (f < n) {
      // The run of frames that falls into one column.
      const long long x = (at + f - first) / fpp;
      const long long run = std::min(n - f, first + (x + 1) * fpp - (at + f));
      for (int c = 0; c < channels; ++c) {
        const float* s = buffer_.data() + f * channels + c;
        float low = *s;
        float high = *s;
        for (long long i = 1; i < run; ++i) {
          const float v = s[i * channels];
          low = v < low ? v : low;
          high = v > high ? v : high;
        }
        out[static_cast<std::size_t>(c * width + x)].Merge(low, high);
      }
      f += run;
    }
  }
}

void SVWaveColumns::PeaksFromOverview(const LCutListAudio& list, long long first, long long fpp, int width,
                                      int level, std::vector<SVWaveColumn>& out) {
  const int channels = list.GetChannels();
  const long long from = std::max(first, 0LL);
  const long long to = first + static_cast<long long>(width) * fpp;
  const long long block = kSVWaveLevelFrames[level];
  SVWaveLevels& levels = SVWaveLevels::Instance();
  levels.PassBegin();
  std::vector<LCutListGrfRecord> records;

  // Merges [low, high] into the columns that show list frames [a, b).
  auto mergeRange = [&](long long a, long long b, int c, float low, float high) {
    const long long xa = (a - first) / fpp;
    const long long xb = std::min<long long>((b - 1 - first) / fpp, width - 1);
    for (long long x = xa; x <= xb; ++x) out[static_cast<std::size_t>(c * width + x)].Merge(low, high);
  };

  long long segmentStart = 0;
  for (const LCutListSegment& segment : list.Segments()) {
    const long long segmentEnd = segmentStart + segment.length;
    if (segmentEnd <= from || segment.length <= 0) {
      segmentStart = segmentEnd;
      continue;
    }
    if (segmentStart >= to) break;
    const long long a = std::max(from, segmentStart);
    const long long b = std::min(to, segmentEnd);
    if (segment.IsSilence()) {
      for (int c = 0; c < channels; ++c) mergeRange(a, b, c, 0.0f, 0.0f);
      segmentStart = segmentEnd;
      continue;
    }
    // The item's sets that hold frames [a, b) of the list.
    const long long itemA = segment.offset + (a - segmentStart);
    const long long itemB = segment.offset + (b - segmentStart);
    const long long firstSet = itemA / block;
    const long long sets = (itemB - 1) / block - firstSet + 1;
    const long long known = LSoundCacheOverviewBlocks(segment.offset + segment.length);
    levels.Records(segment.item, channels, level, firstSet, sets, known, records);
    // Positive and negative codes swap places under a negative gain.
    const float gain = segment.gain;
    const float scale = static_cast<float>(gain < 0.0f ? -gain : gain);
    for (long long s = 0; s < sets; ++s) {
      const long long setA = std::max(a, segmentStart + (firstSet + s) * block - segment.offset);
      const long long setB = std::min(b, segmentStart + (firstSet + s + 1) * block - segment.offset);
      const LCutListGrfRecord* set = records.data() + s * channels;
      for (int c = 0; c < channels; ++c) {
        const float up = LSoundCachePeakFromCode(set[c].positive) * scale;
        const float down = LSoundCachePeakFromCode(set[c].negative) * scale;
        if (gain < 0.0f)
          mergeRange(setA, setB, c, -up, down);
        else
          mergeRange(setA, setB, c, -down, up);
      }
    }
    segmentStart = segmentEnd;
  }
}
