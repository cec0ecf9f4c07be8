#pragma once
// LSRCChannelMap: a wrapping source that gives its input another channel count.
//
// Every output channel is a weighted sum of input channels. The common maps
// (one channel copied to all, all channels averaged to one, one channel picked)
// copy samples unchanged where the weight is 1, so they are exact. Position, end
// and streaming are those of the input; a failed input makes a failed map.
#include <cstdint>

#include "base/array.h"
#include "engine/sound_source.h"

class LSRCChannelMap final : public LSoundSourceBase {
public:
  // One term of an output channel: weight times an input channel.
  struct Term {
    int input;
    float weight;
  };
  // The terms of each output channel; an output without terms is silent.
  using Map = LArray<LArray<Term>>;

  LSRCChannelMap(LSoundSource input, Map map);

  // The usual conversion to a channel count: mono is copied to every output,
  // several channels to one are averaged, otherwise channel k feeds output k
  // and outputs beyond the input's channels are silent. The input itself comes
  // back when the count already matches.
  [[nodiscard]] static LSoundSource Convert(LSoundSource input, int channels);
  // A mono source holding channel k of the input (k is clamped to the channels there are).
  [[nodiscard]] static LSoundSource Pick(LSoundSource input, int k);
  // A source with channels outputs made by the given map.
  [[nodiscard]] static LSoundSource Make(LSoundSource input, Map map);

  void Read(float* buffer, long long frames) override;
  long long GetPositionSample() const override { return input_.GetPositionSample(); }
  long long GetEndSample() const override { return input_.GetEndSample(); }
  void Seek(long long frame) override { input_.Seek(frame); }
  bool IsStreaming() const override { return input_.IsStreaming(); }
  void WaitForStreamingData(int milliseconds) override { input_.WaitForStreamingData(milliseconds); }

private:
  LSoundSource input_;
  Map map_;
  LArray<float> buffer_;
};
