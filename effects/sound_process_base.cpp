#include "effects/sound_process_base.h"

#include <cstring>

LSoundProcessBase::LSoundProcessBase(const LSoundSource& input)
    : LSoundSourceBase(input.GetSampleRate(), input.GetChannels()), input_(input) {
  SetMaxAmplitude(input.GetMaxAmplitude());
  std::uint32_t rate = GetSampleRate();
  std::uint8_t channels = GetChannels();
  if (rate < 1 || channels == 0) {
    SetFormat(rate < 1 ? kLProcessFallbackRate : rate, channels == 0 ? kLProcessFallbackChannels : channels);
    SetErrorCode(kLSourceDamaged);
  }
  // An empty handle would not fill the buffers it is asked to; an error source does.
  if (input_.IsEmpty()) input_ = LSoundSource::Error(kLSourceClosed);
  if (input_.IsError()) SetErrorCode(kLSourceBadInput);
}

void LSoundProcessBase::ReadInput(float* buffer, long long frames) {
  if (frames <= 0) return;
  if (input_.GetChannels() != GetChannels()) {
    std::memset(buffer, 0, static_cast<size_t>(frames) * GetChannels() * sizeof(float));
    if (input_.GetChannels() != 0) {
      // A layout this source cannot hold: pass over the frames.
      input_.Seek(input_.GetPositionSample() + frames);
      return;
    }
  }
  input_.Read(buffer, frames);
}
