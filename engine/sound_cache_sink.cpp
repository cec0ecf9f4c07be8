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

}  // namespace

LSoundCacheSink::LSoundCacheSink(std::uint32_t sampleRate, std::uint8_t channels, LSoundCacheItemHandle item,
                                 long long* lengthOut)
    : LSoundSinkBase(sampleRate, channels == 0 ? 1 : channels),
      item_(std::move(item)),
      audio_(CreateItemFile(item_.Number(), kLSoundCacheExtAudio)),
      overview_(CreateItemFile(item_.Number(), kLSoundCacheExtOverview)),
      overviewBuilder_(GetChannels()),
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
  overviewBuilder_.Add(buffer, frames);
  overviewBuilder_.Flush(*overview_);
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
  if (overviewBuilder_.BlockFrames() > 0) overviewBuilder_.EndBlock();
  overviewBuilder_.Flush(*overview_);
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
