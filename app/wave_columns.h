#pragma once
// SVWaveColumns: what the waveform view draws, without a toolkit: for a cut
// list, a first frame, a zoom and a width, the lowest and highest sample of
// every channel in every pixel column, or the samples themselves when a frame
// is wider than a pixel.
//
// Where it reads: at 65536 frames per column and more the items' coarsest
// in-memory level, from 4096 the middle one, from 256 the items' ".grf"
// records, and below one overview block per column the samples through the
// list's source. Overview records cover whole blocks of their item, so a
// column may also show the peaks of the block parts next to its frames; it
// never shows less than its frames hold (to the precision of the peak codes).
// Segment gains are applied, silence shows as 0. The work of one call is
// proportional to its width, never to the document's length.
//
// Threads: one object per thread; the list must not change during a call.
#include <cstdint>
#include <vector>

#include "engine/cut_list_audio.h"
#include "engine/sound_source.h"

struct SVWaveColumn {
  float min = 1.0f;  // min > max: the column shows no audio (past the end)
  float max = -1.0f;
  [[nodiscard]] bool IsEmpty() const { return min > max; }
  void Merge(float low, float high) {
    if (IsEmpty()) {
      min = low;
      max = high;
    } else {
      min = low < min ? low : min;
      max = high > max ? high : max;
    }
  }
};

class SVWaveColumns {
public:
  // Where the columns of the last Peaks came from.
  enum class Source : std::uint8_t { kNone, kSamples, kOverview, kLevel1, kLevel2 };

  // out: width columns per channel, channel 0 first. Column x shows frames
  // [first + x * framesPerPixel, first + (x + 1) * framesPerPixel); columns
  // before frame 0 or past the end of the list are empty.
  void Peaks(const LCutListAudio& list, long long first, long long framesPerPixel, int width,
             std::vector<SVWaveColumn>& out);
  // The samples of frames [first, first + count), interleaved; silence outside the list.
  void Samples(const LCutListAudio& list, long long first, long long count, std::vector<float>& out);
  // The list's audio changed: the source kept for reading samples is reopened.
  void DocumentChanged();

  [[nodiscard]] Source LastSource() const { return lastSource_; }

private:
  LSoundSource& SourceFor(const LCutListAudio& list);
  void PeaksFromSamples(const LCutListAudio& list, long long first, long long fpp, int width,
                        std::vector<SVWaveColumn>& out);
  void PeaksFromOverview(const LCutListAudio& list, long long first, long long fpp, int width, int level,
                         std::vector<SVWaveColumn>& out);

  LSoundSource source_;
  const LCutListAudio* sourceList_ = nullptr;
  bool sourceOpen_ = false;
  std::vector<float> buffer_;
  Source lastSource_ = Source::kNone;
};
