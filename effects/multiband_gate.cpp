#include "effects/multiband_gate.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <numbers>

#include "effects/fftw_support.h"
#include "effects/filter_source.h"
#include "effects/preroll.h"
#include "effects/sound_process_type.h"

namespace {

constexpr LSPValueSpec kSpecs[] = {
    {"Dämpfung", "dB", 0.0, 80.0, 24.0, false},
    {"Angriff", "ms", 1.0, 200.0, 10.0, false},
    {"Freigabe", "ms", 10.0, 2000.0, 150.0, false},
};
constexpr LSPValuePreset kPresets[] = {
    {"Leises Rauschen", {12.0, 10.0, 200.0}},
    {"Starkes Rauschen", {40.0, 5.0, 100.0}},
    {"Sprache", {20.0, 5.0, 250.0}},
};
constexpr LPoint kDefault[] = {{20.0, -60.0}, {20000.0, -60.0}};
constexpr LPoint kQuiet[] = {{20.0, -70.0}, {20000.0, -70.0}};
constexpr LPoint kLoud[] = {{20.0, -45.0}, {20000.0, -45.0}};
// Hum and rumble below the voice lie higher than the hiss above it.
constexpr LPoint kSpeech[] = {{20.0, -45.0}, {200.0, -60.0}, {4000.0, -65.0}, {20000.0, -70.0}};
constexpr std::span<const LPoint> kPresetCurves[] = {kQuiet, kLoud, kSpeech};
constexpr LSPValueTable kTable{kLSPTypeMultiBandNoiseGating, kSpecs, kPresets};
constexpr LSPCurveTable kCurve{{"Frequenz", "Hz", 20.0, 20000.0, "Schwelle", "dB", -120.0, 0.0}, true, kDefault,
                               kPresetCurves};

// Bands: about a third of an octave, but never fewer than this many bins, so a
// band's level holds still over noise.
constexpr int kMinBandBins = 8;
constexpr double kBandRatio = 1.2599;  // 2^(1/3)
// The level each band is judged by is smoothed over this time.
constexpr double kLevelMs = 30.0;
constexpr double kFloor = 1e-20;

int FrameFor(std::uint32_t rate) {
  int n = 2048;
  while (n < 1 << 15 && n * 48000LL < 2048LL * rate) n *= 2;
  return n;
}

double Coefficient(double ms, double hopSeconds) { return std::exp(-hopSeconds * 1000.0 / std::max(ms, 1e-3)); }

}  // namespace

// The filter bank: frames, window, transforms and bands, shared by the source and by learning.
struct LSRCMultiBandGate::Bank {
  int n, hop, bins, channels;
  double rate;
  std::vector<int> edges;      // band b is bins [edges[b], edges[b + 1])
  std::vector<double> centres; // Hz
  LFftwReal window;
  std::vector<LFftwReal> frames;  // per channel, the n input frames of the current analysis frame
  std::vector<LFftwComplex> spectra;
  std::vector<LFftwReal> tails;   // per channel, the second half of the last synthesis
  LFftwReal time, scratch, output;  // output: one block, interleaved
  std::vector<double> power;
  double powerScale;
  fftwf_plan forward = nullptr, inverse = nullptr;

  Bank(double sampleRate, int channelCount)
      : n(FrameFor(static_cast<std::uint32_t>(sampleRate))), hop(n / 2), bins(n / 2 + 1), channels(channelCount),
        rate(sampleRate) {
    for (int e = 0; e < bins;) {
      edges.push_back(e);
      int next = std::max(e + kMinBandBins, static_cast<int>(std::lround(e * kBandRatio)));
      if (bins - next < kMinBandBins) next = bins;
      e = next;
    }
    edges.push_back(bins);
    const double binHz = rate / n;
    for (std::size_t b = 0; b + 1 < edges.size(); ++b) {
      const double lo = edges[b] * binHz, hi = edges[b + 1] * binHz;
      centres.push_back(lo > 0 ? std::sqrt(lo * hi) : hi / 2);
    }
    window = LFftwAllocReal(n);
    double sumSquares = 0;
    for (int i = 0; i < n; ++i) {
      // Periodic: the squares of two windows half a frame apart add up to 1.
      window[i] = static_cast<float>(std::sin(std::numbers::pi * i / n));
      sumSquares += static_cast<double>(window[i]) * window[i];
    }
    powerScale = 2.0 / (n * sumSquares);
    for (int c = 0; c < channels; ++c) {
      frames.push_back(LFftwAllocReal(n));
      spectra.push_back(LFftwAllocComplex(bins));
      tails.push_back(LFftwAllocReal(hop));
    }
    time = LFftwAllocReal(n);
    scratch = LFftwAllocReal(static_cast<long long>(n) * channels);
    output = LFftwAllocReal(static_cast<long long>(hop) * channels);
    power.assign(centres.size(), 0.0);
    std::lock_guard<std::mutex> lock(LFftwPlannerMutex());
    forward = fftwf_plan_dft_r2c_1d(n, time.get(), spectra[0].get(), FFTW_ESTIMATE);
    inverse = fftwf_plan_dft_c2r_1d(n, spectra[0].get(), time.get(), FFTW_ESTIMATE);
    if (!forward || !inverse) throw std::bad_alloc();
  }

