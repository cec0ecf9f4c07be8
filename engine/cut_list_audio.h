#pragma once
// LCutListAudio: a document's audio as an ordered list of segments, each a
// stretch of one sound-cache item or of silence. Editing only splits, shortens,
// copies and relinks segments; the cached audio never changes. Positions and
// lengths are frames; position 0 is the start of the first segment and the
// length is the sum of the segment lengths.
//
// Edits never fail: positions out of range are clamped, padded with silence or
// ignored, as each operation says. They cost a walk of the list and the copies
// of the segments they touch, independent of the amount of audio.
//
// Cut lists are values. Copies share the cached audio through the item
// references of their segments. The copy constructor clears the flag byte,
// assignment copies it; code relies on the difference.
//
// Threads: a cut list is changed on one thread (the user interface's). A source
// opened over it holds copies of its segments and may be read on any thread
// while the list is edited. A sink writes into it from the recorder's thread;
// nobody else may edit the list meanwhile.
#include <cstdint>

#include "base/array.h"
#include "base/byte_stream.h"
#include "base/list.h"
#include "base/string_long.h"
#include "engine/cut_list_attachment.h"
#include "engine/cut_list_grf.h"
#include "engine/cut_list_segment.h"
#include "engine/mp3_lossless_context.h"
#include "engine/sound_sink.h"
#include "engine/sound_source.h"

// The format of an empty cut list.
constexpr std::uint32_t kLCutListDefaultSampleRate = 44100;
constexpr std::uint8_t kLCutListDefaultChannels = 1;

class LCutListAudio : public LMP3LosslessContextClient {
public:
  LCutListAudio();
  explicit LCutListAudio(LMP3LosslessContext* context);
  // Copies everything but the flag byte, which starts at 0.
  LCutListAudio(const LCutListAudio& other);
  LCutListAudio(LCutListAudio&& other) noexcept;
  // Copies everything, the flag byte included.
  LCutListAudio& operator=(const LCutListAudio& other);
  LCutListAudio& operator=(LCutListAudio&& other) noexcept;
  ~LCutListAudio() override;

  // Format, flag byte, path.
  [[nodiscard]] std::uint32_t GetSampleRate() const { return sampleRate_; }
  [[nodiscard]] std::uint8_t GetChannels() const { return channels_; }
  void SetFormat(std::uint32_t sampleRate, std::uint8_t channels);
  [[nodiscard]] unsigned char GetFlags() const { return flags_; }
  void SetFlags(unsigned char flags) { flags_ = flags; }
  [[nodiscard]] const char* GetPath() const { return path_; }
  // Keeps at most kLPathMax - 1 bytes.
  void SetPath(const char* path);

  // Segments.
  [[nodiscard]] const LList<LCutListSegment>& Segments() const { return segments_; }
  [[nodiscard]] long long SegmentCount() const { return static_cast<long long>(segments_.size()); }
  [[nodiscard]] long long GetLength() const;
  [[nodiscard]] bool IsEmpty() const { return segments_.empty(); }
  // Appends a copy of segment (one more reference on its item).
  void SegmentAppend(const LCutListSegment& segment);
  void SegmentAppend(LCutListSegment&& segment);
  // Drops every segment, releasing their items.
  void Clear();

  [[nodiscard]] LList<LCutListAttachment>& AuxList() { return aux_; }
  [[nodiscard]] const LList<LCutListAttachment>& AuxList() const { return aux_; }

  // Edits.
  // Removes [start, end). Nothing happens when start > end, end < 0 or the list is empty.
  void EfDelete(long long start, long long end);
  // Inserts copies of all of other's segments at position: past the end after
  // a silence filling the gap; at a negative position at the head, followed by
  // -position frames of silence before the old content. An empty other still
  // brings that silence, and nothing else.
  void EfInsert(long long position, const LCutListAudio& other);
  // Inserts silence. The part before 0 is dropped; past the end the gap is filled too.
  void EfInsertSilence(long long position, long long length);
  // Makes out exactly end - start frames: the range, with silence for the
  // parts outside the audio. Leaves out as it is when end < start.
  void EfCopy(long long start, long long end, LCutListAudio& out) const;
  // Keeps only [start, end), without adding silence.
  void EfTrim(long long start, long long end);
  // Plays [start, end) count + 1 times in a row.
  void EfRepeatLoop(long long start, long long end, unsigned long count);
  // Replaces all segments by one copy of segment and sets the format.
  void SetSingleCutListSegment(const LCutListSegment& segment, int sampleRate, unsigned char channels);

  // Lossless MP3 editing.
  void MP3LosslessContextSet(LMP3LosslessContext* context);
  [[nodiscard]] LMP3LosslessContext* MP3LosslessContext() const { return context_; }
  // Leaving lossless mode drops the encoder's padding from segments over MP3
  // items; segments over other items and silence stay as they are.
  void EvMP3LosslessModeChanged(bool lossless) override;
  [[nodiscard]] bool IsMP3LosslessMode() const override;

  // The persisted form (little-endian): sample rate u32, channels u8, flag
  // byte u8, segment count i32, then per segment item u16, length i64, gain
  // f32, offset i64. Restore appends to this list (call it on an empty one),
  // taking a reference per segment; false on a short read or a damaged record
  // (a negative length or offset, or frames beyond 2^48), with the segments
  // read so far kept. The flag argument is not used.
  [[nodiscard]] bool Restore(LByteStream& stream, bool unused = false);
  // Writes the same fields in the same order; false when the stream fails.
  [[nodiscard]] bool Save(LByteStream& stream) const;

  // Reading and writing.
  // A source over the whole list, holding copies of its segments.
  [[nodiscard]] LSoundSource OpenSource() const;
  // A sink that writes into a new cache item and shows it as this list's
  // single segment when committed and when closed (see cut_list_audio_sink.h).
  // A non-empty path becomes the list's path when the sink publishes. The
  // list must outlive the sink.
  [[nodiscard]] LSoundSink OpenSink(int sampleRate, unsigned char channels, const char* path);

  // Fills out with the overview of [start, start + count): ceil(count / 256)
  // frames, assembled from the items' ".grf" records (gains are not applied;
  // records follow each item's own 256-frame grid). Stops at the end of the
  // list, at a silence segment or at an overview file that cannot be opened;
  // answers the frames filled, a partly merged last frame included. Frames not
  // reached keep what they held.
  [[nodiscard]] long long GrfBufferGet(LArray<LCutListGrfFrame>& out, long long start, long long count) const;

  // Finds a cut point near target in [low, high] where every channel of source
  // rises through zero at the same frame (or, failing that, the middle of the
  // tightest set of crossings). False when there is none or the source is in error.
  [[nodiscard]] static bool ZeroCrossCutpointFind(LSoundSource& source, long long target, long long low, long long high,
                                                  long long& result);

private:
  using Iterator = LList<LCutListSegment>::iterator;

  void CopyAllButSegments(const LCutListAudio& other);
  // The segment containing position (start <= position < start + length) and its start.
  Iterator Find(long long position, long long* segmentStart);
  // Splits the segment at it at an inner point and answers the second half.
  Iterator Split(Iterator it, long long at);
  // Copies of the segments of [start, end) of this list (no silence added).
  LList<LCutListSegment> RangeCopy(long long start, long long end) const;

  LMP3LosslessContext* context_ = nullptr;
  LList<LCutListAttachment> aux_;
  std::uint32_t sampleRate_ = kLCutListDefaultSampleRate;
  std::uint8_t channels_ = kLCutListDefaultChannels;
  unsigned char flags_ = 0;
  LList<LCutListSegment> segments_;
  char path_[kLPathMax] = {};
};
