#pragma once
// LSRCToneGenerator: a source that makes sound instead of reading it: a sine of
// a frequency, white noise, or silence, at a level in dB below full scale, for a
// fixed number of frames. Generated audio enters documents through a render
// into the cache like every other new audio.
#include <cstdint>

#include "engine/sound_source.h"

enum class LToneKind { kSine, kNoise, kSilence };

class LSRCToneGenerator final : public LSoundSourceBase {
public:
  LSRCToneGenerator(LToneKind kind, double frequencyHz, double levelDb, long long frames, std::uint32_t sampleRate,
                    std::uint8_t channels);

  void Read(float* buffer, long long frames) override;
  long long GetPositionSample() const override { return position_; }
  long long GetEndSample() const override { return end_; }
  void Seek(long long frame) override { position_ = frame; }

private:
  LToneKind kind_;
  double frequency_;
  double amplitude_;
  long long end_;
  long long position_ = 0;
};
