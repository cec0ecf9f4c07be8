#include "effects/voice_pitch.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "effects/filter_source.h"
#include "effects/modulation.h"
#include "effects/preroll.h"
#include "effects/sound_process_type.h"

namespace {

constexpr LSPValueSpec kSpecs[] = {
    {"Tonhöhe", "Halbtöne", -12.0, 12.0, 0.0, false},
    {"Formant", "dB", -12.0, 12.0, 0.0, false},
    {"Roboter", "Hz", 0.0, 500.0, 0.0, false},
    {"Mischung", "%", 0.0, 100.0, 100.0, false},
};
constexpr LSPValuePreset kPresets[] = {
    {"Roboter", {0.0, 0.0, 50.0, 100.0}},
    {"Monster", {-7.0, -8.0, 0.0, 100.0}},
    {"Chipmunk", {8.0, 6.0, 0.0, 100.0}},
};
constexpr LSPValueTable kTable{kLSPTypeVoicePitch, kSpecs, kPresets};

constexpr double kWindowSeconds = 0.04;
constexpr double kLowShelfHz = 400.0;
constexpr double kHighShelfHz = 2500.0;
constexpr double kShelfQ = 0.7;

std::vector<LBiquad> Formant(double rate, double db) {
  return {LBiquad::LowShelf(rate, kLowShelfHz, kShelfQ, -db / 2), LBiquad::HighShelf(rate, kHighShelfHz, kShelfQ, db / 2)};
}

}  // namespace

LSPVoicePitch::LSPVoicePitch() : LSoundProcessValues(kTable) {}

LSoundSource LSPVoicePitch::OpenSource(LSoundSource& input) {
  return LMakeSource<LSRCVoicePitch>(input, OpenValue(kLSPVoiceSemitones), OpenValue(kLSPVoiceFormantDb),
                                     OpenValue(kLSPVoiceRobotHz), OpenValue(kLSPVoiceMix));
}

LSRCVoicePitch::LSRCVoicePitch(const LSoundSource& input, double semitones, double formantDb, double robotHz,
                               double mixPercent)
    : LSoundProcessBase(input),
      window_(std::max(8.0, kWindowSeconds * GetSampleRate())),
      robotHz_(robotHz),
      mix_(mixPercent / 100.0),
      formant_(Formant(LFilterRate(input), formantDb), GetChannels()) {
  slide_ = (1.0 - std::exp2(semitones / 12.0)) / window_;
  long long size = 1;
  while (size < static_cast<long long>(window_) + 4) size <<= 1;
  line_.assign(static_cast<std::size_t>(size) * GetChannels(), 0.0f);
  mask_ = size - 1;
}

void LSRCVoicePitch::Read(float* buffer, long long frames) {
  ReadInput(buffer, frames);
  const int channels = GetChannels();
  const long long samples = frames * channels;
  dry_.assign(buffer, buffer + samples);
  const double rate = GetSampleRate();
  for (long long i = 0; i < frames; ++i) {
    const long long at = position_ + i;
    float* frame = buffer + i * channels;
    const float ring = robotHz_ > 0 ? static_cast<float>(std::numbers::sqrt2 * LLfoSine(at, robotHz_, rate)) : 1.0f;
    if (slide_ == 0) {
      // The pitch stays: no heads, so the voice keeps its place in time.
      for (int c = 0; c < channels; ++c) frame[c] *= ring;
      continue;
    }
    for (int c = 0; c < channels; ++c) line_[static_cast<std::size_t>((at & mask_) * channels + c)] = frame[c];
    // Each head's delay falls (or rises) through the window and jumps back; its
    // weight is nil at the jump, and the two weights add up to one.
    const double turns = static_cast<double>(at) * slide_;
    long long tap[2];
    float frac[2], weight[2];
    for (int h = 0; h < 2; ++h) {
      const double phase = turns + 0.5 * h - std::floor(turns + 0.5 * h);
      const double delay = phase * window_;
      const double back = std::floor(delay);
      const double s = std::sin(std::numbers::pi * phase);
      tap[h] = at - static_cast<long long>(back);
      frac[h] = static_cast<float>(delay - back);
      weight[h] = static_cast<float>(s * s);
    }
    for (int c = 0; c < channels; ++c) {
      float sum = 0;
      for (int h = 0; h < 2; ++h) {
        const float newer = line_[static_cast<std::size_t>((tap[h] & mask_) * channels + c)];
        const float older = line_[static_cast<std::size_t>(((tap[h] - 1) & mask_) * channels + c)];
        sum += weight[h] * (newer + frac[h] * (older - newer));
      }
      frame[c] = ring * sum;
    }
  }
  formant_.Process(buffer, frames);
  const float wet = static_cast<float>(mix_), dry = static_cast<float>(1.0 - mix_);
  for (long long i = 0; i < samples; ++i) buffer[i] = wet * buffer[i] + dry * dry_[i];
  position_ += frames;
}

void LSRCVoicePitch::Seek(long long frame) {
  std::fill(line_.begin(), line_.end(), 0.0f);
  formant_.Reset();
  const long long preroll = LPrerollFrames(*this);
  position_ = std::max(0LL, frame - preroll);
  LSeekWithPreroll(*this, frame, preroll);
}
