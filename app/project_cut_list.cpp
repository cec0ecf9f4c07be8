#include "app/project_cut_list.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <memory>
#include <set>

#include "app/project_chunk_order.h"
#include "app/project_chunk_walk.h"
#include "app/project_chunks.h"
#include "app/project_messages.h"
#include "base/array.h"
#include "base/file_stream.h"
#include "base/memory_stream.h"
#include "base/platform_file.h"
#include "engine/sound_cache.h"
#include "engine/sound_cache_item.h"

namespace {

// Bytes moved per read of a cache item's ".aud" into the project file.
constexpr long long kAudioCopyBytes = 64 * 1024;

// Layout of the persisted form, as LCutListAudio::Save writes it: a header with
// the segment count, then one record per segment that starts with the item
// number. On disk; never change.
constexpr std::size_t kPersistedHeaderBytes = 10;
constexpr std::size_t kPersistedCountOffset = 6;
constexpr std::size_t kPersistedRecordBytes = 22;

// Hands what LCutListAudio::Save writes to the chunk that is open.
class WriterStream final : public LByteStream {
public:
  explicit WriterStream(LSDFWriter& writer) : writer_(writer) {}
  long long Read(void*, long long) override { return -1; }
  long long Write(const void* buffer, long long n) override {
    return n >= 0 && writer_.WriteData(buffer, static_cast<unsigned long long>(n)) ? n : -1;
  }
  bool Seek(long long) override { return false; }
  long long Tell() override { return -1; }
  bool Truncate(long long) override { return false; }
  long long Size() override { return -1; }

private:
  LSDFWriter& writer_;
};

// The frames of a stored item, read through the project file's reader. Used by
// one thread at a time, like the reader itself.
class StoredAudioSource final : public LSoundSourceBase {
public:
  StoredAudioSource(LSDFReader& reader, const LSDFChunkInfo& blob, std::uint32_t rate, std::uint8_t channels)
      : LSoundSourceBase(rate, channels),
        reader_(reader),
        dataOffset_(blob.dataOffset),
        bytesPerFrame_(static_cast<long long>(channels) * static_cast<long long>(sizeof(float))),
        end_(static_cast<long long>(blob.length / static_cast<unsigned long long>(bytesPerFrame_))) {}

  void Read(float* buffer, long long frames) override {
    const int channels = GetChannels();
    long long done = 0;
    if (position_ >= 0 && position_ < end_) {
      const long long want = std::min(frames, end_ - position_);
      const unsigned long long at = dataOffset_ + static_cast<unsigned long long>(position_ * bytesPerFrame_);
      if (reader_.SeekTo(at)) {
        const unsigned long long bytes = static_cast<unsigned long long>(want * bytesPerFrame_);
        done = static_cast<long long>(reader_.Read(buffer, bytes)) / bytesPerFrame_;
      }
    }
    // What could not be read, and anything outside the data, is silence.
    std::fill(buffer + done * channels, buffer + frames * channels, 0.0f);
    position_ += frames;
  }
  long long GetPositionSample() const override { return position_; }
  long long GetEndSample() const override { return end_; }
  void Seek(long long frame) override { position_ = frame; }

private:
  LSDFReader& reader_;
  unsigned long long dataOffset_;
  long long bytesPerFrame_;
  long long end_;
  long long position_ = 0;
};

// The item's layout as its description gives it, else the list's.
void ItemLayoutGet(unsigned short item, const LCutListAudio& list, int& rate, unsigned char& channels) {
  const LStringLong info = LSoundCache::Instance().FilePath(item, kLSoundCacheExtInfo);
  if (!LSoundCacheItemAudioInfoGet(info.c_str(), rate, channels) || rate <= 0 || channels == 0) {
    rate = static_cast<int>(list.GetSampleRate());
    channels = list.GetChannels();
  }
}

bool WritePersisted(LSDFWriter& writer, int order, const LCutListAudio& list) {
  WriterStream stream(writer);
  return writer.StartChunk(kSVCutListPersisted, kSDFChunkTypeBlob, order) && list.Save(stream) &&
         writer.EndChunk(kSVCutListPersisted);
}

// Copies the first `frames` frames of the item's ".aud" into an item chunk.
LProcessResult WriteItemAudio(LProcessInterface& process, LSDFWriter& writer, SVChunkOrder& order, unsigned short item,
                              long long frames, int rate, unsigned char channels, long long& bytesDone,
                              long long bytesTotal) {
  const LStringLong path = LSoundCache::Instance().FilePath(item, kLSoundCacheExtAudio);
  LFileStream audio(LFileOpen(path.c_str(), kLFileRead, LFileLock::Shared, kLLockWaitMs));
  const long long bytesPerFrame = static_cast<long long>(channels) * static_cast<long long>(sizeof(float));
  const long long fileSize = audio.IsOpen() ? audio.Size() : -1;
  // Audio that is gone already reads as silence; it is not carried.
  if (fileSize < bytesPerFrame) return kLProcessSuccess;
  const long long bytes = std::min(frames, fileSize / bytesPerFrame) * bytesPerFrame;
  if (bytes <= 0) return kLProcessSuccess;

  writer.StartContainer(kSVCutListItem, order.Next());
  writer.WriteInt(kSVCutListItemNumber, item);
  writer.WriteInt(kSVCutListItemSampleRate, rate);
  writer.WriteInt(kSVCutListItemChannels, channels);
  writer.StartChunk(kSVCutListItemFrames, kSDFChunkTypeBlob);
  LArray<unsigned char> block(static_cast<std::size_t>(std::min(bytes, kAudioCopyBytes)));
  for (long long done = 0; done < bytes;) {
    if (process.IsCancelled()) return kLProcessCancelled;
    const long long want = std::min(bytes - done, kAudioCopyBytes);
    if (audio.Read(block.data(), want) != want) {
      process.SetErrorF(kSVProjectAudioReadError, path.c_str());
      return kLProcessFailed;
    }
    if (!writer.WriteData(block.data(), static_cast<unsigned long long>(want))) break;
    done += want;
    bytesDone += want;
    if (bytesTotal > 0) process.SetProgress(static_cast<double>(bytesDone) / static_cast<double>(bytesTotal));
  }
  writer.EndChunk(kSVCutListItemFrames);
  writer.EndContainer(kSVCutListItem);
  return kLProcessSuccess;
}

// The item numbers the list names, each once, in play order.
LArray<unsigned short> ItemsNamed(const LCutListAudio& list) {
  LArray<unsigned short> items;
  std::set<unsigned short> seen;
  for (const LCutListSegment& segment : list.Segments()) {
    if (!segment.IsSilence() && seen.insert(segment.ItemNumber()).second) items.push_back(segment.ItemNumber());
  }
  return items;
}

}  // namespace

