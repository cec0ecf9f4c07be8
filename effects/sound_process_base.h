#pragma once
// LSoundProcessBase: the base of every processing source (LSRC...). It holds a
// counted handle on its input and forwards every operation but Read to it, so an
// effect keeps its input's length and positions. Sources that delay the signal
// or change the timeline override the position operations.
//
// Construction copies the input's rate, channel count and amplitude attribute.
// A rate of 0 becomes 44100 and a channel count of 0 becomes 1, and either sets
// the error code to kLSourceDamaged (a substituted format); an input in error sets
// kLSourceBadInput. Readers see the code through the source's error field.
// If a derived constructor fails by an exception, the member handle releases the
// input again before the memory is freed.
#include <cstdint>

#include "engine/sound_source.h"

// Format a wrapping source falls back to when its input has none.
inline constexpr std::uint32_t kLProcessFallbackRate = 44100;
inline constexpr std::uint8_t kLProcessFallbackChannels = 1;

class LSoundProcessBase : public LSoundSourceBase {
public:
  explicit LSoundProcessBase(const LSoundSource& input);

  void Read(float* buffer, long long frames) override = 0;
  long long GetPositionSample() const override { return input_.GetPositionSample(); }
  long long GetEndSample() const override { return input_.GetEndSample(); }
  void Seek(long long frame) override { input_.Seek(frame); }
  int ControlMessage(int code, long* value) override { return input_.ControlMessage(code, value); }
  long long AdjustRelativeOffset(long long offset, long long reference) override {
    return input_.AdjustRelativeOffset(offset, reference);
  }
  bool IsStreaming() const override { return input_.IsStreaming(); }
  void WaitForStreamingData(int milliseconds) override { input_.WaitForStreamingData(milliseconds); }

  const LSoundSource& Input() const { return input_; }

protected:
  LSoundSource& Input() { return input_; }
  // Reads frames of the input into a buffer laid out in this source's format;
  // when a channel count was substituted the input fills nothing and the frames
  // read as silence.
  void ReadInput(float* buffer, long long frames);

private:
  LSoundSource input_;
};
