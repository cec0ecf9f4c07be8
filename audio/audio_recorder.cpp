#include "audio/audio_recorder.h"

#include <algorithm>
#include <chrono>
#include <vector>

#include "base/disk_space.h"
#include "engine/cut_list_audio_sink.h"
#include "engine/sound_cache.h"
#include "engine/sound_time.h"

namespace {

// What the ring holds: enough for the recorder's thread to fall behind a while.
constexpr double kRingSeconds = 4.0;
constexpr long kWriteBlockFrames = 4096;
constexpr auto kIdleWait = std::chrono::milliseconds(5);

std::string Duration(long long frames, std::uint32_t rate) {
  char text[32];
  LSoundTime(rate ? frames * 1000 / rate : 0)._GetTextHMMSSF(text);
  return text;
}

}  // namespace

LAudioStatus LAudioRecorder::Start(const LAudioStreamSpec& shape, LCutListAudio* target, long long frameLimit) {
  Stop();
  if (!target) return LAudioStatus::kFailed;
  channels_ = shape.channels;
  rate_ = shape.sampleRate;
  limit_ = frameLimit;
  ring_ = std::make_unique<LAudioRing>(static_cast<long>(kRingSeconds * shape.sampleRate), shape.channels);
  std::unique_ptr<LAudioStream> stream;
  LAudioStatus status = backend_.Open(LAudioDirection::kInput, shape, this, &stream);
  if (status != LAudioStatus::kOK) return status;
  target_ = target;
  sink_ = target_->OpenSink(static_cast<int>(shape.sampleRate), static_cast<unsigned char>(shape.channels), nullptr);
  (void)marker_.Create(static_cast<LCutListAudioSink*>(sink_.Get())->Item(), shape.sampleRate, shape.channels);
  written_.store(0);
  dropped_.store(0);
  nextSpaceCheck_ = 0;
  {
    std::lock_guard<std::mutex> lock(messageMutex_);
    message_.clear();
  }
  quit_.store(false);
  accepting_.store(true);
  recording_.store(true);
  stream_ = std::move(stream);
  thread_ = std::thread([this] { Run(); });
  status = stream_->Start();
  if (status != LAudioStatus::kOK) Stop();
  return status;
}

void LAudioRecorder::Stop() {
  if (stream_) stream_->Stop();
  quit_.store(true);
  if (thread_.joinable()) thread_.join();
  stream_.reset();
  recording_.store(false);
}

void LAudioRecorder::Capture(const float* in, long frames) {
  if (!accepting_.load(std::memory_order_relaxed)) return;
  levels_.Measure(in, frames, channels_);
  const long taken = ring_->Write(in, frames);
  if (taken < frames) dropped_.fetch_add(frames - taken, std::memory_order_relaxed);
}

bool LAudioRecorder::Drain() {
  std::vector<float>& block = drainBuffer_;
  for (;;) {
    long long want = kWriteBlockFrames;
    const long long written = written_.load(std::memory_order_relaxed);
    if (limit_ > 0) want = std::min(want, limit_ - written);
    if (want <= 0) return true;
    const long n = ring_->Read(block.data(), static_cast<long>(want));
    if (n <= 0) return true;
    if (written >= nextSpaceCheck_) {
      // The sink does not report failed writes, so the recorder stops while there is room.
      const long long free = LDiskFreeBytes(LSoundCache::Instance().Folder().c_str());
      if (free >= 0 && free < kLAudioRecordReserveBytes) return false;
      nextSpaceCheck_ = written + rate_ / 4;
    }
    sink_.Write(block.data(), n);
    written_.store(written + n, std::memory_order_release);
    // Commits whenever another overview block is whole.
    if ((written + n) / 256 > written / 256) {
      std::lock_guard<std::mutex> lock(targetMutex_);
      static_cast<LCutListAudioSink*>(sink_.Get())->CommitUpTo(written + n);
    }
  }
}

void LAudioRecorder::Run() {
  drainBuffer_.assign(static_cast<std::size_t>(kWriteBlockFrames) * channels_, 0.0f);
  std::string why;
  for (;;) {
    const bool quitting = quit_.load(std::memory_order_acquire);
    if (!Drain()) {
      why = "Der Datenträger ist voll. Die Aufnahme wurde angehalten; die aufgenommenen " +
            Duration(written_.load(), rate_) + " bleiben erhalten.";
      break;
    }
    if (quitting) break;
    if (limit_ > 0 && written_.load() >= limit_) break;
    if (stream_ && stream_->Status() != LAudioStatus::kOK) {
      (void)Drain();
      why = LAudioStatusMessage(stream_->Status(), stream_->DeviceName()) + " Die aufgenommenen " +
            Duration(written_.load(), rate_) + " bleiben erhalten.";
      break;
    }
    std::this_thread::sleep_for(kIdleWait);
  }
  accepting_.store(false);
  {
    std::lock_guard<std::mutex> lock(targetMutex_);
    sink_.Close();
  }
  marker_.Remove();
  if (!why.empty()) {
    std::lock_guard<std::mutex> lock(messageMutex_);
    message_ = why;
  }
  recording_.store(false, std::memory_order_release);
}

std::string LAudioRecorder::Message() const {
  std::lock_guard<std::mutex> lock(messageMutex_);
  return message_;
}

LCutListAudio LAudioRecorder::Snapshot() const {
  std::lock_guard<std::mutex> lock(targetMutex_);
  return target_ ? LCutListAudio(*target_) : LCutListAudio();
}