void SVProjectAudioStore::Plan(const LCutListAudio& list) {
  for (const LCutListSegment& segment : list.Segments()) {
    if (segment.IsSilence() || segment.length <= 0) continue;
    long long& reach = reach_[segment.ItemNumber()];
    reach = std::max(reach, segment.offset + segment.length);
  }
}

long long SVProjectAudioStore::Reach(unsigned short item) const {
  auto it = reach_.find(item);
  return it == reach_.end() ? 0 : it->second;
}

bool SVProjectAudioStore::IsStored(unsigned short item) const { return stored_.count(item) != 0; }

unsigned short SVProjectAudioRestore::Find(unsigned short stored) const {
  auto it = items_.find(stored);
  return it == items_.end() ? kLSoundCacheItemNone : it->second.Number();
}

void SVProjectAudioRestore::Add(unsigned short stored, LSoundCacheItemHandle item) {
  items_[stored] = std::move(item);
}

LProcessResult ProcessSaveCutListAudio(LProcessInterface& process, LSDFWriter& writer, unsigned short id, int order,
                                       const LCutListAudio& list, const LList<LSDFUnknownChunk>& preserved,
                                       SVProjectAudioStore& store) {
  struct Pending {
    unsigned short item;
    long long frames;
    int rate;
    unsigned char channels;
  };
  LArray<Pending> pending;
  long long bytesTotal = 0;
  for (unsigned short item : ItemsNamed(list)) {
    if (store.IsStored(item)) continue;
    Pending next{item, store.Reach(item), 0, 0};
    ItemLayoutGet(item, list, next.rate, next.channels);
    bytesTotal += next.frames * next.channels * static_cast<long long>(sizeof(float));
    pending.push_back(next);
  }

  SVChunkOrder chunkOrder(preserved);
  writer.StartContainer(id, preserved, order);
  WritePersisted(writer, chunkOrder.Next(), list);
  long long bytesDone = 0;
  for (const Pending& item : pending) {
    if (process.IsCancelled()) return kLProcessCancelled;
    LProcessResult result = WriteItemAudio(process, writer, chunkOrder, item.item, item.frames, item.rate,
                                           item.channels, bytesDone, bytesTotal);
    if (result != kLProcessSuccess) return result;
    store.StoredSet(item.item);
  }
  writer.EndContainer(id);
  process.SetProgress(1.0);
  return writer.IsOK() ? kLProcessSuccess : kLProcessFailed;
}

LProcessResult ProcessSaveCutListAudioLink(LProcessInterface& process, LSDFWriter& writer, unsigned short id,
                                           int order, const LCutListAudio& list,
                                           const LList<LSDFUnknownChunk>& preserved) {
  if (process.IsCancelled()) return kLProcessCancelled;
  SVChunkOrder chunkOrder(preserved);
  writer.StartContainer(id, preserved, order);
  WritePersisted(writer, chunkOrder.Next(), list);
  writer.EndContainer(id);
  process.SetProgress(1.0);
  return writer.IsOK() ? kLProcessSuccess : kLProcessFailed;
}

