#include "audio/audio_null_backend.h"

#include <algorithm>
#include <chrono>
#include <cstring>

namespace {

// Device names; the monitor follows the PulseAudio naming of a sink's input.
constexpr const char* kNullOutput = "null";
constexpr const char* kNullInput = "null.monitor";

}  // namespace

LAudioNullStream::LAudioNullStream(LAudioDirection direction, const LAudioStreamSpec& shape, LAudioCallback* callback,
                                   bool realTime, long latency, long keepFrames, Generator generate)
    : LAudioStream(shape),
      direction_(direction),
      callback_(callback),
      realTime_(realTime),
      generate_(std::move(generate)),
      keepSamples_(static_cast<std::size_t>(std::max(keepFrames, 0L)) * shape.channels) {
  deviceName_ = direction == LAudioDirection::kOutput ? kNullOutput : kNullInput;
  buffer_.assign(static_cast<std::size_t>(shape.bufferFrames) * shape.channels, 0.0f);
  played_.reserve(keepSamples_);
  LatencySet(latency);
}

LAudioNullStream::~LAudioNullStream() { Stop(); }

LAudioStatus LAudioNullStream::Start() {
  if (Status() != LAudioStatus::kOK) return Status();
  if (running_.exchange(true)) return LAudioStatus::kOK;
  if (realTime_) {
    clock_ = std::thread([this] {
      const auto period = std::chrono::duration<double>(static_cast<double>(spec_.bufferFrames) / spec_.sampleRate);
      auto next = std::chrono::steady_clock::now();
      while (running_.load(std::memory_order_acquire) && Status() == LAudioStatus::kOK) {
        Tick(static_cast<long>(spec_.bufferFrames));
        next += std::chrono::duration_cast<std::chrono::steady_clock::duration>(period);
        std::this_thread::sleep_until(next);
      }
    });
  }
  return LAudioStatus::kOK;
}

void LAudioNullStream::Stop() {
  running_.store(false, std::memory_order_release);
  if (clock_.joinable()) clock_.join();
}

void LAudioNullStream::Tick(long frames) {
  const long long at = done_.load(std::memory_order_relaxed);
  float* buffer = buffer_.data();
  if (direction_ == LAudioDirection::kOutput) {
    callback_->Render(buffer, frames);
    const std::size_t keep = std::min(keepSamples_ - played_.size(), static_cast<std::size_t>(frames) * spec_.channels);
    played_.insert(played_.end(), buffer, buffer + keep);
  } else {
    if (generate_)
      generate_(buffer, frames, at);
    else
      std::memset(buffer, 0, static_cast<std::size_t>(frames) * spec_.channels * sizeof(float));
    callback_->Capture(buffer, frames);
  }
  done_.store(at + frames, std::memory_order_release);
}

bool LAudioNullStream::Pump(long long frames) {
  while (frames > 0 && Status() == LAudioStatus::kOK) {
    const long n = static_cast<long>(std::min<long long>(frames, spec_.bufferFrames));
    Tick(n);
    frames -= n;
  }
  return Status() == LAudioStatus::kOK;
}

void LAudioNullStream::Vanish() { StatusSet(LAudioStatus::kDeviceLost); }

LAudioStatus LAudioNullBackend::Enumerate(std::vector<LAudioDeviceInfo>* devices) {
  devices->clear();
  devices->push_back({kNullOutput, "Stumme Ausgabe", LAudioDirection::kOutput, 48000, 2, true});
  devices->push_back({kNullInput, "Stille Eingabe", LAudioDirection::kInput, 48000, 2, true});
  return LAudioStatus::kOK;
}

LAudioStatus LAudioNullBackend::Open(LAudioDirection direction, const LAudioStreamSpec& shape, LAudioCallback* callback,
                                     std::unique_ptr<LAudioStream>* stream) {
  std::vector<LAudioDeviceInfo> devices;
  (void)Enumerate(&devices);
  if (!LAudioDeviceFind(devices, direction, shape.device)) return LAudioStatus::kNoDevice;
  if (shape.sampleRate < 1000 || shape.channels < 1 || shape.channels > 32 || shape.bufferFrames == 0)
    return LAudioStatus::kFormatRefused;
  auto made = std::make_unique<LAudioNullStream>(direction, shape, callback, options_.realTime, options_.latencyFrames,
                                                 options_.keepFrames, options_.generate);
  last_ = made.get();
  *stream = std::move(made);
  return LAudioStatus::kOK;
}
