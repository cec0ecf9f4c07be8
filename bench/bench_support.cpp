#include "bench/bench_support.h"

#include <cstdlib>
#include <filesystem>
#include <system_error>

#include "base/process_interface.h"
#include "base/user_settings.h"
#include "engine/sound_cache.h"
#include "engine/sound_cache_item.h"

BenchCacheFolder::BenchCacheFolder() {
  const char* tmp = std::getenv("TMPDIR");
  std::string pattern = std::string(tmp && *tmp ? tmp : "/tmp") + "/sonvale-bench-XXXXXX";
  if (!::mkdtemp(pattern.data())) return;
  path_ = pattern;
  LUserSettings::Instance().FolderSet(path_ + "/settings");
  LSoundCache::Instance().FolderSet((path_ + "/cache").c_str());
}

BenchCacheFolder::~BenchCacheFolder() {
  if (path_.empty()) return;
  LSoundCache::Instance().FolderSet("");
  LUserSettings::Instance().FolderSet("");
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

BenchNoiseSource::BenchNoiseSource(long long frames, int channels, std::uint32_t rate)
    : LSoundSourceBase(rate, static_cast<std::uint8_t>(channels)), end_(frames) {}

void BenchNoiseSource::Read(float* buffer, long long frames) {
  const int channels = GetChannels();
  // xorshift32 scaled to [-0.5, 0.5): cheap enough not to weigh on what is measured.
  constexpr float kScale = 1.0f / 4294967296.0f;
  for (long long i = 0; i < frames; ++i, ++position_) {
    const bool inside = position_ >= 0 && position_ < end_;
    for (int c = 0; c < channels; ++c) {
      state_ ^= state_ << 13;
      state_ ^= state_ >> 17;
      state_ ^= state_ << 5;
      buffer[i * channels + c] = inside ? static_cast<float>(state_) * kScale - 0.5f : 0.0f;
    }
  }
}

LSoundCacheItemHandle BenchItemAdd(long long frames, int channels) {
  LProcessInterfaceQuiet process;
  LSoundCacheItemHandle item;
  long long length = 0;
  if (LSoundCacheItemAdd(process, LMakeSource<BenchNoiseSource>(frames, channels), item, length) != kLProcessSuccess)
    return {};
  return item;
}

LCutListAudio BenchSegmentList(const LSoundCacheItemHandle& item, long long segments, long long segmentFrames,
                               long long itemFrames, int channels) {
  LCutListAudio list;
  list.SetFormat(kBenchRate, static_cast<std::uint8_t>(channels));
  // A step of a prime number of frames walks the whole item without repeating soon.
  constexpr long long kStep = 7919;
  const long long room = itemFrames > segmentFrames ? itemFrames - segmentFrames : 1;
  long long offset = 0;
  for (long long i = 0; i < segments; ++i) {
    list.SegmentAppend(LCutListSegment(item, segmentFrames, 1.0f, offset));
    offset = (offset + segmentFrames + kStep) % room;
  }
  return list;
}
