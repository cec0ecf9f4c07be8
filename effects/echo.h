#pragma once
// LSPEcho (type 3, "Echo"): a feedback echo, and LSRCEcho, its processing source.
//
// Settings: the feedback gain in percent ("Zunahme", 1 ... 99 %) and the delay time
// in milliseconds ("Zeit", 1 ... 4000 ms). A source is opened with both clamped to
// those ranges, whatever a file supplied.
// The time parameter is described as 64-bit but SetParameterByIndex reads a
// 32-bit integer and widens it: callers pass 32-bit integers, deliberately.
//
// Saved layout after the base container: 0x2001 int gain, 0x2002 int time (low
// 32 bits, for older readers), 0x2003 int64 time. The older flat layout is a
// 4-byte gain chunk followed by a 4-byte time chunk.
#include <memory>

#include "effects/sound_process.h"
#include "effects/sound_process_base.h"

// Chunk ids of the echo's settings. On disk: never change.
inline constexpr unsigned short kLSPEchoChunkGain = 0x2001;
inline constexpr unsigned short kLSPEchoChunkTime = 0x2002;
inline constexpr unsigned short kLSPEchoChunkTime64 = 0x2003;

// Bounds of the delay time a source is opened with, in milliseconds.
inline constexpr long long kLSPEchoTimeMin = 1;
inline constexpr long long kLSPEchoTimeMax = 4000;
// Bounds of the gain parameter, in percent.
inline constexpr int kLSPEchoGainMin = 1;
inline constexpr int kLSPEchoGainMax = 99;
// Shortest delay line in samples; a 1 ms echo at a low rate gets this many, deliberately.
inline constexpr long long kLSRCEchoMinLine = 20;

class LSPEcho final : public LSoundProcess {
public:
  LSPEcho() = default;
  LSPEcho(const LSPEcho&) = default;

  int GetGain() const { return gain_; }
  long long GetTime() const { return time_; }
  void SetGain(int percent) { gain_ = percent; }
  void SetTime(long long milliseconds) { time_ = milliseconds; }

  [[nodiscard]] LSoundSource OpenSource(LSoundSource& input) override;
  char* GetName(char* buffer) const override;
  int GetSoundProcessType() const override;
  [[nodiscard]] LSoundProcess* GetNewCopy() const override { return new LSPEcho(*this); }

  int GetNumParameters() const override;
  // 0: int percent; 1: a 32-bit int of milliseconds (widened).
  void SetParameterByIndex(int index, void* value) override;
  void GetParameterByIndex(int index, LSoundProcessParameter* out) const override;

  void SaveToSDF(LSDFWriter& writer) const override;
  void LoadFromSDF(LSDFReader& reader, LSDFReaderChunkIterator& iterator) override;
  void LoadFromSDF(LSDFReaderChunkIterator& iterator) override;

  int GetNumPresets() const override;
  void GetPresetsName(int index, char* out) const override;
  void SetPreset(int index) override;
  int GetIndexInPreset() const override;
  void ResetToDefault() override;

private:
  int gain_ = 50;
  long long time_ = 1000;
};

// A feedback delay line over the interleaved samples: y = line[i] * g + x, the
// output is written back into the line. No dry scaling, no wet level, no clamp.
// The line is a whole multiple of the channel count (unless the minimum applies),
// so each channel echoes into itself.
class LSRCEcho final : public LSoundProcessBase {
public:
  LSRCEcho(const LSoundSource& input, int gainPercent, long long timeMs);

  void Read(float* buffer, long long frames) override;
  // Clears the line (the write index stays) and moves the input.
  void Seek(long long frame) override;

  long long GetDelayLineLength() const { return length_; }
  long long GetTimeMs() const { return timeMs_; }
  float GetFeedback() const { return feedback_; }

private:
  float feedback_;
  long long timeMs_;
  long long length_;
  long long index_ = 0;
  std::unique_ptr<float[]> line_;
};
