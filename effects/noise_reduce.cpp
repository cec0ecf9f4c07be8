#include "effects/noise_reduce.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "effects/fftw_support.h"

namespace {

constexpr long long kSize = kLNoiseSpectrumFrames;
constexpr long long kHop = kSize / 2;
constexpr long long kBins = kSize / 2 + 1;
constexpr long long kSpread = 3;     // bins either side that a level averages
constexpr long long kPreroll = 8;    // hops a seek runs through first
constexpr double kOpenDb = 6.0;      // from the threshold to fully open
constexpr double kCloseSeconds = 0.1;

std::vector<float> Window() {
  std::vector<float> w(kSize);
  for (long long n = 0; n < kSize; ++n)
    w[n] = static_cast<float>(std::sin(std::numbers::pi * static_cast<double>(n) / kSize));
  return w;
}

}  // namespace

struct LSRCNoiseReduce::Fft {
  LFftwReal time = LFftwAllocReal(kSize);
  LFftwComplex spectrum = LFftwAllocComplex(kBins);
  fftwf_plan forward = nullptr;
  fftwf_plan inverse = nullptr;

  Fft() {
    std::lock_guard<std::mutex> lock(LFftwPlannerMutex());
    forward = fftwf_plan_dft_r2c_1d(static_cast<int>(kSize), time.get(), spectrum.get(), FFTW_ESTIMATE);
    inverse = fftwf_plan_dft_c2r_1d(static_cast<int>(kSize), spectrum.get(), time.get(), FFTW_ESTIMATE);
  }
  ~Fft() {
    std::lock_guard<std::mutex> lock(LFftwPlannerMutex());
    if (forward) fftwf_destroy_plan(forward);
    if (inverse) fftwf_destroy_plan(inverse);
  }
};

bool LNoiseProfileLearn(LSoundSource& noise, LNoiseProfile& profile) {
  if (noise.IsEmpty() || noise.IsError()) return false;
  const int channels = std::max<int>(1, noise.GetChannels());
  const long long frames = noise.GetEndSample() - noise.GetPositionSample();
  if (frames < kSize) return false;
  LSRCNoiseReduce::Fft fft;  // the plans only
  const std::vector<float> window = Window();
  std::vector<double> sum(kBins, 0.0);
  std::vector<float> in(static_cast<std::size_t>(channels * kSize), 0.0f), hop(channels * kHop);
  long long count = 0;
  for (long long read = 0; read + kHop <= frames; read += kHop) {
    noise.Read(hop.data(), kHop);
    for (int c = 0; c < channels; ++c) {
      float* x = in.data() + c * kSize;
      std::copy(x + kHop, x + kSize, x);
      for (long long i = 0; i < kHop; ++i) x[kHop + i] = hop[i * channels + c];
    }
    if (read + kHop < kSize) continue;
    for (int c = 0; c < channels; ++c) {
      const float* x = in.data() + c * kSize;
      for (long long n = 0; n < kSize; ++n) fft.time[n] = x[n] * window[n];
      fftwf_execute(fft.forward);
      for (long long k = 0; k < kBins; ++k)
        sum[k] += static_cast<double>(fft.spectrum[k][0]) * fft.spectrum[k][0] +
                  static_cast<double>(fft.spectrum[k][1]) * fft.spectrum[k][1];
    }
    ++count;
  }
  if (count == 0 || noise.IsError()) return false;
  for (double& p : sum) p /= static_cast<double>(count * channels);
  profile.rate = noise.GetSampleRate();
  profile.power = std::move(sum);
  return true;
}

LSRCNoiseReduce::LSRCNoiseReduce(const LSoundSource& input, const LNoiseProfile& profile, double reductionDb,
                                 double sensitivityDb)
    : LSoundProcessBase(input), reduction_(std::max(0.0, reductionDb)) {
  const int channels = GetChannels();
  const double above = std::pow(10.0, std::max(0.0, sensitivityDb) / 10.0);
  threshold_.assign(kBins, 0.0);
  for (long long k = 0; k < kBins && k < static_cast<long long>(profile.power.size()); ++k)
    threshold_[k] = profile.power[k] * above;
  closeStep_ = reduction_ * static_cast<double>(kHop) / (kCloseSeconds * GetSampleRate());
  window_ = Window();
  in_.assign(static_cast<std::size_t>(channels * kSize), 0.0f);
  overlap_.assign(static_cast<std::size_t>(channels * kHop), 0.0f);
  out_.assign(static_cast<std::size_t>(channels * kHop), 0.0f);
  hop_.assign(static_cast<std::size_t>(channels * kHop), 0.0f);
  power_.assign(kBins, 0.0);
  level_.assign(static_cast<std::size_t>(channels * kBins), 0.0);
  gainDb_.assign(static_cast<std::size_t>(channels * kBins), -reduction_);
  fft_ = std::make_unique<Fft>();
}

