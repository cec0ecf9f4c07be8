// Writing cache items, their descriptions and persisted cut lists when the
// medium fails: every failure must reach the caller as a result, and a cache
// item either is complete or is not there at all.
#include <gtest/gtest.h>

#include <cmath>
#include <set>

#include "base/folder_list.h"
#include "base/memory_stream.h"
#include "base/sdf_format.h"
#include "engine/cut_list_audio.h"
#include "engine/sound_cache_audio_info.h"
#include "engine/sound_cache_item.h"
#include "engine/sound_cache_overview.h"
#include "engine/sound_cache_source.h"
#include "engine/source_to_sink.h"
#include "sound_cache_fixture.h"
#include "support/faulty_stream.h"
#include "support/file_size_limit.h"

namespace {

LSoundCacheAudioInfo FullDescription() {
  LSoundCacheAudioInfo info;
  info.sampleRate = 48000;
  info.channels = 2;
  info.hasOriginal = true;
  info.original.path = "/Musik/Aufnahme.wav";
  info.original.modTime = 1700000000;
  info.original.hasModTime = true;
  info.original.size = 123456789;
  info.original.hasSize = true;
  info.hasLastUse = true;
  info.lastUse = 1700000500;
  info.unknown.push_back(LSDFUnknownChunk{200, kSDFChunkTypeBlob, {9, 8, 7}, 2});
  return info;
}

}  // namespace

TEST(SoundCacheFaults, EveryFailedWriteOfADescriptionIsReported) {
  const LSoundCacheAudioInfo info = FullDescription();
  ExpectEveryFaultReported([&](LByteStream& stream) { return LSoundCacheAudioInfoWrite(stream, info); });
}

TEST(SoundCacheFaults, EveryFailedWriteOfAPersistedCutListIsReported) {
  LCutListAudio list;
  // More segments than one batch of records holds.
  for (int i = 0; i < 600; ++i) list.SegmentAppend(LCutListSegment::Silence(i + 1));
  ExpectEveryFaultReported([&](LByteStream& stream) { return list.Save(stream); });
}

namespace {

constexpr long long kItemFrames = 20001;
constexpr int kItemChannels = 2;

// Outcomes of one item add in a child whose files are limited.
enum ItemAddOutcome : int {
  kCompleteItem = 0,
  kFailedAndNothingLeft = 1,
  kSucceededButDamaged = 2,
  kFailedButFilesLeft = 3,
};

bool ItemFilesIn(const std::string& folder) {
  bool any = false;
  for (const char* extension : {kLSoundCacheExtAudio, kLSoundCacheExtOverview, kLSoundCacheExtInfo}) {
    LFolderListFiles(folder.c_str(), extension, [&](const char*) { any = true; });
  }
  return any;
}

bool ItemHoldsTheStaircase(unsigned short item) {
  if (LSoundCacheItemLengthGet(item) != kItemFrames) return false;
  LSoundSource source = LSoundCacheSourceOpen(item);
  std::vector<float> samples(static_cast<std::size_t>(kItemFrames * kItemChannels));
  source.Read(samples.data(), kItemFrames);
  if (samples != Staircase(kItemFrames, kItemChannels)) return false;
  const long long records = (kItemFrames + kLSoundCacheOverviewBlockFrames - 1) / kLSoundCacheOverviewBlockFrames;
  return FileBytes(LSoundCache::Instance().FilePath(item, kLSoundCacheExtOverview)).size() ==
         static_cast<std::size_t>(records * kItemChannels * kLSoundCacheOverviewRecordBytes);
}

int AddItemAndJudge(const std::string& folder) {
  LSoundCache& cache = LSoundCache::Instance();
  // The parent's counts came along with fork; this instance starts afresh.
  cache.FolderSet("");
  cache.FolderSet(folder.c_str());
  LProcessInterfaceQuiet process;
  LSoundCacheItemHandle item;
  long long length = 0;
  const LProcessResult result = LSoundCacheItemAdd(process, MakeStaircase(kItemFrames, kItemChannels), item, length);
  if (result != kLProcessSuccess) return ItemFilesIn(folder) ? kFailedButFilesLeft : kFailedAndNothingLeft;
  return length == kItemFrames && ItemHoldsTheStaircase(item.Number()) ? kCompleteItem : kSucceededButDamaged;
}

// Limits at which each write of the item's three files is the one that fails.
std::set<long long> LimitsAtEveryWrite() {
  std::set<long long> limits;
  // The description is a few dozen bytes written piece by piece: every size up to it.
  for (long long n = 0; n <= 80; ++n) limits.insert(n);
  const long long audioBlock = kLPumpBlockFrames * kItemChannels * 4;
  const long long overviewBlock =
      kLPumpBlockFrames / kLSoundCacheOverviewBlockFrames * kItemChannels * kLSoundCacheOverviewRecordBytes;
  const long long audio = kItemFrames * kItemChannels * 4;
  const long long records = (kItemFrames + kLSoundCacheOverviewBlockFrames - 1) / kLSoundCacheOverviewBlockFrames;
  const long long overview = records * kItemChannels * kLSoundCacheOverviewRecordBytes;
  for (long long end = audioBlock; end < audio + audioBlock; end += audioBlock) limits.insert(std::min(end, audio) - 1);
  for (long long end = overviewBlock; end < overview + overviewBlock; end += overviewBlock) {
    limits.insert(std::min(end, overview) - 1);
  }
  limits.insert(overview - kItemChannels * kLSoundCacheOverviewRecordBytes - 1);  // the short last block
  limits.insert(audio);
  return limits;
}

}  // namespace

TEST_F(SoundCacheTest, AnItemWhoseFilesCannotGrowIsEitherCompleteOrGoneAndTheAddSaysWhich) {
  const long long whole = kItemFrames * kItemChannels * 4;
  for (long long limit : LimitsAtEveryWrite()) {
    const int outcome = RunWithFileSizeLimit(limit, [&] { return AddItemAndJudge(cacheFolder_); });
    if (limit < whole) {
      EXPECT_EQ(outcome, kFailedAndNothingLeft) << "files limited to " << limit << " bytes";
    } else {
      EXPECT_EQ(outcome, kCompleteItem);
    }
    EXPECT_FALSE(ItemFilesIn(cacheFolder_)) << "the child left files at a limit of " << limit;
  }
}
