#include "engine/cut_list_audio.h"

#include <algorithm>
#include <cstring>

LCutListAudio::LCutListAudio() = default;

LCutListAudio::LCutListAudio(LMP3LosslessContext* context) : context_(context) {
  if (context_) context_->ClientAdd(this);
}

LCutListAudio::LCutListAudio(const LCutListAudio& other)
    : context_(other.context_),
      aux_(other.aux_),
      sampleRate_(other.sampleRate_),
      channels_(other.channels_),
      flags_(0),
      segments_(other.segments_) {
  std::memcpy(path_, other.path_, sizeof path_);
  if (context_) context_->ClientAdd(this);
}

LCutListAudio::LCutListAudio(LCutListAudio&& other) noexcept
    : context_(other.context_),
      aux_(std::move(other.aux_)),
      sampleRate_(other.sampleRate_),
      channels_(other.channels_),
      flags_(0),
      segments_(std::move(other.segments_)) {
  std::memcpy(path_, other.path_, sizeof path_);
  if (context_) context_->ClientAdd(this);
}

LCutListAudio& LCutListAudio::operator=(const LCutListAudio& other) {
  if (&other == this) return *this;
  // The copies take their references before the old segments release theirs.
  LList<LCutListSegment> segments(other.segments_);
  CopyAllButSegments(other);
  segments_.swap(segments);
  return *this;
}

LCutListAudio& LCutListAudio::operator=(LCutListAudio&& other) noexcept {
  if (&other == this) return *this;
  CopyAllButSegments(other);
  segments_.swap(other.segments_);
  other.segments_.clear();
  return *this;
}

LCutListAudio::~LCutListAudio() {
  if (context_) context_->ClientRemove(this);
}

void LCutListAudio::CopyAllButSegments(const LCutListAudio& other) {
  MP3LosslessContextSet(other.context_);
  aux_ = other.aux_;
  sampleRate_ = other.sampleRate_;
  channels_ = other.channels_;
  flags_ = other.flags_;
  std::memcpy(path_, other.path_, sizeof path_);
}

void LCutListAudio::MP3LosslessContextSet(LMP3LosslessContext* context) {
  if (context == context_) return;
  if (context_) context_->ClientRemove(this);
  context_ = context;
  if (context_) context_->ClientAdd(this);
}

bool LCutListAudio::IsMP3LosslessMode() const { return context_ && context_->IsLossless(); }

void LCutListAudio::EvMP3LosslessModeChanged(bool lossless) {
  if (lossless) return;
  for (LCutListSegment& segment : segments_) segment.SubtractEncoderPadding();
}

void LCutListAudio::SetFormat(std::uint32_t sampleRate, std::uint8_t channels) {
  sampleRate_ = sampleRate;
  channels_ = channels;
}

void LCutListAudio::SetPath(const char* path) {
  std::memset(path_, 0, sizeof path_);
  if (!path) return;
  std::size_t n = std::min(std::strlen(path), sizeof path_ - 1);
  std::memcpy(path_, path, n);
}

long long LCutListAudio::GetLength() const {
  long long total = 0;
  for (const LCutListSegment& segment : segments_) total += segment.length;
  return total;
}

void LCutListAudio::SegmentAppend(const LCutListSegment& segment) { segments_.push_back(segment); }
void LCutListAudio::SegmentAppend(LCutListSegment&& segment) { segments_.push_back(std::move(segment)); }

void LCutListAudio::Clear() { segments_.clear(); }

LCutListAudio::Iterator LCutListAudio::Find(long long position, long long* segmentStart) {
  long long p = 0;
  auto it = segments_.begin();
  for (; it != segments_.end(); ++it) {
    if (p <= position && position < p + it->length) break;
    p += it->length;
  }
  *segmentStart = p;
  return it;
}

LCutListAudio::Iterator LCutListAudio::Split(Iterator it, long long at) {
  LCutListSegment second(*it);
  second.offset += at;
  second.length -= at;
  it->length = at;
  return segments_.insert(std::next(it), std::move(second));
}

