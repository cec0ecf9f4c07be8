#include "app/ef_restoration.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <vector>

namespace {

// Audio either side of the span that the repair's model is fitted to.
constexpr long long kContext = 1024;

// Serves frames it owns; silence outside them.
class RepairedSource final : public LSoundSourceBase {
public:
  RepairedSource(std::vector<float> samples, std::uint32_t rate, std::uint8_t channels)
      : LSoundSourceBase(rate, channels),
        samples_(std::move(samples)),
        end_(static_cast<long long>(samples_.size()) / std::max<int>(1, channels)) {}

  void Read(float* buffer, long long frames) override {
    const int channels = GetChannels();
    std::memset(buffer, 0, static_cast<std::size_t>(frames * channels) * sizeof(float));
    const long long from = std::clamp(position_, 0LL, end_);
    const long long to = std::clamp(position_ + frames, 0LL, end_);
    if (to > from)
      std::copy(samples_.begin() + from * channels, samples_.begin() + to * channels,
                buffer + (from - position_) * channels);
    position_ += frames;
  }
  long long GetPositionSample() const override { return position_; }
  long long GetEndSample() const override { return end_; }
  void Seek(long long frame) override { position_ = frame; }

private:
  std::vector<float> samples_;
  long long end_;
  long long position_ = 0;
};

}  // namespace

LSoundSource SVEfManualClickPop::OpenSource(LSoundSource& input) {
  const int channels = input.GetChannels();
  const long long span = input.GetEndSample() - input.GetPositionSample();
  const long long limit = std::llround(kSVManualClickPopMaxMs * input.GetSampleRate() / 1000.0);
  // The span is held whole, so it must stay short; a longer one is no click.
  if (channels <= 0 || span <= 0 || span > limit) return {};
  const long long start = Selection().start;
  const long long before = std::min(kContext, start);
  const long long total = before + span + kContext;
  // The document's audio around the selection, the selection itself from the piece.
  LCutListAudio around;
  CutList().EfCopy(start - before, start + span + kContext, around);
  LSoundSource context = around.OpenSource();
  std::vector<float> frames(static_cast<std::size_t>(total * channels));
  if (context.IsEmpty() || context.GetChannels() != channels) return {};
  context.Read(frames.data(), total);
  input.Read(frames.data() + before * channels, span);
  if (input.IsError() || context.IsError()) return {};
  std::vector<double> x(total);
  std::vector<float> out(static_cast<std::size_t>(span * channels));
  for (int c = 0; c < channels; ++c) {
    for (long long n = 0; n < total; ++n) x[n] = frames[n * channels + c];
    if (!LClickRepair(x.data(), total, before, before + span)) return {};
    for (long long n = 0; n < span; ++n) out[n * channels + c] = static_cast<float>(x[before + n]);
  }
  return LMakeSource<RepairedSource>(std::move(out), input.GetSampleRate(), static_cast<std::uint8_t>(channels));
}
