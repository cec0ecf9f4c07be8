#include "app/ef_reverse.h"

#include <algorithm>

#include "base/array.h"

namespace {
// Frames per block; both buffers hold one block.
constexpr long long kBlockFrames = 8192;

// out gets the frames of in last first, each frame's channels in their order.
// Mono and stereo have their own loops: a copy sized at run time per frame
// cost more than all the rest of the reversal.
template <int kChannels>
void ReverseFrames(const float* in, float* out, long long frames, int channels) {
  const long long ch = kChannels > 0 ? kChannels : channels;
  const float* from = in + (frames - 1) * ch;
  for (long long i = 0; i < frames; ++i, from -= ch, out += ch) {
    for (long long c = 0; c < ch; ++c) out[c] = from[c];
  }
}

void ReverseBlock(const float* in, float* out, long long frames, int channels) {
  if (frames <= 0) return;
  switch (channels) {
    case 1:
      ReverseFrames<1>(in, out, frames, channels);
      break;
    case 2:
      ReverseFrames<2>(in, out, frames, channels);
      break;
    default:
      ReverseFrames<0>(in, out, frames, channels);
  }
}

}  // namespace

LSoundSource SVEfReverse::OpenInput(const LCutListAudio& piece) const { return piece.OpenSource(); }

int SVEfReverse::ProcessCutList(LProcessInterface& process, LCutListAudio& piece) {
  const int channels = std::max<int>(1, piece.GetChannels());
  LSoundSource source = OpenInput(piece);
  LCutListAudio output;
  LSoundSink sink = output.OpenSink(static_cast<int>(piece.GetSampleRate()), piece.GetChannels(), "");
  const long long total = piece.GetLength();

  process.SetStatus(kSVReverseStatus, 0);
  process.SetStatus(kSVEfPleaseWait, 1);

  LArray<float> forward(static_cast<std::size_t>(kBlockFrames * channels));
  LArray<float> backward(forward.size());
  long long remaining = total;
  bool readFailed = source.IsError();
  while (remaining > 0 && !readFailed && !process.IsCancelled()) {
    const long long block = std::min(kBlockFrames, remaining);
    source.Seek(remaining - block);
    source.Read(forward.data(), block);
    // What a failed read left in the buffer is no audio; it must not be committed.
    if (source.IsError()) {
      readFailed = true;
      break;
    }
    remaining -= block;
    ReverseBlock(forward.data(), backward.data(), block, channels);
    sink.Write(backward.data(), block);
    process.SetProgress(static_cast<double>(total - remaining) / static_cast<double>(total));
  }
  const bool failed = sink.HasError();
  // Closing publishes what was written into output; a partial output is dropped with it.
  sink.Close();
  if (readFailed) {
    process.SetError(kSVReverseReadFailedText);
    return kLProcessFailed;
  }
  if (remaining > 0) return kLProcessCancelled;
  if (failed) return kLProcessFailed;
  piece = std::move(output);
  return kLProcessSuccess;
}