  ~Bank() {
    std::lock_guard<std::mutex> lock(LFftwPlannerMutex());
    if (forward) fftwf_destroy_plan(forward);
    if (inverse) fftwf_destroy_plan(inverse);
  }

  std::size_t Bands() const { return centres.size(); }

  // Interleaved frames from scratch into every channel's frame at `offset`.
  void Spread(long long count, long long offset) {
    for (int c = 0; c < channels; ++c) {
      float* f = frames[c].get() + offset;
      for (long long i = 0; i < count; ++i) f[i] = scratch[i * channels + c];
    }
  }

  // Drops the older half of every channel's frame.
  void Shift() {
    for (int c = 0; c < channels; ++c) std::memmove(frames[c].get(), frames[c].get() + hop, sizeof(float) * hop);
  }

  // Spectra of the current frame, and the power of each band over all channels.
  void Analyse() {
    std::fill(power.begin(), power.end(), 0.0);
    for (int c = 0; c < channels; ++c) {
      for (int i = 0; i < n; ++i) time[i] = frames[c][i] * window[i];
      fftwf_execute_dft_r2c(forward, time.get(), spectra[c].get());
      const fftwf_complex* s = spectra[c].get();
      for (std::size_t b = 0; b < Bands(); ++b) {
        double sum = 0;
        for (int k = edges[b]; k < edges[b + 1]; ++k) sum += double(s[k][0]) * s[k][0] + double(s[k][1]) * s[k][1];
        power[b] += sum * powerScale / channels;
      }
    }
  }

  // Scales the bands by their factors, and adds the frame's first half to the
  // held tails into output; the second half becomes the new tails.
  void Synthesise(const std::vector<float>& factors) {
    const float scale = 1.0f / static_cast<float>(n);
    for (int c = 0; c < channels; ++c) {
      fftwf_complex* s = spectra[c].get();
      for (std::size_t b = 0; b < Bands(); ++b) {
        const float g = factors[b] * scale;
        for (int k = edges[b]; k < edges[b + 1]; ++k) s[k][0] *= g, s[k][1] *= g;
      }
      fftwf_execute_dft_c2r(inverse, s, time.get());
      float* tail = tails[c].get();
      for (int i = 0; i < hop; ++i) {
        output[static_cast<long long>(i) * channels + c] = tail[i] + time[i] * window[i];
        tail[i] = time[i + hop] * window[i + hop];
      }
    }
  }
};

LSPMultiBandNoiseGating::LSPMultiBandNoiseGating() : LSoundProcessCurve(kTable, kCurve) {}

LSoundSource LSPMultiBandNoiseGating::OpenSource(LSoundSource& input) {
  return LMakeSource<LSRCMultiBandGate>(input, *this);
}

bool LSPMultiBandNoiseGating::LearnNoise(LSoundSource& noise, double marginDb) {
  if (noise.IsError() || noise.GetChannels() < 1) return false;
  const long long end = noise.GetEndSample();
  LSRCMultiBandGate::Bank bank(LFilterRate(noise), noise.GetChannels());
  long long at = noise.GetPositionSample();
  if (end - at < bank.n) return false;
  std::vector<double> sum(bank.Bands(), 0.0);
  long long count = 0;
  noise.Read(bank.scratch.get(), bank.n);
  bank.Spread(bank.n, 0);
  for (at += bank.n;; at += bank.hop) {
    bank.Analyse();
    for (std::size_t b = 0; b < sum.size(); ++b) sum[b] += bank.power[b];
    ++count;
    if (end - at < bank.hop) break;
    bank.Shift();
    noise.Read(bank.scratch.get(), bank.hop);
    bank.Spread(bank.hop, bank.hop);
  }
  const LSPCurveAxes& axes = CurveAxes();
  ClearCurvePoints();
  for (std::size_t b = 0; b < sum.size(); ++b) {
    if (bank.centres[b] < axes.xMin || bank.centres[b] > axes.xMax) continue;
    const double db = 10.0 * std::log10(std::max(sum[b] / count, kFloor)) + marginDb;
    SetCurvePoint(bank.centres[b], std::clamp(db, axes.yMin, axes.yMax));
  }
  return true;
}

