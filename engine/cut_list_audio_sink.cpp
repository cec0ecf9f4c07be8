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

void PutCode(unsigned char* at, std::uint16_t code) {
  at[0] = static_cast<unsigned char>(code & 0xFF);
  at[1] = static_cast<unsigned char>(code >> 8);
}

}  // namespace

LCutListAudioSink::LCutListAudioSink(LCutListAudio* target, std::uint32_t sampleRate, std::uint8_t channels,
                                     const char* path)
    : LSoundSinkBase(sampleRate, channels == 0 ? 1 : channels),
      target_(target),
      segment_(LSoundCacheItemHandle::Adopt(LSoundCache::Instance().ItemCreateNewAndIncRef()), 0, 1.0f, 0),
      positivePeak_(GetChannels(), 0.0f),
      negativePeak_(GetChannels(), 0.0f),
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
  OverviewAdd(buffer, frames);
  RecordsFlush();
}

void LCutListAudioSink::OverviewAdd(const float* buffer, long long frames) {
  const int channels = GetChannels();
  float* positive = positivePeak_.data();
  float* negative = negativePeak_.data();
  while (frames > 0) {
    const long long take = std::min(frames, kLSoundCacheOverviewBlockFrames - blockFrames_);
    const float* end = buffer + take * channels;
    for (const float* frame = buffer; frame < end; frame += channels) {
      for (int c = 0; c < channels; ++c) {
        const float v = frame[c];
        if (v > positive[c]) positive[c] = v;
        if (v < negative[c]) negative[c] = v;
      }
    }
    buffer = end;
    frames -= take;
    blockFrames_ += take;
    if (blockFrames_ >= kLSoundCacheOverviewBlockFrames) BlockEnd();
  }
}

void LCutListAudioSink::BlockEnd() {
  const int channels = GetChannels();
  const std::size_t at = records_.size();
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

void LCutListAudioSink::RecordsFlush() {
  if (records_.empty()) return;
  if (overview_->IsOpen()) (void)overview_->WriteAll(records_.data(), static_cast<long long>(records_.size()));
  records_.clear();
}

void LCutListAudioSink::WriteGrfFrame() {
  BlockEnd();
  RecordsFlush();
}

void LCutListAudioSink::Seek(long long frame) {
  frame = std::max(frame, 0LL);
  SetPosition(frame);
  const long long block = frame / kLSoundCacheOverviewBlockFrames;
  if (audio_->IsOpen()) (void)audio_->Seek(frame * bytesPerFrame_);
  if (overview_->IsOpen()) (void)overview_->Seek(block * GetChannels() * kLSoundCacheOverviewRecordBytes);
  std::fill(positivePeak_.begin(), positivePeak_.end(), 0.0f);
  std::fill(negativePeak_.begin(), negativePeak_.end(), 0.0f);
  blockFrames_ = frame % kLSoundCacheOverviewBlockFrames;
}

long long LCutListAudioSink::CommitUpTo(long long frame) {
  if (blockFrames_ >= kLSoundCacheOverviewBlockFrames) WriteGrfFrame();
  // Short of the unfinished block, so that every frame shown has its record.
  long long end = std::min(frame - blockFrames_, GetPosition());
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
  if (blockFrames_ > 0) WriteGrfFrame();
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
