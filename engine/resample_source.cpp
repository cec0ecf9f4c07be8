#include "engine/resample_source.h"

#include <algorithm>
#include <cstring>
#include <numeric>

#ifdef SONVALE_HAVE_SOXR
#include <soxr.h>
#endif

namespace {

// Input frames fed to the converter per step.
constexpr long long kInputBlockFrames = 8192;
// Output frames run through the converter ahead of a seek target; longer than
// the filter of any ratio, so the frames that follow match a reading from the start.
constexpr long long kPrerollFrames = 16384;
// Restart points lie on frames where both rates' grids meet; when they lie
// further apart than this the restart point is the nearest input frame instead.
constexpr long long kMaxCycleFrames = 1LL << 20;

}  // namespace

LSRCResample::LSRCResample(LSoundSource input, std::uint32_t outRate)
    : LSoundSourceBase(outRate, input.GetChannels()), input_(std::move(input)), inRate_(input_.GetSampleRate()) {
  if (input_.IsError() || inRate_ == 0 || outRate == 0) {
    SetErrorCode(kLSourceBadInput);
    return;
  }
#ifdef SONVALE_HAVE_SOXR
  soxr_error_t error = nullptr;
  const soxr_io_spec_t io = soxr_io_spec(SOXR_FLOAT32_I, SOXR_FLOAT32_I);
  const soxr_quality_spec_t quality = soxr_quality_spec(SOXR_HQ, SOXR_LINEAR_PHASE);
  const soxr_runtime_spec_t runtime = soxr_runtime_spec(1);
  soxr_ = soxr_create(inRate_, outRate, GetChannels(), &error, &io, &quality, &runtime);
  if (error || !soxr_) {
    soxr_ = nullptr;
    SetErrorCode(kLSourceBadInput);
    return;
  }
  const int channels = GetChannels();
  inBuffer_.resize(static_cast<size_t>(kInputBlockFrames * channels));
  const long long queueFrames = kInputBlockFrames * outRate / inRate_ + 4096;
  queue_.resize(static_cast<size_t>(queueFrames * channels));
#else
  SetErrorCode(kLSourceCodecMissing);
#endif
}

LSRCResample::~LSRCResample() {
#ifdef SONVALE_HAVE_SOXR
  if (soxr_) soxr_delete(static_cast<soxr_t>(soxr_));
#endif
}

LSoundSource LSRCResample::Convert(LSoundSource input, std::uint32_t outRate) {
  if (input.GetSampleRate() == outRate) return input;
  return LMakeSource<LSRCResample>(std::move(input), outRate);
}

long long LSRCResample::GetEndSample() const {
  if (!soxr_) return 0;
  const long long inEnd = std::max(0LL, input_.GetEndSample());
  const __int128 scaled = static_cast<__int128>(inEnd) * GetSampleRate() + inRate_ / 2;
  return static_cast<long long>(scaled / inRate_);
}

void LSRCResample::Read(float* out, long long frames) {
  const int channels = GetChannels();
  while (frames > 0) {
    long long n = frames;
    long long got = 0;
    const long long end = GetEndSample();
    if (position_ < 0) {
      n = std::min(frames, -position_);
    } else if (position_ < end) {
      n = std::min(frames, end - position_);
      if (streamAt_ != position_) Prime(position_);
      got = Take(out, n);
      // A converter that ends a frame early leaves silence; it is not restarted for it.
      if (got < n) streamAt_ = position_ + n;
    }
    std::memset(out + got * channels, 0, static_cast<size_t>((n - got) * channels) * sizeof(float));
    out += n * channels;
    position_ += n;
    frames -= n;
  }
}

void LSRCResample::Prime(long long at) {
#ifdef SONVALE_HAVE_SOXR
  const long long outRate = GetSampleRate();
  const long long inRate = inRate_;
  const long long g = std::gcd(inRate, outRate);
  const long long cycleIn = inRate / g;
  const long long cycleOut = outRate / g;
  const long long want = at - kPrerollFrames;
  long long startIn = 0;
  long long startOut = 0;
  if (want > 0) {
    if (cycleOut <= kMaxCycleFrames) {
      const long long m = want / cycleOut;
      startIn = m * cycleIn;
      startOut = m * cycleOut;
    } else {
      startIn = static_cast<long long>(static_cast<__int128>(want) * inRate / outRate);
      startOut = static_cast<long long>((static_cast<__int128>(startIn) * outRate + inRate / 2) / inRate);
    }
  }
  soxr_clear(static_cast<soxr_t>(soxr_));
  input_.Seek(startIn);
  inputAt_ = startIn;
  inHead_ = 0;
  inPending_ = 0;
  flushed_ = false;
  drained_ = false;
  queueHead_ = 0;
  queueFrames_ = 0;
  streamAt_ = startOut;
  // Runs up to the target, dropping what comes before it.
  while (streamAt_ < at) {
    if (queueFrames_ == 0 && !Produce()) break;
    const long long drop = std::min<long long>(static_cast<long long>(queueFrames_), at - streamAt_);
    queueHead_ += static_cast<size_t>(drop);
    queueFrames_ -= static_cast<size_t>(drop);
    streamAt_ += drop;
  }
  streamAt_ = at;
#else
  streamAt_ = at;
#endif
}

bool LSRCResample::Produce() {
#ifdef SONVALE_HAVE_SOXR
  if (drained_) return false;
  const int channels = GetChannels();
  if (inPending_ == 0 && !flushed_) {
    const long long left = std::max(0LL, input_.GetEndSample() - inputAt_);
    const long long m = std::min(kInputBlockFrames, left);
    if (m > 0) {
      input_.Read(inBuffer_.data(), m);
      inputAt_ += m;
      inHead_ = 0;
      inPending_ = static_cast<size_t>(m);
    } else {
      flushed_ = true;
    }
  }
  const size_t capacity = queue_.size() / static_cast<size_t>(channels);
  size_t used = 0;
  size_t made = 0;
  const float* in = flushed_ ? nullptr : inBuffer_.data() + inHead_ * static_cast<size_t>(channels);
  soxr_error_t error =
      soxr_process(static_cast<soxr_t>(soxr_), in, flushed_ ? 0 : inPending_, &used, queue_.data(), capacity, &made);
  if (error) {
    drained_ = true;
    return false;
  }
  if (!flushed_) {
    inHead_ += used;
    inPending_ -= used;
  }
  queueHead_ = 0;
  queueFrames_ = made;
  if (flushed_ && made == 0) {
    drained_ = true;
    return false;
  }
  return true;
#else
  return false;
#endif
}

long long LSRCResample::Take(float* out, long long n) {
  const int channels = GetChannels();
  long long got = 0;
  while (got < n) {
    if (queueFrames_ == 0 && !Produce()) break;
    const long long k = std::min<long long>(static_cast<long long>(queueFrames_), n - got);
    std::memcpy(out + got * channels, queue_.data() + queueHead_ * static_cast<size_t>(channels),
                static_cast<size_t>(k * channels) * sizeof(float));
    queueHead_ += static_cast<size_t>(k);
    queueFrames_ -= static_cast<size_t>(k);
    got += k;
    streamAt_ += k;
  }
  return got;
}