LSRCNoiseReduce::~LSRCNoiseReduce() = default;

void LSRCNoiseReduce::NextHop() {
  const int channels = GetChannels();
  ReadInput(hop_.data(), kHop);
  float* t = fft_->time.get();
  fftwf_complex* s = fft_->spectrum.get();
  const float scale = 1.0f / kSize;
  for (int c = 0; c < channels; ++c) {
    float* x = in_.data() + c * kSize;
    std::copy(x + kHop, x + kSize, x);
    for (long long i = 0; i < kHop; ++i) x[kHop + i] = hop_[i * channels + c];
    for (long long n = 0; n < kSize; ++n) t[n] = x[n] * window_[n];
    fftwf_execute(fft_->forward);
    for (long long k = 0; k < kBins; ++k)
      power_[k] = static_cast<double>(s[k][0]) * s[k][0] + static_cast<double>(s[k][1]) * s[k][1];
    double* level = level_.data() + c * kBins;
    double* gain = gainDb_.data() + c * kBins;
    // A running sum over the bins around each one.
    double run = 0;
    for (long long k = 0; k < kSpread && k < kBins; ++k) run += power_[k];
    for (long long k = 0; k < kBins; ++k) {
      if (k + kSpread < kBins) run += power_[k + kSpread];
      if (k - kSpread - 1 >= 0) run -= power_[k - kSpread - 1];
      const long long width = std::min(kBins - 1, k + kSpread) - std::max(0LL, k - kSpread) + 1;
      const double here = run / static_cast<double>(width);
      level[k] = fresh_ ? here : 0.5 * (level[k] + here);
      double target = 0.0;
      if (level[k] <= threshold_[k]) {
        target = -reduction_;
      } else if (threshold_[k] > 0) {
        const double over = 10.0 * std::log10(level[k] / threshold_[k]);
        target = over >= kOpenDb ? 0.0 : -reduction_ * (1.0 - over / kOpenDb);
      }
      gain[k] = std::max(target, gain[k] - closeStep_);
      const float factor = gain[k] == 0.0 ? 1.0f : static_cast<float>(std::pow(10.0, gain[k] / 20.0));
      s[k][0] *= factor;
      s[k][1] *= factor;
    }
    fftwf_execute(fft_->inverse);
    float* tail = overlap_.data() + c * kHop;
    for (long long i = 0; i < kHop; ++i) {
      out_[i * channels + c] = tail[i] + t[i] * window_[i] * scale;
      tail[i] = t[kHop + i] * window_[kHop + i] * scale;
    }
  }
  fresh_ = false;
  used_ = 0;
}

void LSRCNoiseReduce::Read(float* buffer, long long frames) {
  const int channels = GetChannels();
  if (!primed_) Seek(Input().GetPositionSample());
  for (long long done = 0; done < frames;) {
    if (used_ == kHop) NextHop();
    const long long n = std::min(frames - done, kHop - used_);
    std::copy(out_.begin() + channels * used_, out_.begin() + channels * (used_ + n), buffer + channels * done);
    used_ += n;
    done += n;
  }
  position_ += frames;
}

void LSRCNoiseReduce::Seek(long long frame) {
  frame = std::max(0LL, frame);
  const int channels = GetChannels();
  const long long hop = frame - frame % kHop;
  const long long begin = std::max(0LL, hop - kPreroll * kHop);
  std::fill(in_.begin(), in_.end(), 0.0f);
  std::fill(overlap_.begin(), overlap_.end(), 0.0f);
  std::fill(gainDb_.begin(), gainDb_.end(), -reduction_);
  fresh_ = true;
  // Before frame 0 the input is silence; later the hop before begin fills the
  // later half of the first spectrum.
  if (begin >= kHop) {
    LSoundProcessBase::Seek(begin - kHop);
    ReadInput(hop_.data(), kHop);
    for (int c = 0; c < channels; ++c)
      for (long long i = 0; i < kHop; ++i) in_[c * kSize + kHop + i] = hop_[i * channels + c];
  } else {
    LSoundProcessBase::Seek(0);
  }
  // Each hop makes the output a hop behind what it read.
  for (long long end = begin + kHop; end <= hop + 2 * kHop; end += kHop) NextHop();
  primed_ = true;
  position_ = frame;
  used_ = frame - hop;
}
