#include "engine/cut_list_audio_sink.h"

#include <algorithm>
#include <cstring>

#include "base/platform_file.h"
#include "engine/sound_cache.h"
#include "engine/sound_cache_audio_info.h"
#include "engine/sound_cache_overview.h"

namespace {

// Frames moved per block when the tail is copied in at close.
constexpr long long kTailBlockFrames = 8192;

std::unique_ptr<LFileStream> CreateItemFile(unsigned short item, const char* extension) {
  LStringLong path = LSoundCache::Instance().FilePath(item, extension);
  // Non-blocking: the lock is tried once; a number we were just given is nobody else's.
  int fd = path.empty() ? -1
                        : LFileOpen(path.c_str(), kLFileWrite | kLFileCreate | kLFileTruncate | kLFileNonBlock,
                                    LFileLock::Shared, 0, 0666);
  return std::make_unique<LFileStream>(fd);
}

}  // namespace

LCutListAudioSink::LCutListAudioSink(LCutListAudio* target, std::uint32_t sampleRate, std::uint8_t channels,
                                     const char* path)
    : LSoundSinkBase(sampleRate, channels == 0 ? 1 : channels),
      target_(target),
      segment_(LSoundCacheItemHandle::Adopt(LSoundCache::Instance().ItemCreateNewAndIncRef()), 0, 1.0f, 0),
      overviewBuilder_(GetChannels()),
      bytesPerFrame_(static_cast<long long>(GetChannels()) * static_cast<long long>(sizeof(float))),
      path_(path ? path : "") {
  if (channels == 0) SetError();
  audio_ = CreateItemFile(segment_.ItemNumber(), kLSoundCacheExtAudio);
  overview_ = CreateItemFile(segment_.ItemNumber(), kLSoundCacheExtOverview);
  if (!audio_->IsOpen() || !overview_->IsOpen()) SetError();
}

void LCutListAudioSink::TailSet(LSoundSource tail, long long frames) {
  tail_ = std::move(tail);
  tailFrames_ = frames;
}

void LCutListAudioSink::Write(const float* buffer, long long frames) {
  if (frames <= 0 || !buffer) return;
  AdvancePosition(frames);
  // Lost frames read as silence and lost records draw as silence; neither is reported.
  if (audio_->IsOpen()) (void)audio_->WriteAll(buffer, frames * bytesPerFrame_);
  overviewBuilder_.Add(buffer, frames);
  RecordsFlush();
}

void LCutListAudioSink::RecordsFlush() {
  if (overview_->IsOpen()) overviewBuilder_.Flush(*overview_);
}

void LCutListAudioSink::WriteGrfFrame() {
  overviewBuilder_.EndBlock();
  RecordsFlush();
}

void LCutListAudioSink::Seek(long long frame) {
  frame = std::max(frame, 0LL);
  SetPosition(frame);
  const long long block = frame / kLSoundCacheOverviewBlockFrames;
  if (audio_->IsOpen()) (void)audio_->Seek(frame * bytesPerFrame_);
  if (overview_->IsOpen()) (void)overview_->Seek(block * GetChannels() * kLSoundCacheOverviewRecordBytes);
  overviewBuilder_.Restart(frame % kLSoundCacheOverviewBlockFrames);
}

long long LCutListAudioSink::CommitUpTo(long long frame) {
    // Short of the unfinished block, so that every frame shown has its record.
  long long end = std::min(frame - overviewBuilder_.BlockFrames(), GetPosition());
  end = std::max(end, segment_.offset);
  segment_.length = end - segment_.offset;
  Publish();
  return end;
}

void LCutListAudioSink::Publish() {
  if (!target_) return;
  target_->SetSingleCutListSegment(segment_, static_cast<int>(GetSampleRate()), GetChannels());
  if (!path_.empty()) target_->SetPath(path_.c_str());
}

LCutListAudioSink::~LCutListAudioSink() {
  const bool tailWritten = tailFrames_ > 0;
  if (tailWritten) {
    std::vector<float> block(static_cast<std::size_t>(std::min(tailFrames_, kTailBlockFrames)) * GetChannels());
    tail_.Seek(tail_.GetEndSample() - tailFrames_);
    for (long long left = tailFrames_; left > 0;) {
      const long long take = std::min(left, kTailBlockFrames);
      tail_.Read(block.data(), take);
      Write(block.data(), take);
      left -= take;
    }
  }
  if (overviewBuilder_.BlockFrames() > 0) WriteGrfFrame();
  segment_.length = std::max(GetPosition() - segment_.offset, 0LL);
  if (tailWritten && target_ && !target_->IsMP3LosslessMode()) segment_.SubtractEncoderPadding();
  Publish();

  const unsigned short item = segment_.ItemNumber();
  LStringLong infoPath = LSoundCache::Instance().FilePath(item, kLSoundCacheExtInfo);
  if (LSoundCacheAudioInfoCreate(infoPath.c_str(), static_cast<std::int32_t>(GetSampleRate()), GetChannels()))
    LSoundCache::Instance().NotifyAnalyzerChange(item, kLSoundCacheChangeItemAdded);
  else
    SetError();

  tail_.Close();
  // The files close (and their locks go) before the sink's reference to the item does.
  audio_.reset();
  overview_.reset();
  segment_ = LCutListSegment();
}

LSoundSink LCutListAudio::OpenSink(int sampleRate, unsigned char channels, const char* path) {
  return LMakeSink<LCutListAudioSink>(this, static_cast<std::uint32_t>(sampleRate), static_cast<std::uint8_t>(channels),
                                      path);
}
