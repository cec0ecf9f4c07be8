#pragma once
// LSRCResample: a wrapping source that converts its input to another sample
// rate (libsoxr, high quality, linear phase).
//
// Output frame k stands for the time k / outRate of the input, so the result is
// aligned with its input; the filter's delay is taken care of. The end is
// round(input frames x outRate / inRate). Seek goes anywhere: the converter
// restarts ahead of the target on a frame where the two rates' grids meet and
// runs up to it, so what follows a seek matches what a reading from the start
// gives there. Without libsoxr in the build the source fails with code 7.
#include <cstddef>
#include <cstdint>

#include "base/array.h"
#include "engine/sound_source.h"

// The name of the converter that a build without it misses.
inline constexpr const char* kLResampleCodecName = "libsoxr";

class LSRCResample final : public LSoundSourceBase {
public:
  LSRCResample(LSoundSource input, std::uint32_t outRate);
  ~LSRCResample() override;

  // The input itself when the rate already matches, else a converting source.
  [[nodiscard]] static LSoundSource Convert(LSoundSource input, std::uint32_t outRate);

  void Read(float* buffer, long long frames) override;
  long long GetPositionSample() const override { return position_; }
  long long GetEndSample() const override;
  void Seek(long long frame) override { position_ = frame; }

private:
  // Readies the converter so that the next frame it delivers is frame at.
  void Prime(long long at);
  // Runs the converter until the queue holds output or the input is done; false at the very end.
  bool Produce();
  // Delivers up to n converted frames from the queue and the converter; answers how many.
  long long Take(float* out, long long n);

  LSoundSource input_;
  std::uint32_t inRate_;
  void* soxr_ = nullptr;
  long long position_ = 0;
  // Output frame that the queue's first frame stands for; -1 when the converter must restart.
  long long streamAt_ = -1;
  // Next input frame to feed.
  long long inputAt_ = 0;
  bool flushed_ = false;
  bool drained_ = false;
  LArray<float> inBuffer_;
  // Input frames read but not yet taken by the converter, from inHead_ on.
  size_t inHead_ = 0;
  size_t inPending_ = 0;
  LArray<float> queue_;
  size_t queueHead_ = 0;
  size_t queueFrames_ = 0;
};
