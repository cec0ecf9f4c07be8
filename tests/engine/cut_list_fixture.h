#pragma once
// What the cut-list tests share: cache items holding a named staircase, so a
// misplaced frame names itself, and a reference model of a cut list as the
// list of frame names it should read as.
#include <vector>

#include "engine/cut_list_audio.h"
#include "sound_cache_fixture.h"

// Sample (frame f, channel c) of the item tagged t: t * 100000 + f + c / 4,
// exact in float for the sizes used here; 0 is silence (tag 0).
[[nodiscard]] float FrameName(int tag, long long frame, int channel);

// One frame of the model: which item (0 for silence) and which of its frames.
struct ModelFrame {
  int tag = 0;
  long long frame = 0;
  bool operator==(const ModelFrame&) const = default;
};
using Model = std::vector<ModelFrame>;

[[nodiscard]] Model ModelOf(int tag, long long from, long long frames);
[[nodiscard]] Model ModelSilence(long long frames);
[[nodiscard]] Model Concat(std::initializer_list<Model> parts);
// The interleaved samples a model reads as.
[[nodiscard]] std::vector<float> Render(const Model& model, int channels);

// The whole list through one Read.
[[nodiscard]] std::vector<float> ReadList(const LCutListAudio& list);

// The cache's count of the item.
[[nodiscard]] long long RefCount(const LSoundCacheItemHandle& item);

[[nodiscard]] bool SameBits(const std::vector<float>& a, const std::vector<float>& b);

class CutListTest : public SoundCacheTest {
protected:
  static constexpr int kChannels = 2;

  // A new item of the tagged staircase.
  LSoundCacheItemHandle TaggedItem(int tag, long long frames, int channels = kChannels);
  // A list of one segment over the first frames of item.
  static LCutListAudio ListOver(const LSoundCacheItemHandle& item, long long frames, int channels = kChannels);
  // The count of item must be its live segments in these lists plus extra.
  static long long SegmentsNaming(const std::vector<const LCutListAudio*>& lists, unsigned short item);
};
