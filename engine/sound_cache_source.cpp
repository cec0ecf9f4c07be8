#include "engine/sound_cache_source.h"

#include <algorithm>
#include <cstring>

#include "base/platform_file.h"
#include "engine/sound_cache_item.h"

LSoundCacheSource::LSoundCacheSource(unsigned short item, std::uint32_t sampleRate, std::uint8_t channels)
    : LSoundSourceBase(sampleRate, channels == 0 ? 1 : channels),
      item_(item),
      bytesPerFrame_(static_cast<long long>(GetChannels()) * static_cast<long long>(sizeof(float))) {
  LStringLong path = LSoundCache::Instance().FilePath(item, kLSoundCacheExtAudio);
  audio_ = std::make_unique<LFileStream>(path.empty() ? -1
                                                      : LFileOpen(path.c_str(), kLFileRead, LFileLock::Shared));
  if (!audio_->IsOpen()) {
    SetErrorCode(kLSourceCannotOpen);
    return;
  }
  long long size = audio_->Size();
  end_ = size > 0 ? size / bytesPerFrame_ : 0;
}

void LSoundCacheSource::Read(float* buffer, long long frames) {
  if (frames <= 0 || !buffer) return;
  const int channels = GetChannels();
  float* out = buffer;
  long long at = position_;
  long long left = frames;
  position_ += frames;

  if (at < 0) {
    long long silence = std::min(left, -at);
    std::memset(out, 0, static_cast<std::size_t>(silence * bytesPerFrame_));
    out += silence * channels;
    left -= silence;
    at += silence;
  }
  if (left > 0 && at < end_) {
    long long take = std::min(left, end_ - at);
    long long got = 0;
    if (audio_->IsOpen() && (fileFrame_ == at || audio_->Seek(at * bytesPerFrame_))) {
      got = std::max(0LL, audio_->Read(out, take * bytesPerFrame_));
    }
    // A short read leaves the file between frames; the next read seeks.
    fileFrame_ = (got % bytesPerFrame_ == 0) ? at + got / bytesPerFrame_ : -1;
    if (got < take * bytesPerFrame_) {
      std::memset(reinterpret_cast<unsigned char*>(out) + got, 0, static_cast<std::size_t>(take * bytesPerFrame_ - got));
    }
    out += take * channels;
    left -= take;
  }
  if (left > 0) std::memset(out, 0, static_cast<std::size_t>(left * bytesPerFrame_));
}

LSoundSource LSoundCacheSourceOpen(unsigned short item) {
  int sampleRate = 0;
  unsigned char channels = 0;
  LStringLong info = LSoundCache::Instance().FilePath(item, kLSoundCacheExtInfo);
  if (!LSoundCacheItemAudioInfoGet(info.c_str(), sampleRate, channels) || channels == 0 || sampleRate <= 0)
    return LSoundSource::Error(kLSourceCannotOpen);
  return LMakeSource<LSoundCacheSource>(item, static_cast<std::uint32_t>(sampleRate), channels);
}
