#pragma once
// Sound sources: pulled streams of interleaved 32-bit float frames (full scale
// +-1.0), held through the counted handle LSoundSource.
//
// The source contract, kept by every source:
//  1. Read of n frames delivers exactly n frames and advances the position by n.
//     Frames before 0 and at or past GetEndSample read as 0.0; data a source
//     cannot produce (a failed file read) reads as silence, never as an error.
//  2. Seek may go anywhere, also outside 0 .. GetEndSample.
//  3. GetPositionSample is the frame the next Read starts at.
//  4. A growing source answers IsStreaming with true; a reader at its current end
//     calls WaitForStreamingData and asks again. A source that learns its length
//     only by reading to its end (compressed sound) streams that way to a reader
//     that asks GetEndSampleKnown; GetEndSample makes it find the length first.
//  5. A wrapping source holds the handle of what it wraps, reads through it and
//     forwards Seek after clearing its own state.
// The handle checks the count: the object's Read is only ever called with n > 0.
// Counts are plain, not atomic: a handle and what it shares belong to one thread
// at a time; a chain handed to another thread is handed over whole.
#include <cstdint>

#include "engine/counted_handle.h"

// Reason codes kept in a source's error field. The opener's message is chosen by it.
enum LSoundSourceErrorCode : unsigned char {
  kLSourceOK = 0,
  kLSourceClosed = 1,         // a bare error source; also an unknown raw format code
  kLSourceBadInput = 2,       // the input of a wrapping source was in error
  kLSourceDamaged = 3,        // damaged or truncated file; or a format substituted
  kLSourceCannotOpen = 4,     // the file cannot be opened
  kLSourceUnsupported = 5,    // a format no reader here handles
  kLSourceCodecMissing = 7,   // a needed codec is not available
};

class LSoundSourceBase {
public:
  LSoundSourceBase(std::uint32_t sampleRate, std::uint8_t channels)
      : sampleRate_(sampleRate), channels_(channels) {}
  virtual ~LSoundSourceBase() = default;
  LSoundSourceBase(const LSoundSourceBase&) = delete;
  LSoundSourceBase& operator=(const LSoundSourceBase&) = delete;

  virtual void Read(float* buffer, long long frames) = 0;
  virtual long long GetPositionSample() const = 0;
  virtual long long GetEndSample() const = 0;
  // The end as far as it is known without extra work: GetEndSample, except for a
  // source that learns its length while it is read, which answers the frames it
  // has ready and streams until it knows.
  virtual long long GetEndSampleKnown() const { return GetEndSample(); }
  // A guess of the end for progress and disk space, without extra work.
  virtual long long GetEndSampleEstimate() const { return GetEndSampleKnown(); }
  virtual void Seek(long long frame);
  virtual int ControlMessage(int code, long* value);
  virtual long long AdjustRelativeOffset(long long offset, long long reference);
  virtual bool IsStreaming() const;
  virtual void WaitForStreamingData(int milliseconds);

  std::uint32_t GetSampleRate() const { return sampleRate_; }
  std::uint8_t GetChannels() const { return channels_; }
  unsigned char GetErrorCode() const { return errorCode_; }
  float GetMaxAmplitude() const { return maxAmplitude_; }

protected:
  void SetErrorCode(unsigned char code) { errorCode_ = code; }
  void SetMaxAmplitude(float value) { maxAmplitude_ = value; }
  void SetFormat(std::uint32_t sampleRate, std::uint8_t channels) {
    sampleRate_ = sampleRate;
    channels_ = channels;
  }

private:
  template <class>
  friend class LCountedHandle;
  std::uint32_t sampleRate_;
  std::uint8_t channels_;
  // The largest magnitude the source can deliver: 32767/32768 for integer PCM,
  // 1.0 for G.711, 16.0 (no promise) otherwise.
  float maxAmplitude_ = 16.0f;
  unsigned char errorCode_ = 0;
  std::uint16_t refCount_ = 0;
};

// Reads silence and reports no frames; what a closed or failed handle holds.
class LSoundSourceError final : public LSoundSourceBase {
public:
  explicit LSoundSourceError(unsigned char code = kLSourceClosed) : LSoundSourceBase(11025, 1) {
    SetErrorCode(code);
  }
  void Read(float* buffer, long long frames) override;
  long long GetPositionSample() const override { return 0; }
  long long GetEndSample() const override { return 0; }
};

class LSoundSource : public LCountedHandle<LSoundSourceBase> {
public:
  using LCountedHandle<LSoundSourceBase>::LCountedHandle;

  // Releases the object and leaves an error source in its place (an empty
  // handle stays empty).
  void Close() {
    if (object_) Replace(new LSoundSourceError());
  }

  // An error object holding the reason code.
  [[nodiscard]] static LSoundSource Error(unsigned char code) { return LSoundSource(new LSoundSourceError(code)); }

  void Read(float* buffer, long long frames) {
    if (frames > 0 && object_) object_->Read(buffer, frames);
  }
  void Seek(long long frame) {
    if (object_) object_->Seek(frame);
  }
  long long GetPositionSample() const { return object_ ? object_->GetPositionSample() : 0; }
  long long GetEndSample() const { return object_ ? object_->GetEndSample() : 0; }
  long long GetEndSampleKnown() const { return object_ ? object_->GetEndSampleKnown() : 0; }
  long long GetEndSampleEstimate() const { return object_ ? object_->GetEndSampleEstimate() : 0; }
  bool IsStreaming() const { return object_ && object_->IsStreaming(); }
  void WaitForStreamingData(int milliseconds) {
    if (object_) object_->WaitForStreamingData(milliseconds);
  }
  int ControlMessage(int code, long* value) { return object_ ? object_->ControlMessage(code, value) : 0; }
  long long AdjustRelativeOffset(long long offset, long long reference) {
    return object_ ? object_->AdjustRelativeOffset(offset, reference) : offset;
  }

  std::uint32_t GetSampleRate() const { return object_ ? object_->GetSampleRate() : 11025; }
  std::uint8_t GetChannels() const { return object_ ? object_->GetChannels() : 1; }
  unsigned char GetErrorCode() const {
    return object_ ? object_->GetErrorCode() : static_cast<unsigned char>(kLSourceClosed);
  }
  float GetMaxAmplitude() const { return object_ ? object_->GetMaxAmplitude() : 16.0f; }
  bool IsError() const { return GetErrorCode() != kLSourceOK; }
};

// Makes a source object and hands it over to a handle.
template <class T, class... Args>
[[nodiscard]] LSoundSource LMakeSource(Args&&... args) {
  return LSoundSource(new T(static_cast<Args&&>(args)...));
}
