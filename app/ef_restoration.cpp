#include "app/ef_restoration.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "engine/sample_buffer_source.h"

namespace {

// Audio either side of the span that the repair's model is fitted to.
constexpr long long kContext = 1024;

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
  return LMakeSource<LSRCSampleBuffer>(std::move(out), input.GetSampleRate(), static_cast<std::uint8_t>(channels));
}
