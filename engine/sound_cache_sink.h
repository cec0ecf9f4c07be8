#pragma once
// LSoundCacheSink: writes a new cache item. Frames go to ".aud" as they come
// (raw native floats), their peaks into ".grf" (see sound_cache_overview.h) one
// record per channel for every 256 frames; when the sink goes, the last partial
// block gets its records, the frame count goes to the caller's length variable
// and ".audinfo" is written, and the sink's reference to the item is released.
//
// The sink owns one reference to its item for as long as it lives; a caller
// that wants the item to outlive the sink holds a reference of its own.
// A failed write to ".aud" or ".grf" is not reported (the data is lost); a file
// that cannot be created, or a format of 0 channels, raises the error flag.
#include <cstdint>
#include <memory>
#include <vector>

#include "base/file_stream.h"
#include "engine/sound_cache_item_handle.h"
#include "engine/sound_cache_overview_builder.h"
#include "engine/sound_sink.h"
#include "engine/sound_source.h"

class LSoundCacheSink final : public LSoundSinkBase {
public:
  // Creates the item's ".aud" and ".grf" (truncated, with a shared lock). A
  // format of 0 channels gives a sink of 1 channel in error. lengthOut, when not
  // null, receives the final frame count as the sink closes; it must outlive the sink.
  LSoundCacheSink(std::uint32_t sampleRate, std::uint8_t channels, LSoundCacheItemHandle item,
                  long long* lengthOut = nullptr);
  ~LSoundCacheSink() override;

  void Write(const float* buffer, long long frames) override;

  // At close, the last `frames` frames of tail are appended before anything else.
  void TailSet(LSoundSource tail, long long frames);

  [[nodiscard]] unsigned short Item() const { return item_.Number(); }

private:
  LSoundCacheItemHandle item_;
  std::unique_ptr<LFileStream> audio_;
  std::unique_ptr<LFileStream> overview_;
  LSoundCacheOverviewBuilder overviewBuilder_;
  long long* lengthOut_;
  long long tailFrames_ = 0;
  LSoundSource tail_ = LSoundSource::Error(kLSourceClosed);
};
