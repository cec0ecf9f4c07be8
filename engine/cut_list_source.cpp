#include "engine/cut_list_source.h"

#include <algorithm>
#include <cstring>

#include "base/platform_file.h"
#include "engine/sound_cache.h"

LCutListAudioSource::LCutListAudioSource(const LCutListAudio& list)
    : LSoundSourceBase(list.GetSampleRate(), list.GetChannels()),
      bytesPerFrame_(static_cast<long long>(list.GetChannels()) * static_cast<long long>(sizeof(float))) {
  segments_.reserve(list.Segments().size());
  starts_.reserve(list.Segments().size());
  for (const LCutListSegment& segment : list.Segments()) {
    starts_.push_back(end_);
    end_ += segment.length;
    segments_.push_back(segment);
  }
}

void LCutListAudioSource::Seek(long long frame) {
  if (frame == position_) return;
  position_ = frame;
  // The last segment starting at or before the frame; Read steps over empty ones.
  auto after = std::upper_bound(starts_.begin(), starts_.end(), frame);
  current_ = after == starts_.begin() ? 0 : static_cast<std::size_t>(after - starts_.begin()) - 1;
}

void LCutListAudioSource::Read(float* buffer, long long frames) {
  if (frames <= 0 || !buffer) return;
  const std::size_t channels = GetChannels();
  float* out = buffer;
  while (frames > 0) {
    if (position_ < 0) {
      const long long take = std::min(frames, -position_);
      std::memset(out, 0, static_cast<std::size_t>(take) * channels * sizeof(float));
      out += take * static_cast<long long>(channels);
      frames -= take;
      position_ += take;
      continue;
    }
    while (current_ < segments_.size() && position_ >= starts_[current_] + segments_[current_].length) ++current_;
    if (current_ >= segments_.size()) {
      std::memset(out, 0, static_cast<std::size_t>(frames) * channels * sizeof(float));
      position_ += frames;
      return;
    }
    const long long within = position_ - starts_[current_];
    const long long take = std::min(frames, segments_[current_].length - within);
    SegmentRead(current_, within, out, take);
    out += take * static_cast<long long>(channels);
    frames -= take;
    position_ += take;
  }
}

LFileStream* LCutListAudioSource::ItemFile(unsigned short item) {
  if (item != fileItem_) {
    fileItem_ = item;
    filePosition_ = -1;
    LStringLong path = LSoundCache::Instance().FilePath(item, kLSoundCacheExtAudio);
    file_ = std::make_unique<LFileStream>(path.empty() ? -1 : LFileOpen(path.c_str(), kLFileRead, LFileLock::Shared));
  }
  return file_->IsOpen() ? file_.get() : nullptr;
}

void LCutListAudioSource::SegmentRead(std::size_t index, long long within, float* out, long long frames) {
  const LCutListSegment& segment = segments_[index];
  const long long values = frames * static_cast<long long>(GetChannels());
  LFileStream* file = segment.IsSilence() || bytesPerFrame_ == 0 ? nullptr : ItemFile(segment.ItemNumber());
  if (!file) {
    std::memset(out, 0, static_cast<std::size_t>(values) * sizeof(float));
    return;
  }
  long long itemFrame = segment.offset + within;
  float* at = out;
  long long left = frames;
  if (itemFrame < 0) {
    // Frames before the item's start: silence.
    const long long before = std::min(left, -itemFrame);
    std::memset(at, 0, static_cast<std::size_t>(before * bytesPerFrame_));
    at += before * static_cast<long long>(GetChannels());
    left -= before;
    itemFrame += before;
  }
  if (left > 0) {
    const long long offset = itemFrame * bytesPerFrame_;
    const long long bytes = left * bytesPerFrame_;
    long long got = -1;
    if (filePosition_ == offset || file->Seek(offset)) got = file->Read(at, bytes);
    if (got < 0) {
      got = 0;
      filePosition_ = -1;
    } else {
      filePosition_ = offset + got;
    }
    // What the file lacks reads as silence; a torn sample is dropped with it.
    const long long whole = got / static_cast<long long>(sizeof(float)) * static_cast<long long>(sizeof(float));
    if (whole < bytes)
      std::memset(reinterpret_cast<unsigned char*>(at) + whole, 0, static_cast<std::size_t>(bytes - whole));
  }
  if (segment.gain != 1.0f) {
    const float gain = segment.gain;
    for (long long i = 0; i < values; ++i) out[i] *= gain;
  }
}

LSoundSource LCutListAudio::OpenSource() const { return LMakeSource<LCutListAudioSource>(*this); }
