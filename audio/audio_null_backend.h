#pragma once
// LAudioNullBackend: devices without hardware, for tests, benchmarks and machines
// without sound. Its clock is simulated: a stream either runs on a thread of its
// own at the requested rate in real time, or (paced) is driven by Pump, which
// runs the callback for as many frames as asked, at once.
#include <atomic>
#include <functional>
#include <memory>
#include <thread>
#include <vector>

#include "audio/audio_device.h"

class LAudioNullStream final : public LAudioStream {
public:
  // Input frames are made by generate(out, frames, first frame); silence without.
  using Generator = std::function<void(float* out, long frames, long long at)>;
  LAudioNullStream(LAudioDirection direction, const LAudioStreamSpec& shape, LAudioCallback* callback, bool realTime,
                   long latency, long keepFrames, Generator generate);
  ~LAudioNullStream() override;

  LAudioStatus Start() override;
  void Stop() override;

  // Paced streams: runs the callback over frames frames in blocks of the buffer
  // size. Answers false once the device is lost.
  bool Pump(long long frames);
  // The device goes away, as when it is unplugged.
  void Vanish();
  // Output: what the callback rendered, up to the number of frames kept.
  const std::vector<float>& Played() const { return played_; }
  long long FramesDone() const { return done_.load(std::memory_order_acquire); }

private:
  void Tick(long frames);

  LAudioDirection direction_;
  LAudioCallback* callback_;
  bool realTime_;
  Generator generate_;
  std::vector<float> buffer_;
  std::vector<float> played_;
  std::size_t keepSamples_;
  std::atomic<long long> done_{0};
  std::atomic<bool> running_{false};
  std::thread clock_;
};

class LAudioNullBackend final : public LAudioBackend {
public:
  struct Options {
    bool realTime = true;
    long latencyFrames = 0;
    long keepFrames = 0;  // output frames kept for Played
    LAudioNullStream::Generator generate;
  };
  LAudioNullBackend() = default;
  explicit LAudioNullBackend(Options options) : options_(std::move(options)) {}

  const char* Name() const override { return "null"; }
  LAudioStatus Enumerate(std::vector<LAudioDeviceInfo>* devices) override;
  LAudioStatus Open(LAudioDirection direction, const LAudioStreamSpec& shape, LAudioCallback* callback,
                    std::unique_ptr<LAudioStream>* stream) override;

  // The stream opened last (owned by whoever opened it).
  LAudioNullStream* LastStream() const { return last_; }

private:
  Options options_;
  LAudioNullStream* last_ = nullptr;
};