namespace {

// Puts one stored item's audio into a new cache item. Damage is reported, not failed.
LProcessResult LoadItem(LProcessInterface& process, LSDFReader& reader, const LSDFChunkInfo& container,
                        SVProjectAudioRestore& restore, SVCutListLoadReport& report) {
  int number = -1;
  int rate = 0;
  int channels = 0;
  SVChunkWalk walk(reader, container);
  while (walk.Next()) {
    switch (walk.Id()) {
      case kSVCutListItemNumber:
        if (!walk.Chunk().ReadInt(number)) report.damaged = true;
        break;
      case kSVCutListItemSampleRate:
        if (!walk.Chunk().ReadInt(rate)) report.damaged = true;
        break;
      case kSVCutListItemChannels:
        if (!walk.Chunk().ReadInt(channels)) report.damaged = true;
        break;
      case kSVCutListItemFrames: {
        const bool known = number >= 0 && number <= kLSoundCacheItemLast &&
                           restore.Find(static_cast<unsigned short>(number)) == kLSoundCacheItemNone;
        if (!known || rate <= 0 || channels <= 0 || channels > UINT8_MAX) {
          report.damaged = true;
          break;
        }
        const LSDFChunkInfo blob = walk.Info();
        if (blob.length < static_cast<unsigned long long>(channels) * sizeof(float)) break;
        // The bytes of the file this item covers are its share of the progress.
        const double size = static_cast<double>(std::max<unsigned long long>(reader.StreamSize(), 1));
        LProcessInterfaceSubProcess sub(process, static_cast<double>(blob.dataOffset) / size,
                                        static_cast<double>(blob.dataOffset + blob.length) / size);
        LSoundCacheItemHandle item;
        long long frames = 0;
        LProcessResult result = LSoundCacheItemAdd(
            sub,
            LMakeSource<StoredAudioSource>(reader, blob, static_cast<std::uint32_t>(rate),
                                           static_cast<std::uint8_t>(channels)),
            item, frames);
        if (result != kLProcessSuccess) return result;
        // The copy showed its own title.
        process.SetStatus(kSVProjectStatusLoad, 0);
        restore.Add(static_cast<unsigned short>(number), std::move(item));
        // The walk goes on from the chunk's end, wherever the copy left the reader.
        break;
      }
      default:
        break;
    }
  }
  if (!walk.IsComplete()) report.damaged = true;
  return kLProcessSuccess;
}

// Replaces each record's item number by the item that now holds its audio, or
// by silence where there is none.
template <class Resolve>
void ItemNumbersMap(LArray<unsigned char>& persisted, Resolve resolve) {
  if (persisted.size() < kPersistedHeaderBytes) return;
  std::int32_t count = 0;
  std::memcpy(&count, persisted.data() + kPersistedCountOffset, sizeof count);
  const std::size_t records = (persisted.size() - kPersistedHeaderBytes) / kPersistedRecordBytes;
  const std::size_t used = count > 0 ? std::min(records, static_cast<std::size_t>(count)) : 0;
  for (std::size_t i = 0; i < used; ++i) {
    unsigned char* record = persisted.data() + kPersistedHeaderBytes + i * kPersistedRecordBytes;
    std::uint16_t item = 0;
    std::memcpy(&item, record, sizeof item);
    if (item > kLSoundCacheItemLast) continue;
    item = resolve(item);
    std::memcpy(record, &item, sizeof item);
  }
}

}  // namespace

LProcessResult ProcessLoadCutListAudio(LProcessInterface& process, LSDFReader& reader, const LSDFChunkInfo& container,
                                       bool link, LCutListAudio& out, LList<LSDFUnknownChunk>& unknown,
                                       SVProjectAudioRestore& restore, SVCutListLoadReport& report) {
  out = LCutListAudio();
  unknown.clear();
  LArray<unsigned char> persisted;
  bool hasList = false;
  SVChunkWalk walk(reader, container);
  while (walk.Next()) {
    if (process.IsCancelled()) return kLProcessCancelled;
    if (walk.Id() == kSVCutListPersisted) {
      hasList = true;
      if (!walk.Chunk().ReadData(persisted)) report.damaged = true;
    } else if (walk.Id() == kSVCutListItem && walk.Type() == kSDFChunkTypeContainer) {
      // A link names live items: audio stored beside it is neither used nor
      // kept, since a full save would write it back as audio its list plays.
      if (link) continue;
      LProcessResult result = LoadItem(process, reader, walk.Info(), restore, report);
      if (result != kLProcessSuccess) return result;
    } else if (!walk.Chunk().ReadUnknownChunk(unknown)) {
      report.damaged = true;
    }
  }
  if (!walk.IsComplete() || !hasList) report.damaged = true;

  // Numbers are checked once each: a link names live items, a full save its stored ones.
  std::map<unsigned short, unsigned short> resolved;
  ItemNumbersMap(persisted, [&](unsigned short item) {
    auto it = resolved.find(item);
    if (it != resolved.end()) return it->second;
    unsigned short now = link ? (LSoundCacheItemIsValid(item) ? item : kLSoundCacheItemNone) : restore.Find(item);
    if (now == kLSoundCacheItemNone) {
      now = kLSoundCacheItemSilence;
      report.audioMissing = true;
    }
    resolved[item] = now;
    return now;
  });
  LMemoryStream stream(persisted.data(), persisted.size());
  if (hasList && !out.Restore(stream)) report.damaged = true;
  return kLProcessSuccess;
}
