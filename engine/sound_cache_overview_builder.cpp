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

void LSoundCacheOverviewBuilder::Add(const float* buffer, long long frames) {
  float* positive = positive_.data();
  float* negative = negative_.data();
  while (frames > 0) {
    const long long take = std::min(frames, kLSoundCacheOverviewBlockFrames - blockFrames_);
    const float* end = buffer + take * channels_;
    for (const float* frame = buffer; frame < end; frame += channels_) {
      for (int c = 0; c < channels_; ++c) {
        const float v = frame[c];
        if (v > positive[c]) positive[c] = v;
        if (v < negative[c]) negative[c] = v;
      }
    }
    buffer = end;
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
