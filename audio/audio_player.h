#pragma once
// LAudioPlayer: an output stream with a mixer on it. Plays cut lists (through
// their sources), previews (an effect's processing source over a selection) and
// anything else that is a source, several at once, each with its own transport.
//
// Threads: one control thread calls everything here; the stream's callback and
// the mixer's reader run on their own threads.
#include <memory>
#include <string>

#include "audio/audio_device.h"
#include "audio/audio_mixer.h"

class LAudioPlayer final : public LAudioCallback {
public:
  explicit LAudioPlayer(LAudioBackend& backend) : backend_(backend) {}
  ~LAudioPlayer() override { Close(); }
  LAudioPlayer(const LAudioPlayer&) = delete;
  LAudioPlayer& operator=(const LAudioPlayer&) = delete;

  // Opens and starts the output; the mixer runs at the shape's rate and channels.
  [[nodiscard]] LAudioStatus Open(const LAudioStreamSpec& shape);
  void Close();

  // Plays frames [from, to) of source (to < 0: to its end), looping when asked;
  // null when the player is not open or the mixer is full.
  [[nodiscard]] std::shared_ptr<LAudioMixerInput> Play(LSoundSource source, long long from = 0, long long to = -1,
                                                       bool loop = false);
  void Remove(const std::shared_ptr<LAudioMixerInput>& input) {
    if (mixer_) mixer_->Remove(input);
  }

  LAudioMixer* Mixer() { return mixer_.get(); }
  LAudioStream* Stream() { return stream_.get(); }
  // kDeviceLost once the device went away; the message says so in German.
  [[nodiscard]] LAudioStatus Status() const { return stream_ ? stream_->Status() : LAudioStatus::kOK; }
  [[nodiscard]] std::string Message() const;

  void Render(float* out, long frames) override;

private:
  LAudioBackend& backend_;
  std::unique_ptr<LAudioMixer> mixer_;
  std::unique_ptr<LAudioStream> stream_;
};