LSRCMultiBandGate::LSRCMultiBandGate(const LSoundSource& input, const LSPMultiBandNoiseGating& settings)
    : LSoundProcessBase(input), bank_(std::make_unique<Bank>(GetSampleRate(), GetChannels())) {
  const double hopSeconds = bank_->hop / static_cast<double>(GetSampleRate());
  range_ = settings.OpenValue(kLSPBandGateRange);
  attack_ = Coefficient(settings.OpenValue(kLSPBandGateAttack), hopSeconds);
  release_ = Coefficient(settings.OpenValue(kLSPBandGateRelease), hopSeconds);
  level_ = Coefficient(kLevelMs, hopSeconds);
  const LSPCurveAxes& axes = settings.CurveAxes();
  for (double centre : bank_->centres) {
    const double db = settings.CurveAt(std::clamp(centre, axes.xMin, axes.xMax), axes.yMin);
    thresholds_.push_back(std::pow(10.0, db / 10.0));
  }
  gainsDb_.assign(thresholds_.size(), -range_);
  levels_.assign(thresholds_.size(), 0.0);
  factors_.assign(thresholds_.size(), 1.0f);
}

LSRCMultiBandGate::~LSRCMultiBandGate() = default;

void LSRCMultiBandGate::ReadFrames(long long frame, long long count, long long offset) {
  Bank& b = *bank_;
  while (count > 0) {
    long long n = std::min<long long>(count, b.n);
    if (frame < 0) {
      n = std::min(n, -frame);
      std::memset(b.scratch.get(), 0, sizeof(float) * static_cast<std::size_t>(n * b.channels));
    } else {
      if (Input().GetPositionSample() != frame) Input().Seek(frame);
      ReadInput(b.scratch.get(), n);
    }
    b.Spread(n, offset);
    frame += n;
    offset += n;
    count -= n;
  }
}

void LSRCMultiBandGate::Process() {
  Bank& b = *bank_;
  b.Analyse();
  for (std::size_t i = 0; i < b.Bands(); ++i) {
    levels_[i] = b.power[i] + level_ * (levels_[i] - b.power[i]);
    const bool open = levels_[i] >= thresholds_[i];
    const double target = open ? 0.0 : -range_;
    gainsDb_[i] = target + (open ? attack_ : release_) * (gainsDb_[i] - target);
    factors_[i] = static_cast<float>(std::pow(10.0, gainsDb_[i] / 20.0));
  }
  b.Synthesise(factors_);
}

void LSRCMultiBandGate::StartAt(long long block) {
  Bank& b = *bank_;
  std::fill(gainsDb_.begin(), gainsDb_.end(), -range_);
  std::fill(levels_.begin(), levels_.end(), 0.0);
  for (auto& tail : b.tails) std::memset(tail.get(), 0, sizeof(float) * b.hop);
  // Analysis frame `block` covers the half frame before the block and the block itself.
  ReadFrames((block - 1) * b.hop, b.n, 0);
  Process();
  block_ = block - 1;
  started_ = true;
  outputValid_ = false;
}

void LSRCMultiBandGate::Step() {
  Bank& b = *bank_;
  b.Shift();
  ReadFrames((block_ + 2) * b.hop, b.hop, b.hop);
  Process();
  ++block_;
  outputValid_ = true;
}

void LSRCMultiBandGate::MakeBlock(long long block) {
  if (started_ && outputValid_ && block == block_) return;
  if (!started_ || block != block_ + 1) {
    const long long preroll = LPrerollFrames(*this) / bank_->hop + 1;
    StartAt(std::max(0LL, block - preroll));
  }
  while (block_ < block) Step();
}

void LSRCMultiBandGate::Read(float* buffer, long long frames) {
  const int ch = GetChannels();
  const long long end = GetEndSample();
  const long long hop = bank_->hop;
  while (frames > 0) {
    long long n;
    if (position_ < 0 || position_ >= end) {
      n = position_ < 0 ? std::min(frames, -position_) : frames;
      std::memset(buffer, 0, sizeof(float) * static_cast<std::size_t>(n * ch));
    } else {
      const long long block = position_ / hop;
      MakeBlock(block);
      const long long from = position_ - block * hop;
      n = std::min({frames, hop - from, end - position_});
      std::memcpy(buffer, bank_->output.get() + from * ch, sizeof(float) * static_cast<std::size_t>(n * ch));
    }
    buffer += n * ch;
    position_ += n;
    frames -= n;
  }
}

void LSRCMultiBandGate::Seek(long long frame) { position_ = frame; }
