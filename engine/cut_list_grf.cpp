// The overview of a cut list, assembled from its items' ".grf" records.
#include "engine/cut_list_grf.h"

#include <algorithm>
#include <memory>
#include <vector>

#include "base/file_stream.h"
#include "base/platform_file.h"
#include "engine/cut_list_audio.h"
#include "engine/sound_cache.h"
#include "engine/sound_cache_overview.h"

namespace {

// Record sets read per call in the copy phase: an hour's overview takes a few dozen reads.
constexpr long long kRecordsPerRead = 4096;

std::uint16_t GetCode(const unsigned char* at) {
  return static_cast<std::uint16_t>(at[0] | (static_cast<unsigned>(at[1]) << 8));
}

// The ".grf" of the item being walked; kept open while segments name the same item.
class OverviewFile {
public:
  explicit OverviewFile(int channels)
      : recordSetBytes_(static_cast<long long>(channels) * kLSoundCacheOverviewRecordBytes) {}

  bool Open(unsigned short item) {
    if (file_ && item == item_) return file_->IsOpen();
    item_ = item;
    lastSet_ = -1;
    at_ = -1;
    LStringLong path = LSoundCache::Instance().FilePath(item, kLSoundCacheExtOverview);
    file_ = std::make_unique<LFileStream>(path.empty() ? -1 : LFileOpen(path.c_str(), kLFileRead, LFileLock::Shared));
    return file_->IsOpen();
  }

  // The one record set at index, kept: short segments merge the same set again and again.
  const unsigned char* ReadOne(long long index) {
    if (index != lastSet_) {
      last_.resize(static_cast<std::size_t>(recordSetBytes_));
      Read(index, 1, last_.data());
      lastSet_ = index;
    }
    return last_.data();
  }

  // Reads record sets [first, first + sets) into out; what the file lacks reads as 0.
  void Read(long long first, long long sets, unsigned char* out) {
    const long long bytes = sets * recordSetBytes_;
    const long long offset = first * recordSetBytes_;
    long long got = 0;
    // Reads that follow each other need no seek.
    if (first >= 0 && (offset == at_ || file_->Seek(offset))) got = std::max(file_->Read(out, bytes), 0LL);
    at_ = (first >= 0 && got > 0) ? offset + got : -1;
    if (got < bytes) std::fill(out + got, out + bytes, static_cast<unsigned char>(0));
  }

private:
  long long recordSetBytes_;
  unsigned short item_ = kLSoundCacheItemNone;
  std::unique_ptr<LFileStream> file_;
  long long lastSet_ = -1;
  long long at_ = -1;  // the file position after the last read, -1 when not known
  std::vector<unsigned char> last_;
};

}  // namespace

void LCutListGrfFrame::ChannelsSet(int channels) {
  channels = std::max(channels, 0);
  if (channels == channels_) return;
  if (channels > kInline) {
    if (channels_ <= kInline) more_.assign(inline_, inline_ + channels_);
    more_.resize(static_cast<std::size_t>(channels));
  } else if (channels_ > kInline) {
    std::copy(more_.begin(), more_.begin() + channels, inline_);
    more_.clear();
  } else {
    for (int c = channels_; c < channels; ++c) inline_[c] = LCutListGrfRecord{};
  }
  channels_ = channels;
}

void LCutListGrfFrame::Clear() { std::fill(Records(), Records() + channels_, LCutListGrfRecord{}); }

long long LCutListAudio::GrfBufferGet(LArray<LCutListGrfFrame>& out, long long start, long long count) const {
  const int channels = channels_;
  const long long wanted = count > 0 ? LSoundCacheOverviewBlocks(count) : 0;
  out.resize(static_cast<std::size_t>(wanted));
  for (LCutListGrfFrame& frame : out) frame.ChannelsSet(channels);
  if (wanted == 0 || channels == 0 || start < 0) return 0;

  // The segment that holds start, and the distance into it.
  auto it = segments_.begin();
  long long distance = start;
  while (it != segments_.end() && distance >= it->length) {
    distance -= it->length;
    ++it;
  }

  const long long setBytes = static_cast<long long>(channels) * kLSoundCacheOverviewRecordBytes;
  std::vector<unsigned char> buffer(static_cast<std::size_t>(kRecordsPerRead * setBytes));
  OverviewFile file(channels);
  long long filled = 0;
  long long toGo = 0;  // frames still to merge into out[filled]; 0 in the copy phase
  while (filled < wanted) {
    if (it == segments_.end() || it->IsSilence() || !file.Open(it->ItemNumber())) break;
    const long long left = it->length - distance;
    if (left <= 0) {
      ++it;
      distance = 0;
      continue;
    }
    if (toGo == 0) {
      // Copy phase: whole records as they are, one record set per output frame.
      long long whole = std::min(left / kLSoundCacheOverviewBlockFrames, wanted - filled);
      long long record = (it->offset + distance) / kLSoundCacheOverviewBlockFrames;
      while (whole > 0) {
        const long long sets = std::min(whole, kRecordsPerRead);
        file.Read(record, sets, buffer.data());
        for (long long i = 0; i < sets; ++i) {
          const unsigned char* set = buffer.data() + i * setBytes;
          LCutListGrfRecord* records = out[static_cast<std::size_t>(filled)].Records();
          for (int c = 0; c < channels; ++c) {
            records[c].positive = GetCode(set + c * kLSoundCacheOverviewRecordBytes);
            records[c].negative = GetCode(set + c * kLSoundCacheOverviewRecordBytes + 2);
          }
          ++filled;
        }
        record += sets;
        distance += sets * kLSoundCacheOverviewBlockFrames;
        whole -= sets;
      }
      if (filled == wanted) break;
      out[static_cast<std::size_t>(filled)].Clear();
      toGo = kLSoundCacheOverviewBlockFrames;
      continue;
    }
    // Merge phase: one record set into the frame being built, the larger codes winning.
    const unsigned char* set = file.ReadOne((it->offset + distance) / kLSoundCacheOverviewBlockFrames);
    LCutListGrfRecord* records = out[static_cast<std::size_t>(filled)].Records();
    for (int c = 0; c < channels; ++c) {
      records[c].positive = std::max(records[c].positive, GetCode(set + c * kLSoundCacheOverviewRecordBytes));
      records[c].negative = std::max(records[c].negative, GetCode(set + c * kLSoundCacheOverviewRecordBytes + 2));
    }
    const long long used = std::min(toGo, left);
    toGo -= used;
    distance += used;
    if (toGo == 0) ++filled;
    if (distance >= it->length) {
      ++it;
      distance = 0;
    }
  }
  // A frame merged only in part holds what lies before the silence or the end: count it.
  if (toGo > 0 && toGo < kLSoundCacheOverviewBlockFrames) ++filled;
  return filled;
}
