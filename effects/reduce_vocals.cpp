#include "effects/reduce_vocals.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "effects/fftw_support.h"

namespace {

constexpr long long kSize = 4096;
constexpr long long kHop = kSize / 2;
constexpr long long kBins = kSize / 2 + 1;

}  // namespace

struct LSRCReduceVocals::Fft {
  LFftwReal time[2];
  LFftwComplex spectrum[2];
  fftwf_plan forward = nullptr;
  fftwf_plan inverse = nullptr;

  Fft()
      : time{LFftwAllocReal(kSize), LFftwAllocReal(kSize)},
        spectrum{LFftwAllocComplex(kBins), LFftwAllocComplex(kBins)} {
    std::lock_guard<std::mutex> lock(LFftwPlannerMutex());
    forward = fftwf_plan_dft_r2c_1d(static_cast<int>(kSize), time[0].get(), spectrum[0].get(), FFTW_ESTIMATE);
    inverse = fftwf_plan_dft_c2r_1d(static_cast<int>(kSize), spectrum[0].get(), time[0].get(), FFTW_ESTIMATE);
  }
  ~Fft() {
    std::lock_guard<std::mutex> lock(LFftwPlannerMutex());
    if (forward) fftwf_destroy_plan(forward);
    if (inverse) fftwf_destroy_plan(inverse);
  }
};

LSRCReduceVocals::LSRCReduceVocals(const LSoundSource& input, double bassHz) : LSoundProcessBase(input) {
  bassBins_ = static_cast<long long>(std::ceil(bassHz * kSize / GetSampleRate()));
  if (GetChannels() != 2) return;
  // Square roots of a Hann window before and after: their product overlaps to one at half-spectrum hops.
  window_.resize(kSize);
  for (long long n = 0; n < kSize; ++n)
    window_[n] = static_cast<float>(std::sin(std::numbers::pi * static_cast<double>(n) / kSize));
  in_.assign(2 * kSize, 0.0f);
  overlap_.assign(2 * kHop, 0.0f);
  out_.assign(2 * kHop, 0.0f);
  fresh_.assign(2 * kHop, 0.0f);
  fft_ = std::make_unique<Fft>();
}

LSRCReduceVocals::~LSRCReduceVocals() = default;

long long LSRCReduceVocals::GetPositionSample() const {
  return primed_ ? position_ : Input().GetPositionSample();
}

void LSRCReduceVocals::NextHop() {
  // The later half of the frames moves to the front; the next hop of input follows it.
  float* fresh = fresh_.data();
  ReadInput(fresh, kHop);
  for (int c = 0; c < 2; ++c) {
    float* in = in_.data() + c * kSize;
    std::copy(in + kHop, in + kSize, in);
    for (long long i = 0; i < kHop; ++i) in[kHop + i] = fresh[2 * i + c];
    float* t = fft_->time[c].get();
    for (long long n = 0; n < kSize; ++n) t[n] = in[n] * window_[n];
    fftwf_execute_dft_r2c(fft_->forward, t, fft_->spectrum[c].get());
  }
  fftwf_complex* l = fft_->spectrum[0].get();
  fftwf_complex* r = fft_->spectrum[1].get();
  for (long long k = bassBins_; k < kBins; ++k) {
    const float cross = l[k][0] * r[k][0] + l[k][1] * r[k][1];
    const float power = l[k][0] * l[k][0] + l[k][1] * l[k][1] + r[k][0] * r[k][0] + r[k][1] * r[k][1];
    const float same = power > 0 ? std::max(0.0f, 2.0f * cross / power) : 0.0f;
    const float keep = 1.0f - (same * same) * (same * same);
    for (fftwf_complex* s : {l, r}) {
      s[k][0] *= keep;
      s[k][1] *= keep;
    }
  }
  const float scale = 1.0f / kSize;
  for (int c = 0; c < 2; ++c) {
    float* t = fft_->time[c].get();
    fftwf_execute_dft_c2r(fft_->inverse, fft_->spectrum[c].get(), t);
    float* tail = overlap_.data() + c * kHop;
    for (long long i = 0; i < kHop; ++i) {
      out_[2 * i + c] = tail[i] + t[i] * window_[i] * scale;
      tail[i] = t[kHop + i] * window_[kHop + i] * scale;
    }
  }
  used_ = 0;
}

void LSRCReduceVocals::Read(float* buffer, long long frames) {
  if (!fft_) {
    ReadInput(buffer, frames);
    return;
  }
  if (!primed_) Seek(Input().GetPositionSample());
  for (long long done = 0; done < frames;) {
    if (used_ == kHop) NextHop();
    const long long n = std::min(frames - done, kHop - used_);
    std::copy(out_.begin() + 2 * used_, out_.begin() + 2 * (used_ + n), buffer + 2 * done);
    used_ += n;
    done += n;
  }
  position_ += frames;
}

void LSRCReduceVocals::Seek(long long frame) {
  if (!fft_) {
    LSoundProcessBase::Seek(frame);
    return;
  }
  frame = std::max(0LL, frame);
  const long long hop = frame - frame % kHop;
  std::fill(in_.begin(), in_.end(), 0.0f);
  std::fill(overlap_.begin(), overlap_.end(), 0.0f);
  // The spectrum a hop earlier supplies the first half of this hop's output;
  // before frame 0 the input is silence.
  if (hop >= kHop) {
    LSoundProcessBase::Seek(hop - kHop);
    ReadInput(fresh_.data(), kHop);
    for (int c = 0; c < 2; ++c)
      for (long long i = 0; i < kHop; ++i) in_[c * kSize + kHop + i] = fresh_[2 * i + c];
  } else {
    LSoundProcessBase::Seek(0);
  }
  primed_ = true;
  used_ = kHop;
  position_ = frame;
  NextHop();  // the window that ends at the hop: its later half is kept
  NextHop();
  used_ = frame - hop;
}
