#include "effects/reverb.h"

#include <algorithm>
#include <cmath>

#include "effects/sound_process_type.h"

namespace {

constexpr LSPValueSpec kSpecs[] = {
    {"Raumgröße", "%", 0.0, 100.0, 50.0, false},
    {"Nachhallzeit", "s", 0.1, 20.0, 1.8, false},
    {"Dämpfung", "%", 0.0, 100.0, 40.0, false},
    {"Vorverzögerung", "ms", 0.0, 200.0, 20.0, false},
    {"Breite", "%", 0.0, 100.0, 100.0, false},
    {"Mischung", "%", 0.0, 100.0, 30.0, false},
};
constexpr LSPValuePreset kPresets[] = {
    {"Kleiner Raum", {20.0, 0.6, 50.0, 5.0, 80.0, 25.0}},
    {"Saal", {60.0, 2.0, 40.0, 25.0, 100.0, 30.0}},
    {"Kirche", {90.0, 4.5, 30.0, 40.0, 100.0, 40.0}},
    {"Platte", {40.0, 1.5, 10.0, 0.0, 100.0, 35.0}},
    {"Kathedrale", {100.0, 8.0, 35.0, 60.0, 100.0, 45.0}},
};
constexpr LSPValueTable kTable{kLSPTypeReverb3, kSpecs, kPresets};

// Path lengths in ms at the middle room size; no two share a factor that would
// let their echoes pile up.
constexpr double kLineMs[LSRCReverb::kLines] = {29.7, 37.1, 41.1, 43.7, 53.1, 59.3, 67.9, 73.3};
// The all-passes that smear each side's input, and their gain.
constexpr double kDiffuserMs[2][LSRCReverb::kDiffusers] = {{4.77, 3.59, 12.73, 9.30}, {5.11, 3.31, 11.87, 8.63}};
constexpr float kDiffuserGain = 0.6f;

int Frames(double ms, double rate) { return std::max(1, static_cast<int>(std::lround(ms * rate / 1000.0))); }

// Mixes the lines by an 8 x 8 Hadamard matrix scaled to keep energy.
void Hadamard(std::array<float, LSRCReverb::kLines>& v) {
  for (int span = 1; span < LSRCReverb::kLines; span *= 2)
    for (int i = 0; i < LSRCReverb::kLines; i += 2 * span)
      for (int j = i; j < i + span; ++j) {
        const float a = v[j], b = v[j + span];
        v[j] = a + b;
        v[j + span] = a - b;
      }
  for (float& x : v) x *= 0.35355339f;  // 1 / sqrt(8)
}

}  // namespace

LSPReverb3::LSPReverb3() : LSoundProcessValues(kTable) {}

LSoundSource LSPReverb3::OpenSource(LSoundSource& input) {
  LReverbSettings s;
  s.size = OpenValue(kLSPReverbSize) / 100.0;
  s.seconds = OpenValue(kLSPReverbTime);
  s.damping = OpenValue(kLSPReverbDamping) / 100.0;
  s.preDelayMs = OpenValue(kLSPReverbPreDelay);
  s.width = OpenValue(kLSPReverbWidth) / 100.0;
  s.mix = OpenValue(kLSPReverbMix) / 100.0;
  return LMakeSource<LSRCReverb>(input, s);
}

LSRCReverb::LSRCReverb(const LSoundSource& input, const LReverbSettings& settings)
    : LSoundProcessLatent(input, 0), s_(settings) {
  const double rate = GetSampleRate();
  const double scale = 0.4 + 1.2 * s_.size;
  // How much sooner the highs die: the ratio of their time to the lows'.
  const double highRatio = 1.0 - 0.85 * s_.damping;
  for (int i = 0; i < kLines; ++i) {
    const int length = Frames(kLineMs[i] * scale, rate);
    lines_[i].line.assign(static_cast<std::size_t>(length), 0.0f);
    const double g = std::pow(10.0, -3.0 * length / (s_.seconds * rate));
    // A one-pole low-pass whose loss at the highs matches the shorter time there.
    const double b = std::log(10.0) / 4.0 * std::log10(g) * (1.0 - 1.0 / (highRatio * highRatio));
    pole_[i] = static_cast<float>(std::clamp(b, 0.0, 0.95));
    gain_[i] = static_cast<float>(g * (1.0 - pole_[i]));
  }
  for (int side = 0; side < 2; ++side) {
    for (int d = 0; d < kDiffusers; ++d)
      diffusers_[side][d].line.assign(static_cast<std::size_t>(Frames(kDiffuserMs[side][d] * scale, rate)), 0.0f);
    preDelay_[side].line.assign(static_cast<std::size_t>(Frames(s_.preDelayMs, rate)), 0.0f);
  }
  tail_ = static_cast<long long>(std::ceil((s_.seconds + s_.preDelayMs / 1000.0) * rate));
}

long long LSRCReverb::GetEndSample() const { return Input().GetEndSample() + tail_; }

long long LSRCReverb::GetEndSampleKnown() const {
  // A growing input's end is not yet the end the tail follows.
  return Input().IsStreaming() ? Input().GetEndSampleKnown() : GetEndSample();
}

void LSRCReverb::Reset() {
  auto clear = [](Delay& d) {
    std::fill(d.line.begin(), d.line.end(), 0.0f);
    d.at = 0;
  };
  for (Delay& d : lines_) clear(d);
  for (auto& side : diffusers_)
    for (Delay& d : side) clear(d);
  for (Delay& d : preDelay_) clear(d);
  lowState_.fill(0.0f);
}

void LSRCReverb::Process(float* buffer, long long frames, long long) {
  const int channels = GetChannels();
  const float wet = static_cast<float>(s_.mix), dry = static_cast<float>(1.0 - s_.mix);
  const float width = static_cast<float>(s_.width);
  // The eight lines sum to about the input's level in the early part of the tail.
  const float out = 0.5f;
  std::array<float, kLines> v;
  for (long long i = 0; i < frames; ++i) {
    float* frame = buffer + i * channels;
    float side[2] = {0.0f, 0.0f};
    if (channels == 1) {
      side[0] = side[1] = frame[0];
    } else {
      for (int c = 0; c < channels; ++c) side[c % 2] += frame[c];
      const float evens = static_cast<float>((channels + 1) / 2), odds = static_cast<float>(channels / 2);
      side[0] /= evens;
      side[1] /= odds;
    }
    for (int s = 0; s < 2; ++s) {
      float x = preDelay_[s].Tap();
      preDelay_[s].Put(side[s]);
      for (Delay& d : diffusers_[s]) {
        const float held = d.Tap();
        const float w = x + kDiffuserGain * held;
        d.Put(w);
        x = held - kDiffuserGain * w;
      }
      side[s] = x;
    }
    for (int l = 0; l < kLines; ++l) {
      lowState_[l] = gain_[l] * lines_[l].Tap() + pole_[l] * lowState_[l];
      v[l] = lowState_[l];
    }
    const float left = out * (v[0] - v[2] + v[4] - v[6]);
    const float right = out * (v[1] - v[3] + v[5] - v[7]);
    Hadamard(v);
    for (int l = 0; l < kLines; ++l) lines_[l].Put(v[l] + side[l % 2]);
    const float mid = 0.5f * (left + right), diff = 0.5f * width * (left - right);
    if (channels == 1) {
      frame[0] = dry * frame[0] + wet * mid;
    } else {
      for (int c = 0; c < channels; ++c) frame[c] = dry * frame[c] + wet * (c % 2 ? mid - diff : mid + diff);
    }
  }
}
