#include "audio/audio_player.h"

LAudioStatus LAudioPlayer::Open(const LAudioStreamSpec& shape) {
  Close();
  mixer_ = std::make_unique<LAudioMixer>(shape.sampleRate, shape.channels);
  std::unique_ptr<LAudioStream> stream;
  LAudioStatus status = backend_.Open(LAudioDirection::kOutput, shape, this, &stream);
  if (status == LAudioStatus::kOK) {
    stream_ = std::move(stream);
    status = stream_->Start();
  }
  if (status != LAudioStatus::kOK) {
    stream_.reset();
    mixer_.reset();
  }
  return status;
}

void LAudioPlayer::Close() {
  if (stream_) stream_->Stop();
  stream_.reset();
  mixer_.reset();
}

std::shared_ptr<LAudioMixerInput> LAudioPlayer::Play(LSoundSource source, long long from, long long to, bool loop) {
  if (!mixer_) return nullptr;
  auto input = mixer_->Add(std::move(source));
  if (input) input->Play(from, to, loop);
  return input;
}

std::string LAudioPlayer::Message() const {
  return stream_ ? LAudioStatusMessage(stream_->Status(), stream_->DeviceName()) : std::string();
}

void LAudioPlayer::Render(float* out, long frames) {
  mixer_->LatencySet(stream_->LatencyFrames());
  mixer_->Render(out, frames);
}
