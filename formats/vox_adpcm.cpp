#include "formats/vox_adpcm.h"

#include <algorithm>

#include "engine/sample_format.h"
#include "formats/read_in_steps.h"

namespace {

// The Dialogic step sizes, from 16 to 1552.
constexpr std::int16_t kSteps[] = {16,  17,  19,  21,  23,  25,   28,   31,   34,   37,  41,  45,  50,
                                   55,  60,  66,  73,  80,  88,   97,   107,  118,  130, 143, 157, 173,
                                   190, 209, 230, 253, 279, 307,  337,  371,  408,  449, 494, 544, 598,
                                   658, 724, 796, 876, 963, 1060, 1166, 1282, 1411, 1552};
constexpr int kStepCount = static_cast<int>(sizeof kSteps / sizeof kSteps[0]);
static_assert(kStepCount == 49);

// Samples are 12-bit; they are widened to 16 bits for the float conversion.
constexpr int kLow = -2048;
constexpr int kHigh = 2047;
constexpr int kWiden = 16;
// VOX files are telephone recordings; a missing rate means 8000 Hz.
constexpr std::uint32_t kFallbackRate = 8000;

}  // namespace

LSRCVOX::LSRCVOX(std::unique_ptr<LByteStream> stream, std::uint32_t sampleRate, long long dataSize)
    : LSoundSourceBase(sampleRate < 1 ? kFallbackRate : sampleRate, 1),
      stream_(std::move(stream)),
      bytes_(static_cast<size_t>(kLFileBufferFrames / 2)),
      samples_(static_cast<size_t>(kLFileBufferFrames)) {
  SetMaxAmplitude(32767.0f / 32768.0f);
  if (sampleRate < 1) SetErrorCode(kLSourceDamaged);
  if (!stream_ || (dataStart_ = stream_->Tell()) < 0) {
    SetErrorCode(kLSourceCannotOpen);
    stream_.reset();
    dataStart_ = 0;
    return;
  }
  dataSize_ = std::max(0LL, dataSize);
}

void LSRCVOX::Restart() {
  state_ = LAdpcmState{};
  bufferStart_ = 0;
  bufferCount_ = 0;
}

bool LSRCVOX::DecodeNext() {
  bufferStart_ += bufferCount_;
  bufferCount_ = 0;
  const long long byteAt = bufferStart_ / 2;
  const long long want = std::min(static_cast<long long>(bytes_.size()), dataSize_ - byteAt);
  if (want <= 0 || !stream_->Seek(dataStart_ + byteAt)) return false;
  const long long got = stream_->Read(bytes_.data(), want);
  if (got <= 0) return false;
  for (long long i = 0; i < got; ++i) {
    const int byte = bytes_[static_cast<size_t>(i)];
    samples_[static_cast<size_t>(2 * i)] =
        static_cast<std::int16_t>(LAdpcmDecodeNibble(state_, byte >> 4, kSteps, kStepCount, kLow, kHigh) * kWiden);
    samples_[static_cast<size_t>(2 * i + 1)] =
        static_cast<std::int16_t>(LAdpcmDecodeNibble(state_, byte & 0x0F, kSteps, kStepCount, kLow, kHigh) * kWiden);
  }
  bufferCount_ = 2 * got;
  return true;
}

void LSRCVOX::Read(float* out, long long frames) {
  LReadInSteps(out, frames, 1, position_, [&](float* to, long long at, long long n) {
    long long done = 0;
    while (stream_ && done < n && at + done < GetEndSample()) {
      const long long frame = at + done;
      if (frame < bufferStart_) Restart();
      while (frame >= bufferStart_ + bufferCount_) {
        if (!DecodeNext()) return done;
      }
      const long long m = std::min(n - done, bufferStart_ + bufferCount_ - frame);
      ConvertSamplesIn<LSF16>(to + done, samples_.data() + (frame - bufferStart_), m);
      done += m;
    }
    return done;
  });
}
