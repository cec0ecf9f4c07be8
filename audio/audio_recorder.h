#pragma once
// LAudioRecorder: records from an input device into a new sound-cache item
// through the cut-list sink. The real-time callback only puts frames into a
// lock-free ring; the recorder's thread writes them to the item and commits
// whole overview blocks into the target cut list as it goes, so a waveform can
// grow while recording and whatever was committed survives a crash.
//
// Recording ends when Stop is called, when the frame limit is reached, when the
// device goes away or when the disk fills; in every case what came so far is
// kept, and the target ends up holding it as its single segment. A program
// killed while recording leaves the item to be found again (recording_recovery.h).
//
// Threads: one control thread calls everything here. The target cut list
// belongs to the recorder between Start and Stop; read it through Snapshot.
#include <atomic>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "audio/audio_device.h"
#include "audio/audio_levels.h"
#include "audio/audio_ring.h"
#include "audio/recording_recovery.h"
#include "engine/cut_list_audio.h"
#include "engine/sound_sink.h"

// Below this much free space in the cache's folder, recording stops.
inline constexpr long long kLAudioRecordReserveBytes = 16LL * 1024 * 1024;

class LAudioRecorder final : public LAudioCallback {
public:
  explicit LAudioRecorder(LAudioBackend& backend) : backend_(backend) {}
  ~LAudioRecorder() override { Stop(); }
  LAudioRecorder(const LAudioRecorder&) = delete;
  LAudioRecorder& operator=(const LAudioRecorder&) = delete;

  // Opens the input and starts recording into target; frameLimit > 0 ends the
  // recording after that many frames.
  [[nodiscard]] LAudioStatus Start(const LAudioStreamSpec& shape, LCutListAudio* target, long long frameLimit = 0);
  // Ends the recording: what the device delivered until now is written and the
  // target holds it. Harmless when not recording.
  void Stop();

  // False once the recording has ended, by Stop or by itself.
  [[nodiscard]] bool IsRecording() const { return recording_.load(std::memory_order_acquire); }
  // Frames written into the item so far.
  [[nodiscard]] long long Frames() const { return written_.load(std::memory_order_acquire); }
  // Frames the device delivered that found the ring full and were lost.
  [[nodiscard]] long long DroppedFrames() const { return dropped_.load(std::memory_order_relaxed); }
  // Why the recording ended by itself (device lost, disk full); empty otherwise.
  [[nodiscard]] std::string Message() const;
  // A copy of the target as last committed.
  [[nodiscard]] LCutListAudio Snapshot() const;
  LAudioLevels& Levels() { return levels_; }
  LAudioStream* Stream() { return stream_.get(); }

  void Capture(const float* in, long frames) override;

private:
  void Run();
  // Writes what the ring holds, up to the limit; false when the disk is full.
  bool Drain();

  LAudioBackend& backend_;
  std::unique_ptr<LAudioStream> stream_;
  std::unique_ptr<LAudioRing> ring_;
  LAudioLevels levels_;
  LCutListAudio* target_ = nullptr;
  LSoundSink sink_;
  LAudioRecordingMarker marker_;
  long long limit_ = 0;
  int channels_ = 1;
  std::uint32_t rate_ = 0;
  long long nextSpaceCheck_ = 0;
  std::vector<float> drainBuffer_;
  mutable std::mutex targetMutex_;
  mutable std::mutex messageMutex_;
  std::string message_;
  std::atomic<bool> recording_{false};
  std::atomic<bool> accepting_{false};
  std::atomic<bool> quit_{false};
  std::atomic<long long> written_{0};
  std::atomic<long long> dropped_{0};
  std::thread thread_;
};
