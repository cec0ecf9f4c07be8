#pragma once
// LAudioDevice: the small device interface that playback and recording sit on,
// with backends for PulseAudio, ALSA and a null device with a simulated clock.
//
// A backend lists devices afresh on every ask and tells a watcher when devices
// come and go. A stream is opened on one device for output or input with a rate,
// a channel count (interleaved float) and a buffer size, and calls its
// LAudioCallback on the backend's real-time thread.
//
// Threads: Enumerate, Open*, Start, Stop and the queries may be called from any
// one control thread. The callback runs on the backend's thread and must never
// block, lock, allocate, free, log or touch a file. Latency, underruns and the
// status are atomics, safe to read from any thread.
#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

enum class LAudioDirection : std::uint8_t { kOutput, kInput };

// What a device or stream operation came to. The message is chosen by it.
enum class LAudioStatus : std::uint8_t {
  kOK = 0,
  kBackendMissing,   // this build or machine has no such backend
  kNoServer,         // the sound server cannot be reached
  kNoDevice,         // no device of that name
  kFormatRefused,    // the device does not take this rate, channel count or buffer
  kDeviceLost,       // the device went away while the stream ran
  kFailed,           // anything else the backend refused
};

// The German message for a status; device names the device where it matters.
[[nodiscard]] std::string LAudioStatusMessage(LAudioStatus status, const std::string& device = "");

struct LAudioDeviceInfo {
  std::string name;         // the sound server's own name (a sink, a source, an ALSA PCM)
  std::string description;  // what a person reads
  LAudioDirection direction = LAudioDirection::kOutput;
  std::uint32_t sampleRate = 0;  // 0: the device takes what it is given
  int channels = 0;              // 0: not known before opening
  bool isDefault = false;
};

// A device change seen by the watcher.
struct LAudioDeviceEvent {
  enum Kind : std::uint8_t { kAdded, kRemoved, kChanged } kind = kChanged;
  LAudioDirection direction = LAudioDirection::kOutput;
};

struct LAudioStreamSpec {
  std::string device;  // name or description; empty: the default device
  std::uint32_t sampleRate = 48000;
  int channels = 2;
  std::uint32_t bufferFrames = 1024;  // what the device is asked to hold ahead
};

// Called on the backend's real-time thread. Render fills frames × channels
// floats for an output stream; Capture is handed what an input stream read.
class LAudioCallback {
public:
  virtual ~LAudioCallback() = default;
  virtual void Render(float* out, long frames) { (void)out, (void)frames; }
  virtual void Capture(const float* in, long frames) { (void)in, (void)frames; }
};

class LAudioStream {
public:
  virtual ~LAudioStream() = default;
  LAudioStream(const LAudioStream&) = delete;
  LAudioStream& operator=(const LAudioStream&) = delete;

  [[nodiscard]] virtual LAudioStatus Start() = 0;
  // Stops calling the callback; when Stop returns, no call is running.
  virtual void Stop() = 0;

  const LAudioStreamSpec& Shape() const { return spec_; }
  // The device's own name, once open.
  const std::string& DeviceName() const { return deviceName_; }
  // Frames between the callback and the speaker (output) or the microphone and the callback (input).
  long LatencyFrames() const { return latency_.load(std::memory_order_relaxed); }
  // Times the device ran dry (output) or overflowed (input).
  long Underruns() const { return underruns_.load(std::memory_order_relaxed); }
  // kDeviceLost once the device went away; the callback is not called after that.
  LAudioStatus Status() const { return status_.load(std::memory_order_acquire); }

protected:
  explicit LAudioStream(const LAudioStreamSpec& shape) : spec_(shape) {}
  void LatencySet(long frames) { latency_.store(frames, std::memory_order_relaxed); }
  void UnderrunCount() { underruns_.fetch_add(1, std::memory_order_relaxed); }
  void StatusSet(LAudioStatus status) { status_.store(status, std::memory_order_release); }

  LAudioStreamSpec spec_;
  std::string deviceName_;

private:
  std::atomic<long> latency_{0};
  std::atomic<long> underruns_{0};
  std::atomic<LAudioStatus> status_{LAudioStatus::kOK};
};

class LAudioBackend {
public:
  virtual ~LAudioBackend() = default;
  [[nodiscard]] virtual const char* Name() const = 0;
  // Lists the devices as they are now.
  [[nodiscard]] virtual LAudioStatus Enumerate(std::vector<LAudioDeviceInfo>* devices) = 0;
  // The callback must outlive the stream.
  [[nodiscard]] virtual LAudioStatus Open(LAudioDirection direction, const LAudioStreamSpec& shape,
                                          LAudioCallback* callback, std::unique_ptr<LAudioStream>* stream) = 0;
  // The watcher is called on the backend's thread when devices come, go or change;
  // an empty function stops watching. Backends that cannot watch answer false.
  virtual bool Watch(std::function<void(const LAudioDeviceEvent&)> watcher) {
    (void)watcher;
    return false;
  }
};

// The backend by name ("pulse", "alsa", "null"); empty: SONVALE_AUDIO_BACKEND when
// set, else PulseAudio when its server answers, else ALSA. Null when the name is
// unknown or the backend is not in this build.
[[nodiscard]] std::unique_ptr<LAudioBackend> LAudioBackendCreate(const std::string& name = "");

// The variable that chooses the backend for scripts and tests.
inline constexpr const char* kLAudioBackendVariable = "SONVALE_AUDIO_BACKEND";

// Finds a device by name, then by description; the default one when wanted is empty.
[[nodiscard]] const LAudioDeviceInfo* LAudioDeviceFind(const std::vector<LAudioDeviceInfo>& devices,
                                                       LAudioDirection direction, const std::string& wanted);
