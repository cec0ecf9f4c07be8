#pragma once
// What the sound-cache tests share: a fixture that gives each test its own cache
// and settings folders and checks, when the test ends, that no item is left
// counted and no descriptor left open; and sources built in code.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "engine/sound_cache.h"
#include "engine/sound_cache_item_handle.h"
#include "engine/sound_source.h"
#include "support/file_bytes.h"
#include "support/temp_folder.h"
#include "support/vector_source.h"

class SoundCacheTest : public ::testing::Test {
protected:
  void SetUp() override;
  void TearDown() override;

  std::string CachePath(unsigned short item, const char* extension) {
    return LSoundCache::Instance().FilePath(item, extension);
  }
  // Adds the source as a new item and expects success.
  LSoundCacheItemHandle AddItem(LSoundSource source, long long* length = nullptr);

  TempFolder temp_;
  std::string cacheFolder_;
  int descriptors_ = 0;
};

// A staircase: sample (frame f, channel c) = f + c / 4, exact in float below 2^22.
[[nodiscard]] float StaircaseValue(long long frame, int channel);
[[nodiscard]] std::vector<float> Staircase(long long frames, int channels);
[[nodiscard]] LSoundSource MakeStaircase(long long frames, int channels, std::uint32_t rate = 44100);

// Reads frames [from, from + frames) of a source in blocks of the given size.
[[nodiscard]] std::vector<float> ReadBlocks(LSoundSource& source, long long from, long long frames, long long block);

// The 16-bit codes of an overview file, in file order.
[[nodiscard]] std::vector<std::uint16_t> OverviewCodes(const std::string& path);
[[nodiscard]] bool Exists(const std::string& path);
