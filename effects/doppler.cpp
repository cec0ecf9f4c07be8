#include "effects/doppler.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "effects/preroll.h"
#include "effects/sound_process_type.h"

namespace {

constexpr LSPValueSpec kSpecs[] = {
    {"Geschwindigkeit", "km/h", 5.0, 300.0, 80.0, false},
    {"Abstand", "m", 1.0, 200.0, 10.0, false},
    {"Vorbeifahrt", "%", 0.0, 100.0, 50.0, false},
};
constexpr LSPValuePreset kPresets[] = {
    {"Auto in der Stadt", {50.0, 5.0, 50.0}},
    {"Rennwagen", {250.0, 8.0, 50.0}},
    {"Zug", {120.0, 30.0, 50.0}},
    {"Flugzeug", {300.0, 150.0, 50.0}},
};
constexpr LSPValueTable kTable{kLSPTypeDoppler, kSpecs, kPresets};

// Frames beyond the longest delay that interpolation and a seek's pre-roll use.
constexpr long long kSpare = 4;

}  // namespace

LSPDoppler::LSPDoppler() : LSoundProcessValues(kTable) {}

LSoundSource LSPDoppler::OpenSource(LSoundSource& input) {
  return LMakeSource<LSRCDoppler>(input, OpenValue(kLSPDopplerKmh), OpenValue(kLSPDopplerDistance),
                                  OpenValue(kLSPDopplerPass));
}

LSRCDoppler::LSRCDoppler(const LSoundSource& input, double kmh, double distance, double passPercent)
    : LSoundProcessBase(input), speed_(kmh / 3.6), distance_(distance) {
  const long long end = input.GetEndSample();
  passFrame_ = end > 0 ? static_cast<double>(end) * passPercent / 100.0 : 0.0;
  const long long longest = static_cast<long long>(kLSRCDopplerMaxDelaySeconds * GetSampleRate()) + kSpare;
  long long size = 1;
  while (size < longest) size <<= 1;
  line_.assign(static_cast<std::size_t>(size), 0.0f);
  mask_ = size - 1;
}

LSRCDoppler::Place LSRCDoppler::PlaceAt(long long frame) const {
  const double rate = GetSampleRate();
  const double along = speed_ * (static_cast<double>(frame) - passFrame_) / rate;
  const double far = kLSpeedOfSound * kLSRCDopplerMaxDelaySeconds + distance_;
  const double r = std::min(std::hypot(along, distance_), far);
  return {(r - distance_) / kLSpeedOfSound * rate, distance_ / r, std::clamp(along / r, -1.0, 1.0)};
}

void LSRCDoppler::Read(float* buffer, long long frames) {
  ReadInput(buffer, frames);
  const int channels = GetChannels();
  const float spread = channels == 2 ? static_cast<float>(std::numbers::sqrt2) : 1.0f;
  for (long long i = 0; i < frames; ++i) {
    const long long at = position_ + i;
    float* frame = buffer + i * channels;
    float sum = 0;
    for (int c = 0; c < channels; ++c) sum += frame[c];
    line_[static_cast<std::size_t>(at & mask_)] = sum / static_cast<float>(channels);

    const Place p = PlaceAt(at);
    const double back = std::floor(p.delay);
    const float frac = static_cast<float>(p.delay - back);
    const long long tap = at - static_cast<long long>(back);
    const float newer = line_[static_cast<std::size_t>(tap & mask_)];
    const float older = line_[static_cast<std::size_t>((tap - 1) & mask_)];
    const float heard = static_cast<float>(p.gain) * (newer + frac * (older - newer));
    if (channels == 2) {
      // Equal power across the stereo field, unity in the middle.
      const double angle = (p.pan + 1.0) * std::numbers::pi / 4.0;
      frame[0] = heard * spread * static_cast<float>(std::cos(angle));
      frame[1] = heard * spread * static_cast<float>(std::sin(angle));
    } else {
      for (int c = 0; c < channels; ++c) frame[c] = heard;
    }
  }
  position_ += frames;
}

void LSRCDoppler::Seek(long long frame) {
  std::fill(line_.begin(), line_.end(), 0.0f);
  const long long preroll = static_cast<long long>(PlaceAt(frame).delay) + kSpare;
  position_ = std::max(0LL, frame - preroll);
  LSeekWithPreroll(*this, frame, preroll);
}
