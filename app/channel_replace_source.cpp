#include "app/channel_replace_source.h"

#include <algorithm>

namespace {

// Frames of the mono source read per step.
constexpr long long kBlockFrames = 4096;

}  // namespace

LSRCChannelReplace::LSRCChannelReplace(LSoundSource whole, LSoundSource channel, int index)
    : LSoundSourceBase(whole.GetSampleRate(), whole.GetChannels()),
      whole_(std::move(whole)),
      channel_(std::move(channel)),
      index_(std::clamp(index, 0, std::max(0, static_cast<int>(whole_.GetChannels()) - 1))),
      end_(std::max(whole_.GetEndSample(), channel_.GetEndSample())),
      mono_(static_cast<std::size_t>(kBlockFrames) * std::max<int>(1, channel_.GetChannels())) {
  if (whole_.IsError() || channel_.IsError()) SetErrorCode(kLSourceBadInput);
  whole_.Seek(0);
  channel_.Seek(0);
}

void LSRCChannelReplace::Seek(long long frame) {
  position_ = frame;
  whole_.Seek(frame);
  channel_.Seek(frame);
}

void LSRCChannelReplace::Read(float* buffer, long long frames) {
  whole_.Read(buffer, frames);
  const int channels = GetChannels();
  const int monoChannels = std::max<int>(1, channel_.GetChannels());
  for (long long done = 0; done < frames;) {
    const long long take = std::min(kBlockFrames, frames - done);
    channel_.Read(mono_.data(), take);
    float* out = buffer + done * channels + index_;
    const float* in = mono_.data();
    for (long long f = 0; f < take; ++f) out[f * channels] = in[f * monoChannels];
    done += take;
  }
  position_ += frames;
}
