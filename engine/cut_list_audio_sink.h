#pragma once
// LCutListAudioSink: writes new audio (a recording, an effect's output) into a
// brand-new cache item and shows that item in a cut list as its single
// segment: on CommitUpTo while writing, so a growing recording can be drawn and
// played, and for good when the sink closes. Frames go to the item's ".aud" as
// they come and their peaks into its ".grf", one record per channel for every
// 256 frames, coded as in sound_cache_overview.h.
//
// The target cut list must outlive the sink, and nobody else may edit it while
// the sink writes (the recorder commits from its own thread).
// A file that cannot be created raises the error flag and its data is dropped;
// the cut list still gets its segment at close. Write failures are not reported.
#include <cstdint>
#include <memory>
#include <vector>

#include "base/file_stream.h"
#include "base/string_long.h"
#include "engine/cut_list_audio.h"
#include "engine/cut_list_segment.h"
#include "engine/sound_cache_overview_builder.h"
#include "engine/sound_sink.h"
#include "engine/sound_source.h"

class LCutListAudioSink final : public LSoundSinkBase {
public:
  // A channel count of 0 gives a mono sink in error. path, when not empty,
  // becomes the target's path each time the sink publishes.
  LCutListAudioSink(LCutListAudio* target, std::uint32_t sampleRate, std::uint8_t channels, const char* path = nullptr);
  // Writes the last overview records and ".audinfo", publishes the item as the
  // target's single segment and releases the sink's own reference to it.
  ~LCutListAudioSink() override;

  void Write(const float* buffer, long long frames) override;
  // Moves the write position (below 0 counts as 0); writing then overwrites
  // from there, the overview from the record of the block that holds it.
  void Seek(long long frame) override;

  // Shows what has been written up to frame in the target, short of the
  // unfinished overview block (every frame shown has its record). Answers the
  // frames published.
  long long CommitUpTo(long long frame);
  // Writes the records of the current overview block and starts the next.
  void WriteGrfFrame();

  // At close, the last `frames` frames of tail are written before anything else.
  void TailSet(LSoundSource tail, long long frames);

  [[nodiscard]] unsigned short Item() const { return segment_.ItemNumber(); }
  // Frames gathered in the current overview block (0 to 256).
  [[nodiscard]] long long BlockFrames() const { return overviewBuilder_.BlockFrames(); }

private:
  void RecordsFlush();
  void Publish();

  LCutListAudio* target_;
  LCutListSegment segment_;
  std::unique_ptr<LFileStream> audio_;
  std::unique_ptr<LFileStream> overview_;
  LSoundCacheOverviewBuilder overviewBuilder_;
  long long bytesPerFrame_;
  long long tailFrames_ = 0;
  LSoundSource tail_ = LSoundSource::Error(kLSourceClosed);
  LStringLong path_;
};
