#pragma once
// Sound sinks: pushed streams of interleaved float frames, held through the
// counted handle LSoundSink. Write of n frames consumes them and advances the
// position by n; Seek moves the write position where a sink supports it. A sink
// that fails raises its error flag and discards what follows; it never throws.
// Complete finishes what the sink writes (a file's last block, true sizes, pad
// byte) while the caller can still see the flag; a sink not completed finishes
// when it is destroyed, where a failure can no longer be seen.
// Counts are plain, not atomic (one thread at a time, as for sources).
#include <cstdint>

#include "engine/counted_handle.h"

class LSoundSinkBase {
public:
  LSoundSinkBase(std::uint32_t sampleRate, std::uint8_t channels)
      : sampleRate_(sampleRate), channels_(channels) {}
  virtual ~LSoundSinkBase() = default;
  LSoundSinkBase(const LSoundSinkBase&) = delete;
  LSoundSinkBase& operator=(const LSoundSinkBase&) = delete;

  virtual void Write(const float* buffer, long long frames) = 0;
  virtual void Seek(long long frame);
  // Later writes are discarded and raise the error flag. Sinks with nothing to
  // complete keep the default, which does nothing.
  virtual void Complete();

  long long GetPosition() const { return position_; }
  std::uint32_t GetSampleRate() const { return sampleRate_; }
  std::uint8_t GetChannels() const { return channels_; }
  bool HasError() const { return error_ != 0; }

protected:
  void SetPosition(long long position) { position_ = position; }
  void AdvancePosition(long long frames) { position_ += frames; }
  void SetError() { error_ = 1; }
  void SetFormat(std::uint32_t sampleRate, std::uint8_t channels) {
    sampleRate_ = sampleRate;
    channels_ = channels;
  }
  // Left for sinks to use as they see fit; -1 in the error sink.
  std::int32_t tag_ = 0;

private:
  template <class>
  friend class LCountedHandle;
  long long position_ = 0;
  std::uint32_t sampleRate_;
  std::uint8_t channels_;
  std::uint8_t error_ = 0;
  std::uint16_t refCount_ = 0;
};

// Discards writes without even advancing; what a closed or failed handle holds.
class LSoundSinkError final : public LSoundSinkBase {
public:
  LSoundSinkError() : LSoundSinkBase(44100, 1) {
    SetError();
    tag_ = -1;
  }
  void Write(const float*, long long) override {}
};

// Base of sinks that only count what they are given.
class LSoundSinkStubBase : public LSoundSinkBase {
public:
  using LSoundSinkBase::LSoundSinkBase;
  void Write(const float*, long long frames) override {
    if (frames > 0) AdvancePosition(frames);
  }
};

class LSoundSink : public LCountedHandle<LSoundSinkBase> {
public:
  using LCountedHandle<LSoundSinkBase>::LCountedHandle;

  // Releases the object (a file sink finishes its file) and leaves an error sink.
  void Close() { Replace(new LSoundSinkError()); }

  [[nodiscard]] static LSoundSink Error() { return LSoundSink(new LSoundSinkError()); }

  void Write(const float* buffer, long long frames) {
    if (frames > 0 && object_) object_->Write(buffer, frames);
  }
  void Seek(long long frame) {
    if (object_) object_->Seek(frame);
  }
  void Complete() {
    if (object_) object_->Complete();
  }
  long long GetPosition() const { return object_ ? object_->GetPosition() : 0; }
  std::uint32_t GetSampleRate() const { return object_ ? object_->GetSampleRate() : 44100; }
  std::uint8_t GetChannels() const { return object_ ? object_->GetChannels() : 1; }
  bool HasError() const { return !object_ || object_->HasError(); }
};

template <class T, class... Args>
[[nodiscard]] LSoundSink LMakeSink(Args&&... args) {
  return LSoundSink(new T(static_cast<Args&&>(args)...));
}
