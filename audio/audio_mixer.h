#pragma once
// LAudioMixer: sums several sources for one output stream, each an
// LAudioMixerInput with its own transport (play a range, loop, pause, seek,
// stop), gain, pan and mute. Sources at another rate are converted (libsoxr)
// and channel counts mapped to the device's.
//
// Threads: a reader thread of the mixer reads each input's source ahead into the
// input's lock-free block ring; Render, the real-time callback, only drains the
// rings. A source handed to an input belongs to the mixer from then on (its
// chain is handed over whole: nobody else may read it or share its handles).
// The control calls may come from any one thread.
#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#include "audio/audio_block_ring.h"
#include "audio/audio_device.h"
#include "audio/audio_levels.h"
#include "engine/sound_source.h"

class LAudioMixer;

// Output channels with a factor of their own; the rest share the last one.
inline constexpr int kLAudioMixerChannelFactors = 3;

class LAudioMixerInput {
public:
  ~LAudioMixerInput();
  LAudioMixerInput(const LAudioMixerInput&) = delete;
  LAudioMixerInput& operator=(const LAudioMixerInput&) = delete;

  // All frames are the source's own. Plays [from, to) (to < 0: to the end),
  // over and over when loop is set.
  void Play(long long from, long long to = -1, bool loop = false);
  // Goes on playing from frame (inside the range when one plays).
  void Seek(long long frame);
  void Stop();
  // Goes on from the frame heard now with another source of the same rate, as
  // an effect preview does when its settings change (the dialog opens a new
  // processing source over the same input). False when the rate differs.
  [[nodiscard]] bool SourceSet(LSoundSource source);
  void Pause();
  void Resume();
  void GainSet(float gain) { gain_.store(gain, std::memory_order_relaxed); }
  // -1 left .. 0 centre .. +1 right; the far side is turned down, the near one kept.
  void PanSet(float pan) { pan_.store(pan, std::memory_order_relaxed); }
  void MuteSet(bool mute) { mute_.store(mute, std::memory_order_relaxed); }

  // The source frame being heard now, the device's latency included.
  [[nodiscard]] long long Position() const;
  // Playing has reached the end of its range and the last frame has been heard.
  [[nodiscard]] bool IsFinished() const;
  [[nodiscard]] bool IsPaused() const { return paused_.load(std::memory_order_relaxed); }
  // Times the callback found the ring dry while data was still to come.
  [[nodiscard]] long Underruns() const { return underruns_.load(std::memory_order_relaxed); }
  [[nodiscard]] long long SourceEnd() const { return end_; }
  LAudioLevels& Levels() { return levels_; }

private:
  friend class LAudioMixer;
  LAudioMixerInput(LAudioMixer* mixer, LSoundSource source);

  // A stretch of device frames that played consecutive source frames.
  struct Run {
    std::atomic<long long> device{0};
    std::atomic<long long> source{0};
    std::atomic<long long> length{0};
    std::atomic<std::uint32_t> generation{0};
  };
  static constexpr int kRuns = 8;

  struct Request {
    long long from = 0, to = -1, at = 0;
    bool loop = false, stop = false;
  };
  void RequestPost(const Request& request);
  // Reader thread: follows the newest request and fills the ring; true when it wrote.
  bool Fill();
  // Real-time: adds frames of this input into out, starting at device frame d.
  void MixInto(float* out, long frames, int channels, long long d);
  void RunExtend(long long device, long long source, long frames);
  long long DeviceToSource(long long f) const;
  long long SourceToDevice(long long f) const;

  LAudioMixer* mixer_;
  LSoundSource source_;  // at the device's rate and channels; the reader's alone
  std::uint32_t sourceRate_;
  std::uint32_t deviceRate_;
  long long end_;  // in source frames
  LAudioBlockRing ring_;
  std::vector<float> scratch_;

  std::mutex requestMutex_;
  Request request_;
  LSoundSource pending_;  // a replacement source, converted already; empty when none
  std::atomic<std::uint32_t> generation_{0};
  // Reader's state of the request it serves.
  std::uint32_t readerGeneration_ = 0;
  Request serving_;
  long long readAt_ = 0;  // device frames
  bool readerDone_ = true;

  // Real-time state.
  long consumed_ = 0;  // frames taken from the front block
  bool started_ = false;
  std::uint32_t playingGeneration_ = 0;
  // The request whose last frame was handed over, and the device frame after it.
  std::atomic<std::uint32_t> endedGeneration_{0};
  std::atomic<long long> endedAt_{0};
  // Runs are written by the callback alone; readers retry while the sequence is odd or moved.
  std::atomic<std::uint32_t> sequence_{0};
  Run runs_[kRuns];
  std::atomic<int> runHead_{0};
  std::atomic<int> runCount_{0};
  std::atomic<long long> startPosition_{0};

  std::atomic<float> gain_{1.0f};
  std::atomic<float> pan_{0.0f};
  std::atomic<bool> mute_{false};
  std::atomic<bool> paused_{false};
  std::atomic<long> underruns_{0};
  LAudioLevels levels_;
};

class LAudioMixer final : public LAudioCallback {
public:
  // Mixes for a device of this rate and channel count. With a reader thread the
  // inputs are read ahead by themselves; without, whoever drives Render calls
  // FillAll first (tests, benchmarks).
  LAudioMixer(std::uint32_t sampleRate, int channels, bool readerThread = true);
  ~LAudioMixer() override;
  LAudioMixer(const LAudioMixer&) = delete;
  LAudioMixer& operator=(const LAudioMixer&) = delete;

  // A new input over source, stopped; null when all places are taken.
  [[nodiscard]] std::shared_ptr<LAudioMixerInput> Add(LSoundSource source);
  // Takes an input out; when Remove returns, the callback no longer touches it.
  void Remove(const std::shared_ptr<LAudioMixerInput>& input);

  // The device's latency, taken into the positions reported.
  void LatencySet(long frames) { latency_.store(frames, std::memory_order_relaxed); }
  // Reads every input ahead as far as its ring allows.
  void FillAll();

  void Render(float* out, long frames) override;

  std::uint32_t SampleRate() const { return sampleRate_; }
  int Channels() const { return channels_; }
  // Device frames rendered so far.
  long long DeviceFrames() const { return deviceFrames_.load(std::memory_order_acquire); }
  long Latency() const { return latency_.load(std::memory_order_relaxed); }
  LAudioLevels& Levels() { return levels_; }

  static constexpr int kMaxInputs = 16;
  // Frames per block of an input's ring, and how far ahead it is read.
  static constexpr long kBlockFrames = 1024;

private:
  friend class LAudioMixerInput;
  void Wake();
  void ReaderLoop();

  std::uint32_t sampleRate_;
  int channels_;
  std::atomic<LAudioMixerInput*> slots_[kMaxInputs] = {};
  std::atomic<bool> rendering_{false};
  std::atomic<long long> deviceFrames_{0};
  std::atomic<long> latency_{0};
  LAudioLevels levels_;

  std::mutex inputsMutex_;
  std::vector<std::shared_ptr<LAudioMixerInput>> inputs_;
  std::condition_variable wake_;
  bool woken_ = false;
  bool quit_ = false;
  std::thread reader_;
};
