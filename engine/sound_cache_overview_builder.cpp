#include "engine/sound_cache_overview_builder.h"

#include <algorithm>

#include "engine/sound_cache_overview.h"

namespace {

void PutCode(unsigned char* at, std::uint16_t code) {
  at[0] = static_cast<unsigned char>(code & 0xFF);
  at[1] = static_cast<unsigned char>(code >> 8);
}

}  // namespace

LSoundCacheOverviewBuilder::LSoundCacheOverviewBuilder(int channels)
    : channels_(channels < 1 ? 1 : channels), positive_(channels_, 0.0f), negative_(channels_, 0.0f) {}

namespace {

// Running peaks over a stretch of frames; the channel count is a constant in the
// common cases so the loop vectorises.
template <int kChannels>
void Peaks(const float* buffer, long long frames, int channels, float* positive, float* negative) {
  const int n = kChannels > 0 ? kChannels : channels;
  if constexpr (kChannels > 0) {
    // Eight lanes, each a channel's running peak over every eighth sample, fill
    // whole vectors; the lanes of a channel are joined at the end.
    constexpr int kLanes = 8;
    static_assert(kLanes % kChannels == 0);
    float hi[kLanes], lo[kLanes];
    for (int k = 0; k < kLanes; ++k) {
      hi[k] = positive[k % kChannels];
      lo[k] = negative[k % kChannels];
    }
    const long long samples = frames * kChannels;
    long long i = 0;
    for (; i + kLanes <= samples; i += kLanes) {
      for (int k = 0; k < kLanes; ++k) {
        const float v = buffer[i + k];
        hi[k] = v > hi[k] ? v : hi[k];
        lo[k] = v < lo[k] ? v : lo[k];
      }
    }
    for (; i < samples; ++i) {
      const int k = static_cast<int>(i % kLanes);
      hi[k] = buffer[i] > hi[k] ? buffer[i] : hi[k];
      lo[k] = buffer[i] < lo[k] ? buffer[i] : lo[k];
    }
    for (int k = 0; k < kLanes; ++k) {
      const int c = k % kChannels;
      positive[c] = hi[k] > positive[c] ? hi[k] : positive[c];
      negative[c] = lo[k] < negative[c] ? lo[k] : negative[c];
    }
  } else {
    for (long long f = 0; f < frames; ++f) {
      for (int c = 0; c < n; ++c) {
        const float v = buffer[f * n + c];
        if (v > positive[c]) positive[c] = v;
        if (v < negative[c]) negative[c] = v;
      }
    }
  }
}

}  // namespace

void LSoundCacheOverviewBuilder::Add(const float* buffer, long long frames) {
  float* positive = positive_.data();
  float* negative = negative_.data();
  while (frames > 0) {
    const long long take = std::min(frames, kLSoundCacheOverviewBlockFrames - blockFrames_);
    if (channels_ == 1) {
      Peaks<1>(buffer, take, 1, positive, negative);
    } else if (channels_ == 2) {
      Peaks<2>(buffer, take, 2, positive, negative);
    } else {
      Peaks<0>(buffer, take, channels_, positive, negative);
    }
    buffer += take * channels_;
    frames -= take;
    blockFrames_ += take;
    if (blockFrames_ >= kLSoundCacheOverviewBlockFrames) EndBlock();
  }
}

void LSoundCacheOverviewBuilder::EndBlock() {
  const std::size_t at = records_.size();
  records_.resize(at + static_cast<std::size_t>(channels_) * kLSoundCacheOverviewRecordBytes);
  for (int c = 0; c < channels_; ++c) {
    unsigned char* record = records_.data() + at + static_cast<std::size_t>(c) * kLSoundCacheOverviewRecordBytes;
    PutCode(record, LSoundCachePeakCode(positive_[c]));
    PutCode(record + 2, LSoundCachePeakCode(-negative_[c]));
  }
  std::fill(positive_.begin(), positive_.end(), 0.0f);
  std::fill(negative_.begin(), negative_.end(), 0.0f);
  blockFrames_ = 0;
}

void LSoundCacheOverviewBuilder::Flush(LByteStream& stream) {
  if (records_.empty()) return;
  (void)stream.WriteAll(records_.data(), static_cast<long long>(records_.size()));
  records_.clear();
}

void LSoundCacheOverviewBuilder::Restart(long long framesIntoBlock) {
  records_.clear();
  std::fill(positive_.begin(), positive_.end(), 0.0f);
  std::fill(negative_.begin(), negative_.end(), 0.0f);
  blockFrames_ = framesIntoBlock;
}
