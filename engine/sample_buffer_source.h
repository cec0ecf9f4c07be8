#pragma once
// LSRCSampleBuffer: serves interleaved samples it holds; frames outside them
// read as silence. For audio made in memory (a repair, samples drawn by hand)
// that an edit renders into the cache.
#include <cstdint>
#include <vector>

#include "engine/sound_source.h"

class LSRCSampleBuffer final : public LSoundSourceBase {
public:
  LSRCSampleBuffer(std::vector<float> samples, std::uint32_t rate, std::uint8_t channels);

  void Read(float* buffer, long long frames) override;
  long long GetPositionSample() const override { return position_; }
  long long GetEndSample() const override { return end_; }
  void Seek(long long frame) override { position_ = frame; }

private:
  std::vector<float> samples_;
  long long end_;
  long long position_ = 0;
};
