#include "audio/audio_alsa_backend.h"

#ifndef SONVALE_HAVE_ALSA

std::unique_ptr<LAudioBackend> LAudioAlsaBackendCreate() { return nullptr; }

#else

#include "audio/alsa_api.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstring>
#include <thread>

namespace {

// libasound prints its own complaints to standard error; ours are results with a German message.
void QuietAlsa(const char*, int, const char*, int, const char*, ...) {}

class AlsaStream final : public LAudioStream {
public:
  AlsaStream(snd_pcm_t* pcm, LAudioDirection direction, const LAudioStreamSpec& shape, LAudioCallback* callback,
             snd_pcm_uframes_t period)
      : LAudioStream(shape), pcm_(pcm), direction_(direction), callback_(callback), period_(period) {
    deviceName_ = shape.device.empty() ? "default" : shape.device;
    buffer_.assign(static_cast<std::size_t>(period) * shape.channels, 0.0f);
  }
  ~AlsaStream() override {
    Stop();
    Snd().snd_pcm_close(pcm_);
  }

  LAudioStatus Start() override {
    if (running_.exchange(true)) return LAudioStatus::kOK;
    if (Snd().snd_pcm_prepare(pcm_) < 0) {
      running_ = false;
      return LAudioStatus::kFailed;
    }
    thread_ = std::thread([this] { Run(); });
    return LAudioStatus::kOK;
  }
  void Stop() override {
    running_.store(false);
    if (thread_.joinable()) thread_.join();
    Snd().snd_pcm_drop(pcm_);
  }

private:
  void Run() {
    const snd_pcm_uframes_t frames = period_;
    while (running_.load(std::memory_order_relaxed)) {
      snd_pcm_sframes_t done;
      if (direction_ == LAudioDirection::kOutput) {
        callback_->Render(buffer_.data(), static_cast<long>(frames));
        done = Snd().snd_pcm_writei(pcm_, buffer_.data(), frames);
      } else {
        done = Snd().snd_pcm_readi(pcm_, buffer_.data(), frames);
        if (done > 0) callback_->Capture(buffer_.data(), static_cast<long>(done));
      }
      if (done == -EPIPE || done == -ESTRPIPE) {
        UnderrunCount();
        if (Snd().snd_pcm_recover(pcm_, static_cast<int>(done), 1) < 0) done = -ENODEV;
      }
      if (done == -ENODEV || done == -EBADFD || done == -EIO) {
        StatusSet(LAudioStatus::kDeviceLost);
        return;
      }
      snd_pcm_sframes_t delay = 0;
      if (Snd().snd_pcm_delay(pcm_, &delay) == 0) LatencySet(static_cast<long>(std::max<snd_pcm_sframes_t>(delay, 0)));
    }
  }

  snd_pcm_t* pcm_;
  LAudioDirection direction_;
  LAudioCallback* callback_;
  snd_pcm_uframes_t period_;
  std::vector<float> buffer_;
  std::atomic<bool> running_{false};
  std::thread thread_;
};

class AlsaBackend final : public LAudioBackend {
public:
  const char* Name() const override { return "alsa"; }

  LAudioStatus Enumerate(std::vector<LAudioDeviceInfo>* devices) override {
    devices->clear();
    devices->push_back({"default", "Standardgerät", LAudioDirection::kOutput, 0, 0, true});
    devices->push_back({"default", "Standardgerät", LAudioDirection::kInput, 0, 0, true});
    void** hints = nullptr;
    if (Snd().snd_device_name_hint(-1, "pcm", &hints) < 0) return LAudioStatus::kOK;
    for (void** h = hints; *h; ++h) {
      char* name = Snd().snd_device_name_get_hint(*h, "NAME");
      char* desc = Snd().snd_device_name_get_hint(*h, "DESC");
      char* io = Snd().snd_device_name_get_hint(*h, "IOID");
      if (name && std::strcmp(name, "default") != 0 && std::strcmp(name, "null") != 0) {
        std::string description = desc ? desc : name;
        std::replace(description.begin(), description.end(), '\n', ' ');
        if (!io || std::strcmp(io, "Output") == 0)
          devices->push_back({name, description, LAudioDirection::kOutput, 0, 0, false});
        if (!io || std::strcmp(io, "Input") == 0)
          devices->push_back({name, description, LAudioDirection::kInput, 0, 0, false});
      }
      std::free(name);
      std::free(desc);
      std::free(io);
    }
    Snd().snd_device_name_free_hint(hints);
    return LAudioStatus::kOK;
  }

  LAudioStatus Open(LAudioDirection direction, const LAudioStreamSpec& shape, LAudioCallback* callback,
                    std::unique_ptr<LAudioStream>* stream) override {
    if (shape.sampleRate < 1000 || shape.channels < 1 || shape.bufferFrames == 0) return LAudioStatus::kFormatRefused;
    const std::string name = shape.device.empty() ? "default" : shape.device;
    snd_pcm_t* pcm = nullptr;
    const snd_pcm_stream_t way =
        direction == LAudioDirection::kOutput ? SND_PCM_STREAM_PLAYBACK : SND_PCM_STREAM_CAPTURE;
    const int opened = Snd().snd_pcm_open(&pcm, name.c_str(), way, 0);
    if (opened < 0) return opened == -ENOENT || opened == -ENODEV || opened == -EINVAL ? LAudioStatus::kNoDevice : LAudioStatus::kFailed;
    snd_pcm_hw_params_t* hw = nullptr;
    Snd().snd_pcm_hw_params_malloc(&hw);
    unsigned rate = shape.sampleRate;
    snd_pcm_uframes_t buffer = shape.bufferFrames;
    snd_pcm_uframes_t period = std::max<snd_pcm_uframes_t>(shape.bufferFrames / 4, 16);
    const bool ok = Snd().snd_pcm_hw_params_any(pcm, hw) >= 0 &&
                    Snd().snd_pcm_hw_params_set_access(pcm, hw, SND_PCM_ACCESS_RW_INTERLEAVED) >= 0 &&
                    Snd().snd_pcm_hw_params_set_format(pcm, hw, SND_PCM_FORMAT_FLOAT) >= 0 &&
                    Snd().snd_pcm_hw_params_set_channels(pcm, hw, static_cast<unsigned>(shape.channels)) >= 0 &&
                    Snd().snd_pcm_hw_params_set_rate(pcm, hw, rate, 0) >= 0 &&
                    Snd().snd_pcm_hw_params_set_buffer_size_near(pcm, hw, &buffer) >= 0 &&
                    Snd().snd_pcm_hw_params_set_period_size_near(pcm, hw, &period, nullptr) >= 0 &&
                    Snd().snd_pcm_hw_params(pcm, hw) >= 0;
    Snd().snd_pcm_hw_params_free(hw);
    if (!ok) {
      Snd().snd_pcm_close(pcm);
      return LAudioStatus::kFormatRefused;
    }
    *stream = std::make_unique<AlsaStream>(pcm, direction, shape, callback, period);
    return LAudioStatus::kOK;
  }
};

}  // namespace

std::unique_ptr<LAudioBackend> LAudioAlsaBackendCreate() {
  if (!LAlsaApi::Load()) return nullptr;
  Snd().snd_lib_error_set_handler(QuietAlsa);
  return std::make_unique<AlsaBackend>();
}

#endif
