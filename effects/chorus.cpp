#include "effects/chorus.h"

#include <algorithm>
#include <cmath>

#include "effects/sound_process_type.h"

namespace {

constexpr LSPValueSpec kSpecs[] = {
    {"Stimmen", "", 1.0, 4.0, 2.0, true},
    {"Verzögerung", "ms", 5.0, 40.0, 20.0, false},
    {"Tiefe", "ms", 0.0, 10.0, 3.0, false},
    {"Rate", "Hz", 0.05, 5.0, 0.8, false},
    {"Mischung", "%", 0.0, 100.0, 50.0, false},
};
constexpr LSPValuePreset kPresets[] = {
    {"Dezent", {1.0, 15.0, 2.0, 0.5, 30.0}},
    {"Klassisch", {2.0, 20.0, 4.0, 1.0, 50.0}},
    {"Ensemble", {4.0, 25.0, 6.0, 0.6, 60.0}},
    {"Schwebend", {3.0, 30.0, 8.0, 0.2, 50.0}},
};
constexpr LSPValueTable kTable{kLSPTypeChorus, kSpecs, kPresets};

// How much faster each further voice's oscillator runs.
constexpr double kVoiceRateStep = 0.13;

}  // namespace

LSPChorus::LSPChorus() : LSoundProcessValues(kTable) {}

LSoundSource LSPChorus::OpenSource(LSoundSource& input) {
  LChorusSettings s;
  s.voices = static_cast<int>(OpenValue(kLSPChorusVoices));
  s.delayMs = OpenValue(kLSPChorusDelay);
  s.depthMs = std::min(OpenValue(kLSPChorusDepth), s.delayMs - 1.0);
  s.hz = OpenValue(kLSPChorusRate);
  s.mix = OpenValue(kLSPChorusMix) / 100.0;
  return LMakeSource<LSRCChorus>(input, s);
}

LSRCChorus::LSRCChorus(const LSoundSource& input, const LChorusSettings& settings)
    : LSoundProcessLatent(input, 0), s_(settings) {
  const double perMs = GetSampleRate() / 1000.0;
  delay_ = s_.delayMs * perMs;
  depth_ = s_.depthMs * perMs;
  // The longest delay read is delay_ + depth_ + 1, and the curve wants one frame before it.
  history_ = static_cast<int>(std::ceil(delay_ + depth_)) + 4;
  lines_.assign(GetChannels(), std::vector<float>(static_cast<std::size_t>(history_ + kBlock), 0.0f));
  for (int side = 0; side < std::min<int>(GetChannels(), 2); ++side)
    for (int v = 0; v < s_.voices; ++v)
      lfos_.emplace_back(s_.hz * (1.0 + kVoiceRateStep * v), GetSampleRate(),
                         static_cast<double>(v) / s_.voices + side * 0.25);
  delays_.resize(lfos_.size() * kBlock);
  for (std::vector<float>* run : {&sum_, &fraction_, &xm_, &x0_, &x1_, &x2_}) run->resize(kBlock);
  spot_.resize(kBlock);
}

void LSRCChorus::Reset() {
  for (std::vector<float>& line : lines_) std::fill(line.begin(), line.end(), 0.0f);
}

long long LSRCChorus::Preroll() const { return static_cast<long long>(delay_ + depth_) + 4; }

void LSRCChorus::Process(float* buffer, long long frames, long long first) {
  const int channels = GetChannels();
  const int voices = s_.voices;
  const float dry = static_cast<float>(1.0 - s_.mix);
  const float wet = static_cast<float>(s_.mix / s_.voices);
  const int history = history_;
  for (long long at = 0; at < frames; at += kBlock) {
    const int n = static_cast<int>(std::min<long long>(kBlock, frames - at));
    float* block = buffer + at * channels;
    for (std::size_t l = 0; l < lfos_.size(); ++l) {
      double* delay = &delays_[l * kBlock];
      lfos_[l].Run(first + at, n, delay);
      for (int i = 0; i < n; ++i) delay[i] = std::max(delay_ + 1.0 + depth_ * delay[i], LModulatedDelay::kMinDelay);
    }
    for (int c = 0; c < channels; ++c) {
      float* line = lines_[c].data();
      for (int i = 0; i < n; ++i) line[history + i] = block[i * channels + c];
      std::fill(sum_.begin(), sum_.begin() + n, 0.0f);
      for (int v = 0; v < voices; ++v) {
        const double* delay = &delays_[static_cast<std::size_t>((c % 2) * voices + v) * kBlock];
        // Where each step reads, then the four samples around it, then the
        // curve: split so that the first and the last run as vector code.
        for (int i = 0; i < n; ++i) {
          // A delay of 1 is the frame of this step itself.
          const double spot = static_cast<double>(history + i + 1) - delay[i];
          spot_[i] = static_cast<int>(spot);
          fraction_[i] = static_cast<float>(spot - spot_[i]);
        }
        for (int i = 0; i < n; ++i) {
          const float* x = line + spot_[i];
          xm_[i] = x[-1], x0_[i] = x[0], x1_[i] = x[1], x2_[i] = x[2];
        }
        float* sum = sum_.data();
        const float *xm = xm_.data(), *x0 = x0_.data(), *x1 = x1_.data(), *x2 = x2_.data(), *f = fraction_.data();
        for (int i = 0; i < n; ++i) sum[i] += LHermite(xm[i], x0[i], x1[i], x2[i], f[i]);
      }
      for (int i = 0; i < n; ++i) block[i * channels + c] = dry * block[i * channels + c] + wet * sum_[i];
      std::copy(line + n, line + n + history, line);
    }
  }
}
