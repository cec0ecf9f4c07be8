// Several processes share one cache folder for a few seconds: each creates items,
// builds cut lists over them, reads them back, releases them and clears what it
// may. Every read is checked against what the process wrote, so an item deleted
// or replaced by another process under a reader shows up at once.
#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>
#include <random>
#include <unistd.h>
#include <sys/wait.h>

#include "base/folder_list.h"
#include "engine/cut_list_audio.h"
#include "engine/sound_cache_cleanup.h"
#include "engine/sound_cache_item.h"
#include "sound_cache_fixture.h"

namespace {

constexpr int kProcesses = 4;
constexpr auto kRunTime = std::chrono::seconds(3);
constexpr int kMostRounds = 2000;
constexpr int kChannels = 2;
constexpr std::size_t kMostLiveItems = 5;

// Channel 0 is the frame index, channel 1 the item's tag, unique across the
// processes: an item read at the wrong place or in another's stead names itself.
struct Frame {
  float step;
  float tag;
  bool operator==(const Frame&) const = default;
};
using Model = std::vector<Frame>;

LSoundSource TaggedSource(long long frames, float tag) {
  std::vector<float> samples;
  for (long long f = 0; f < frames; ++f) samples.insert(samples.end(), {static_cast<float>(f), tag});
  return LMakeSource<VectorSource>(std::move(samples), kChannels, 8000);
}

struct LiveItem {
  LSoundCacheItemHandle handle;
  long long frames;
  float tag;
};

// Reads the whole list in odd blocks and compares it with the model.
bool ReadsAsModel(const LCutListAudio& list, const Model& model, std::mt19937& random) {
  if (list.GetLength() != static_cast<long long>(model.size())) return false;
  LSoundSource source = list.OpenSource();
  std::vector<float> samples(model.size() * kChannels);
  const long long block = 1 + static_cast<long long>(random() % 997);
  for (long long at = 0; at < list.GetLength(); at += block) {
    source.Read(samples.data() + at * kChannels, std::min(block, list.GetLength() - at));
  }
  for (std::size_t i = 0; i < model.size(); ++i) {
    if (Frame{samples[2 * i], samples[2 * i + 1]} != model[i]) {
      std::fprintf(stderr, "frame %zu reads (%g, %g), expected (%g, %g)\n", i, samples[2 * i], samples[2 * i + 1],
                   model[i].step, model[i].tag);
      return false;
    }
  }
  return true;
}

// One process's work; answers 0 when every read matched.
int Work(const std::string& folder, int index) {
  LSoundCache& cache = LSoundCache::Instance();
  // The parent's counts came along with fork; this instance starts afresh.
  cache.FolderSet("");
  cache.FolderSet(folder.c_str());
  std::mt19937 random(static_cast<unsigned>(index) * 7919u + 1u);
  std::vector<LiveItem> items;
  const auto end = std::chrono::steady_clock::now() + kRunTime;
  for (int round = 0; round < kMostRounds && std::chrono::steady_clock::now() < end; ++round) {
    const float tag = static_cast<float>(index * 100000 + round);
    const long long frames = 100 + static_cast<long long>(random() % 3000);
    LProcessInterfaceQuiet process;
    LiveItem item{{}, frames, tag};
    long long length = 0;
    if (LSoundCacheItemAdd(process, TaggedSource(frames, tag), item.handle, length) != kLProcessSuccess ||
        length != frames) {
      std::fprintf(stderr, "process %d: adding an item failed: %s\n", index, process.Error().c_str());
      return 1;
    }
    items.push_back(std::move(item));

    // A cut list over pieces of every live item, built by inserting and deleting.
    LCutListAudio list;
    list.SetFormat(8000, kChannels);
    Model model;
    for (const LiveItem& live : items) {
      const long long from = static_cast<long long>(random() % static_cast<unsigned>(live.frames));
      const long long count = 1 + static_cast<long long>(random() % static_cast<unsigned>(live.frames - from));
      LCutListAudio piece;
      piece.SetFormat(8000, kChannels);
      piece.SegmentAppend(LCutListSegment(live.handle, count, 1.0f, from));
      const long long at = static_cast<long long>(random() % (model.size() + 1));
      list.EfInsert(at, piece);
      Model inserted;
      for (long long f = 0; f < count; ++f) inserted.push_back({static_cast<float>(from + f), live.tag});
      model.insert(model.begin() + at, inserted.begin(), inserted.end());
    }
    if (model.size() > 2) {
      const long long a = static_cast<long long>(random() % model.size());
      const long long b = a + static_cast<long long>(random() % (model.size() - a));
      list.EfDelete(a, b);
      model.erase(model.begin() + a, model.begin() + b);
    }
    if (!ReadsAsModel(list, model, random)) {
      std::fprintf(stderr, "process %d: round %d read wrong audio\n", index, round);
      return 1;
    }

    // Release an item now and then, and try to clear everything that is not in use.
    if (items.size() > kMostLiveItems || random() % 3 == 0) items.erase(items.begin() + random() % items.size());
    if (random() % 5 == 0) LSoundCacheCleanup(kLSoundCacheCleanupAll);
    if (random() % 7 == 0) cache.DeleteCachedFiles();
  }
  items.clear();
  return cache.CountedItemCount() == 0 ? 0 : 1;
}

}  // namespace

TEST_F(SoundCacheTest, ProcessesSharingAFolderNeverLoseAnItemTheyStillUse) {
  std::vector<pid_t> children;
  for (int index = 1; index <= kProcesses; ++index) {
    std::fflush(nullptr);
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) _exit(Work(cacheFolder_, index));
    children.push_back(child);
  }
  for (pid_t child : children) {
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFEXITED(status)) << "a process died";
    EXPECT_EQ(WEXITSTATUS(status), 0) << "a process read audio that was not its own";
  }
  // Releases that met another process's claim may leave unused items; the clean-up takes them.
  LSoundCacheCleanup(kLSoundCacheCleanupAll);
  int left = 0;
  LFolderListFiles(cacheFolder_.c_str(), kLSoundCacheExtAudio, [&](const char*) { ++left; });
  EXPECT_EQ(left, 0);
}
