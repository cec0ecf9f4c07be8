#pragma once
// What the micro-benchmarks share: a private cache folder for the whole run,
// endless noise as a source, cache items made from it and cut lists of many
// segments over one item.
#include <cstdint>
#include <string>

#include "engine/cut_list_audio.h"
#include "engine/sound_cache_item_handle.h"
#include "engine/sound_source.h"

inline constexpr std::uint32_t kBenchRate = 44100;
inline constexpr int kBenchChannels = 2;

// A temporary folder that holds the sound cache and the settings while it
// lives, and is removed with everything in it afterwards.
class BenchCacheFolder {
public:
  BenchCacheFolder();
  ~BenchCacheFolder();
  BenchCacheFolder(const BenchCacheFolder&) = delete;
  BenchCacheFolder& operator=(const BenchCacheFolder&) = delete;

  [[nodiscard]] bool IsReady() const { return !path_.empty(); }
  [[nodiscard]] const std::string& Path() const { return path_; }

private:
  std::string path_;
};

// Uniform white noise at -6 dBFS from a fixed seed, so every run reads the same
// samples. Frames past the end read as silence like any source.
class BenchNoiseSource final : public LSoundSourceBase {
public:
  BenchNoiseSource(long long frames, int channels, std::uint32_t rate = kBenchRate);

  void Read(float* buffer, long long frames) override;
  long long GetPositionSample() const override { return position_; }
  long long GetEndSample() const override { return end_; }
  void Seek(long long frame) override { position_ = frame; }

private:
  long long end_;
  long long position_ = 0;
  std::uint32_t state_ = 0x9E3779B9u;
};

// A new cache item of frames of noise; a handle of no item when it failed.
[[nodiscard]] LSoundCacheItemHandle BenchItemAdd(long long frames, int channels = kBenchChannels);

// A list of `segments` segments of segmentFrames each, all over item, their
// offsets stepping through the item's first itemFrames frames so that
// neighbours never continue each other.
[[nodiscard]] LCutListAudio BenchSegmentList(const LSoundCacheItemHandle& item, long long segments,
                                             long long segmentFrames, long long itemFrames,
                                             int channels = kBenchChannels);
