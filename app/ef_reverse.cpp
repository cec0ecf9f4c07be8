#include "app/ef_reverse.h"

#include <algorithm>
#include <cstring>

#include "base/array.h"

namespace {
// Frames per block; both buffers hold one block.
constexpr long long kBlockFrames = 8192;
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
  const std::size_t frameBytes = static_cast<std::size_t>(channels) * sizeof(float);
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
    for (long long i = 0; i < block; ++i)
      std::memcpy(backward.data() + i * channels, forward.data() + (block - 1 - i) * channels, frameBytes);
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
