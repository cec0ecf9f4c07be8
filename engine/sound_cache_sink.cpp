#include "engine/sound_cache_sink.h"

#include <algorithm>
#include <cstring>

#include "base/platform_file.h"
#include "engine/sound_cache_audio_info.h"
#include "engine/sound_cache_overview.h"

namespace {

constexpr long long kTailBlockFrames = 8192;

std::unique_ptr<LFileStream> CreateItemFile(unsigned short item, const char* extension) {
  LStringLong path = LSoundCache::Instance().FilePath(item, extension);
  int fd = path.empty() ? -1
                        : LFileOpen(path.c_str(), kLFileWrite | kLFileCreate | kLFileTruncate, LFileLock::Shared,
                                    kLLockWaitMs, 0666);
  return std::make_unique<LFileStream>(fd);
}

void PutCode(unsigned char* at, std::uint16_t code) {
  at[0] = static_cast<unsigned char>(code & 0xFF);
  at[1] = static_cast<unsigned char>(code >> 8);
}

}  // namespace

LSoundCacheSink::LSoundCacheSink(std::uint32_t sampleRate, std::uint8_t channels, LSoundCacheItemHandle item,
                                 long long* lengthOut)
    : LSoundSinkBase(sampleRate, channels == 0 ? 1 : channels),
      item_(std::move(item)),
      audio_(CreateItemFile(item_.Number(), kLSoundCacheExtAudio)),
      overview_(CreateItemFile(item_.Number(), kLSoundCacheExtOverview)),
      positivePeak_(GetChannels(), 0.0f),
      negativePeak_(GetChannels(), 0.0f),
      lengthOut_(lengthOut) {
  if (channels == 0 || !audio_->IsOpen() || !overview_->IsOpen()) SetError();
}

void LSoundCacheSink::TailSet(LSoundSource tail, long long frames) {
  tail_ = std::move(tail);
  tailFrames_ = frames;
}

void LSoundCacheSink::Write(const float* buffer, long long frames) {
  if (frames <= 0 || !buffer) return;
  AdvancePosition(frames);
  const long long bytes = frames * GetChannels() * static_cast<long long>(sizeof(float));
  // A failed write is not reported: the item reads the missing frames as silence.
  (void)audio_->WriteAll(buffer, bytes);
  OverviewAdd(buffer, frames);
  OverviewFlush();
}

void LSoundCacheSink::OverviewAdd(const float* buffer, long long frames) {
  const int channels = GetChannels();
  float* positive = positivePeak_.data();
  float* negative = negativePeak_.data();
  while (frames > 0) {
    long long take = std::min(frames, kLSoundCacheOverviewBlockFrames - blockFrames_);
    const float* end = buffer + take * channels;
    for (const float* frame = buffer; frame < end; frame += channels) {
      for (int c = 0; c < channels; ++c) {
        float v = frame[c];
        if (v > positive[c]) positive[c] = v;
        if (v < negative[c]) negative[c] = v;
      }
    }
    buffer = end;
    frames -= take;
    blockFrames_ += take;
    if (blockFrames_ == kLSoundCacheOverviewBlockFrames) OverviewBlockEnd();
  }
}

void LSoundCacheSink::OverviewBlockEnd() {
  const int channels = GetChannels();
  std::size_t at = records_.size();
  records_.resize(at + static_cast<std::size_t>(channels) * kLSoundCacheOverviewRecordBytes);
  for (int c = 0; c < channels; ++c) {
    unsigned char* record = records_.data() + at + static_cast<std::size_t>(c) * kLSoundCacheOverviewRecordBytes;
    PutCode(record, LSoundCachePeakCode(positivePeak_[c]));
    PutCode(record + 2, LSoundCachePeakCode(-negativePeak_[c]));
    positivePeak_[c] = 0.0f;
    negativePeak_[c] = 0.0f;
  }
  blockFrames_ = 0;
}

void LSoundCacheSink::OverviewFlush() {
  if (records_.empty()) return;
  // Lost records draw as silence; like the audio, not reported.
  (void)overview_->WriteAll(records_.data(), static_cast<long long>(records_.size()));
  records_.clear();
}

LSoundCacheSink::~LSoundCacheSink() {
  // A tail of another layout would not fit the frames; it is left out.
  if (tailFrames_ > 0 && tail_.GetChannels() == GetChannels()) {
    std::vector<float> block(static_cast<std::size_t>(std::min(tailFrames_, kTailBlockFrames)) * GetChannels());
    tail_.Seek(tail_.GetEndSample() - tailFrames_);
    for (long long left = tailFrames_; left > 0;) {
      long long take = std::min(left, kTailBlockFrames);
      tail_.Read(block.data(), take);
      Write(block.data(), take);
      left -= take;
    }
  }
  if (blockFrames_ > 0) OverviewBlockEnd();
  OverviewFlush();
  if (lengthOut_) *lengthOut_ = GetPosition();

  LStringLong infoPath = LSoundCache::Instance().FilePath(item_.Number(), kLSoundCacheExtInfo);
  if (!LSoundCacheAudioInfoCreate(infoPath.c_str(), static_cast<std::int32_t>(GetSampleRate()), GetChannels()))
    SetError();

  tail_.Close();
  // The files close (and their locks go) before the item is released, which may delete them.
  audio_.reset();
  overview_.reset();
  item_.Reset();
}
