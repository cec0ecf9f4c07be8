#include "sound_cache_fixture.h"

#include <algorithm>
#include <cstring>
#include <fstream>
#include <iterator>
#include <sys/stat.h>

#include "base/disk_space.h"
#include "base/user_settings.h"
#include "engine/sound_cache_item.h"

void SoundCacheTest::SetUp() {
  ASSERT_FALSE(temp_.Path().empty());
  cacheFolder_ = temp_.File("cache");
  LUserSettings::Instance().FolderSet(temp_.File("settings"));
  LSoundCache::Instance().FolderSet(cacheFolder_.c_str());
  descriptors_ = OpenDescriptorCount();
}

void SoundCacheTest::TearDown() {
  EXPECT_EQ(LSoundCache::Instance().CountedItemCount(), 0) << "an item is still counted";
  EXPECT_EQ(OpenDescriptorCount(), descriptors_) << "a descriptor was left open";
  LSoundCacheClockOverride(nullptr);
  LDiskFreeBytesOverride(nullptr);
  LSoundCache::Instance().FolderSet("");
  LUserSettings::Instance().FolderSet("");
}

LSoundCacheItemHandle SoundCacheTest::AddItem(LSoundSource source, long long* length) {
  LProcessInterfaceQuiet process;
  LSoundCacheItemHandle item;
  long long frames = -1;
  LProcessResult result = LSoundCacheItemAdd(process, std::move(source), item, frames);
  EXPECT_EQ(result, kLProcessSuccess) << process.Error();
  if (length) *length = frames;
  return item;
}

float StaircaseValue(long long frame, int channel) { return static_cast<float>(frame) + 0.25f * channel; }

std::vector<float> Staircase(long long frames, int channels) {
  std::vector<float> samples(static_cast<std::size_t>(frames * channels));
  for (long long f = 0; f < frames; ++f) {
    for (int c = 0; c < channels; ++c) samples[static_cast<std::size_t>(f * channels + c)] = StaircaseValue(f, c);
  }
  return samples;
}

LSoundSource MakeStaircase(long long frames, int channels, std::uint32_t rate) {
  return LMakeSource<VectorSource>(Staircase(frames, channels), channels, rate);
}

std::vector<float> ReadBlocks(LSoundSource& source, long long from, long long frames, long long block) {
  const int channels = source.GetChannels();
  std::vector<float> samples(static_cast<std::size_t>(frames * channels), -1.0f);
  source.Seek(from);
  for (long long at = 0; at < frames; at += block)
    source.Read(samples.data() + at * channels, std::min(block, frames - at));
  return samples;
}

std::vector<std::uint16_t> OverviewCodes(const std::string& path) {
  const std::vector<unsigned char> bytes = FileBytes(path);
  std::vector<std::uint16_t> codes;
  for (std::size_t at = 0; at + 1 < bytes.size(); at += 2)
    codes.push_back(static_cast<std::uint16_t>(bytes[at] | bytes[at + 1] << 8));
  return codes;
}

bool Exists(const std::string& path) {
  struct stat st {};
  return !path.empty() && ::stat(path.c_str(), &st) == 0;
}

