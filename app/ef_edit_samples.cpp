#include "app/ef_edit_samples.h"

#include <algorithm>
#include <cstring>

#include "app/cut_list_render.h"

namespace {

// Serves the frames of a buffer it shares with its owner; silence outside them.
class SampleBufferSource final : public LSoundSourceBase {
public:
  SampleBufferSource(const LArray<float>& samples, std::uint32_t rate, std::uint8_t channels)
      : LSoundSourceBase(rate, channels),
        samples_(samples),
        end_(static_cast<long long>(samples.size()) / std::max<int>(1, channels)) {}

  void Read(float* buffer, long long frames) override {
    const int channels = GetChannels();
    const long long from = std::clamp(position_, 0LL, end_);
    const long long to = std::clamp(position_ + frames, 0LL, end_);
    std::memset(buffer, 0, static_cast<std::size_t>(frames * channels) * sizeof(float));
    if (to > from)
      std::memcpy(buffer + (from - position_) * channels, samples_.data() + from * channels,
                  static_cast<std::size_t>((to - from) * channels) * sizeof(float));
    position_ += frames;
  }
  long long GetPositionSample() const override { return position_; }
  long long GetEndSample() const override { return end_; }
  void Seek(long long frame) override { position_ = frame; }

private:
  const LArray<float>& samples_;
  long long end_;
  long long position_ = 0;
};

}  // namespace

int SVEfEditSamples::ProcessCutList(LProcessInterface& process, LCutListAudio& piece) {
  if (piece.GetChannels() == 0) return kLProcessFailed;
  if (samples_.size() < piece.GetChannels()) {
    piece.Clear();
    return kLProcessSuccess;
  }
  LCutListAudio output;
  const LProcessResult rendered = SVCutListRender(
      process, GetEffectName(),
      LMakeSource<SampleBufferSource>(samples_, piece.GetSampleRate(), piece.GetChannels()), output);
  if (rendered != kLProcessSuccess) return rendered;
  piece = std::move(output);
  return kLProcessSuccess;
}
