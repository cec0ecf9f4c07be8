#pragma once
// LSoundCacheSource: reads a cache item's ".aud" back, in blocks straight into
// the caller's buffer (the data is raw float, so there is nothing to convert).
// Keeps the source contract: frames before 0 and past the end read as silence,
// and so does everything when the file is missing or a read fails.
// The source holds a reference to its item while it lives.
#include <cstdint>
#include <memory>

#include "base/file_stream.h"
#include "engine/sound_cache_item_handle.h"
#include "engine/sound_source.h"

class LSoundCacheSource final : public LSoundSourceBase {
public:
  // Opens the item's ".aud" with a shared lock (waiting at most kLLockWaitMs).
  // Its length is the file's size in frames of the given layout.
  LSoundCacheSource(unsigned short item, std::uint32_t sampleRate, std::uint8_t channels);

  void Read(float* buffer, long long frames) override;
  long long GetPositionSample() const override { return position_; }
  long long GetEndSample() const override { return end_; }
  void Seek(long long frame) override { position_ = frame; }

  [[nodiscard]] unsigned short Item() const { return item_.Number(); }
  [[nodiscard]] bool IsOpen() const { return audio_->IsOpen(); }

private:
  LSoundCacheItemHandle item_;
  std::unique_ptr<LFileStream> audio_;
  long long position_ = 0;
  long long end_ = 0;
  long long fileFrame_ = 0;  // where the file stands, in frames; -1 when not known
  long long bytesPerFrame_;
};

// A source over an item, its layout taken from the item's ".audinfo"; an error
// source (kLSourceCannotOpen) when that cannot be read or names 0 channels.
[[nodiscard]] LSoundSource LSoundCacheSourceOpen(unsigned short item);
