#include "effects/mix_simple.h"

#include <algorithm>

LSoundSource LSPMixSimple::OpenSource(LSoundSource& input) { return LMakeSource<LSRCMixSimple>(input, second_); }

LSRCMixSimple::LSRCMixSimple(const LSoundSource& input, const LSoundSource& second)
    : LSoundProcessBase(input), second_(second.IsEmpty() ? LSoundSource::Error(kLSourceClosed) : second) {
  const long long channels = std::max<long long>(second_.GetChannels(), 1);
  scratchFrames_ = kLMixScratchBytesPerChannel / static_cast<long long>(sizeof(float));
  scratch_.resize(static_cast<std::size_t>(scratchFrames_ * channels));
  // Frame p of the sum is frame p of both inputs.
  if (second_.GetPositionSample() != Input().GetPositionSample()) second_.Seek(Input().GetPositionSample());
}

void LSRCMixSimple::Read(float* buffer, long long frames) {
  ReadInput(buffer, frames);
  const int ch = GetChannels();
  const int ch2 = second_.GetChannels();
  if (ch2 == 0) {
    // A second source without channels has nothing to add; keep it in step.
    second_.Seek(second_.GetPositionSample() + frames);
    return;
  }
  float* out = buffer;
  while (frames > 0) {
    const long long n = std::min(frames, scratchFrames_);
    second_.Read(scratch_.data(), n);
    const float* in = scratch_.data();
    if (ch2 == ch) {
      for (long long i = 0; i < n * ch; ++i) out[i] += in[i];
    } else if (ch2 == 1) {
      for (long long i = 0; i < n; ++i)
        for (int c = 0; c < ch; ++c) out[i * ch + c] += in[i];
    } else if (ch == 1) {
      const float share = 1.0f / static_cast<float>(ch2);
      for (long long i = 0; i < n; ++i) {
        float sum = 0.0f;
        for (int c = 0; c < ch2; ++c) sum += in[i * ch2 + c];
        out[i] += sum * share;
      }
    } else {
      const int both = std::min(ch, ch2);
      for (long long i = 0; i < n; ++i)
        for (int c = 0; c < both; ++c) out[i * ch + c] += in[i * ch2 + c];
    }
    out += n * ch;
    frames -= n;
  }
}

void LSRCMixSimple::Seek(long long frame) {
  Input().Seek(frame);
  second_.Seek(frame);
}