void LCutListAudio::EfDelete(long long start, long long end) {
  const long long s = std::max(start, 0LL);
  if (start > end || end < 0 || s == end || segments_.empty()) return;
  long long p = 0;
  Iterator it = Find(s, &p);
  while (it != segments_.end()) {
    const long long length = it->length;
    if (end < p + length) {
      if (s == p) {
        it->offset += end - p;
        it->length -= end - p;
      } else {
        Iterator second = Split(it, s - p);
        second->offset += end - s;
        second->length -= end - s;
      }
      return;
    }
    if (s > p) {
      it->length = s - p;
      ++it;
    } else {
      it = segments_.erase(it);
    }
    end += (s - p) - length;
    p = s;
  }
}

void LCutListAudio::EfInsertSilence(long long position, long long length) {
  if (length < 0) return;
  if (position < 0) {
    if (-position > length) return;
    length += position;
    position = 0;
  }
  if (segments_.empty()) {
    if (length + position > 0) segments_.push_back(LCutListSegment::Silence(length + position));
    return;
  }
  long long p = 0;
  for (Iterator it = segments_.begin(); it != segments_.end(); ++it) {
    if (position == p) {
      if (length > 0) segments_.insert(it, LCutListSegment::Silence(length));
      return;
    }
    if (position < p + it->length) {
      if (length > 0) segments_.insert(Split(it, position - p), LCutListSegment::Silence(length));
      return;
    }
    p += it->length;
  }
  if (length + (position - p) > 0) segments_.push_back(LCutListSegment::Silence(length + (position - p)));
}

void LCutListAudio::EfInsert(long long position, const LCutListAudio& other) {
  // Copied first, so that a list may be inserted into itself. An empty list still
  // brings the silence that fills a gap before zero or past the end.
  LList<LCutListSegment> copies(other.segments_);
  if (position < 0) {
    copies.push_back(LCutListSegment::Silence(-position));
    segments_.splice(segments_.begin(), copies);
    return;
  }
  long long p = 0;
  for (Iterator it = segments_.begin(); it != segments_.end(); ++it) {
    if (position == p) {
      segments_.splice(it, copies);
      return;
    }
    if (position < p + it->length) {
      if (!copies.empty()) segments_.splice(Split(it, position - p), copies);
      return;
    }
    p += it->length;
  }
  if (position > p) segments_.push_back(LCutListSegment::Silence(position - p));
  segments_.splice(segments_.end(), copies);
}

LList<LCutListSegment> LCutListAudio::RangeCopy(long long start, long long end) const {
  LList<LCutListSegment> copies;
  long long p = 0;
  for (const LCutListSegment& segment : segments_) {
    if (p >= end) break;
    const long long length = segment.length;
    if (length > 0 && p + length > start) {
      const long long from = std::max(start - p, 0LL);
      const long long to = std::min(end - p, length);
      LCutListSegment& copy = copies.emplace_back(segment);
      copy.offset += from;
      copy.length = to - from;
    }
    p += length;
  }
  return copies;
}

void LCutListAudio::EfCopy(long long start, long long end, LCutListAudio& out) const {
  if (end < start) return;
  // Only the segments of the range are copied; the result is that of copying
  // the whole list and then cutting it to the range.
  const long long n = end - start;
  LList<LCutListSegment> segments;
  long long have = 0;
  if (start < 0) {
    have = std::min(-start, n);
    if (have > 0) segments.push_back(LCutListSegment::Silence(have));
  }
  if (end > std::max(start, 0LL)) {
    LList<LCutListSegment> range = RangeCopy(std::max(start, 0LL), end);
    for (const LCutListSegment& segment : range) have += segment.length;
    segments.splice(segments.end(), range);
  }
  if (n > have) segments.push_back(LCutListSegment::Silence(n - have));
  if (&out != this) out.CopyAllButSegments(*this);
  out.segments_.swap(segments);
}

void LCutListAudio::EfTrim(long long start, long long end) {
  if (start >= 1) {
    EfDelete(0, start);
    end -= start;
  }
  EfDelete(end, GetLength());
}

void LCutListAudio::EfRepeatLoop(long long start, long long end, unsigned long count) {
  if (count == 0) return;
  LCutListAudio loop;
  EfCopy(start, end, loop);
  for (unsigned long i = 0; i < count; ++i) EfInsert(start, loop);
}

void LCutListAudio::SetSingleCutListSegment(const LCutListSegment& segment, int sampleRate, unsigned char channels) {
  LList<LCutListSegment> single;
  single.push_back(segment);
  segments_.swap(single);
  sampleRate_ = static_cast<std::uint32_t>(sampleRate);
  channels_ = channels;
}
