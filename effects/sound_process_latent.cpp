#include "effects/sound_process_latent.h"

#include <algorithm>

#include "effects/preroll.h"

namespace {
constexpr long long kScratchFrames = 4096;
}

LSoundProcessLatent::LSoundProcessLatent(const LSoundSource& input, long long latency)
    : LSoundProcessBase(input), latency_(std::max(latency, 0LL)) {
  if (latency_ > 0)
    scratch_.resize(static_cast<std::size_t>(std::min(latency_, kScratchFrames) * GetChannels()));
}

void LSoundProcessLatent::Read(float* buffer, long long frames) {
  if (!primed_) {
    primed_ = true;
    long long first = LSoundProcessBase::GetPositionSample() - latency_;
    for (long long done = 0; done < latency_;) {
      const long long n = std::min(latency_ - done, kScratchFrames);
      ReadInput(scratch_.data(), n);
      Process(scratch_.data(), n, first);
      first += n;
      done += n;
    }
  }
  const long long first = LSoundProcessBase::GetPositionSample() - latency_;
  ReadInput(buffer, frames);
  Process(buffer, frames, first);
}

void LSoundProcessLatent::Seek(long long frame) {
  Reset();
  primed_ = false;
  LSeekWithPreroll(*this, frame, Preroll());
}

long long LSoundProcessLatent::GetPositionSample() const {
  return LSoundProcessBase::GetPositionSample() - (primed_ ? latency_ : 0);
}

long long LSoundProcessLatent::Preroll() const { return LPrerollFrames(*this); }
