// ConvertSamplesIn and ConvertSamplesOut for every stored layout, over the
// readers' and writers' buffer of 8192 stereo frames. bytes_per_second counts
// the stored bytes; x_realtime is against 44.1 kHz stereo.
#include <vector>

#include <benchmark/benchmark.h>

#include "bench/bench_support.h"
#include "formats/read_in_steps.h"
// Out of line at -O3, GCC warns that the tail loops could overflow their index
// for counts near 2^62; the counts here are 16384.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Waggressive-loop-optimizations"
#include "engine/sample_format.h"
#pragma GCC diagnostic pop

namespace {

constexpr long long kSamples = kLFileBufferFrames * kBenchChannels;
constexpr double kSamplesPerSecondOfAudio = static_cast<double>(kBenchRate) * kBenchChannels;

std::vector<float> Noise() {
  std::vector<float> samples(static_cast<std::size_t>(kSamples));
  BenchNoiseSource source(kLFileBufferFrames, kBenchChannels);
  source.Read(samples.data(), kLFileBufferFrames);
  // Full scale, so the integer layouts see every magnitude.
  for (float& s : samples) s *= 1.9f;
  return samples;
}

template <class Tag>
void Rates(benchmark::State& state) {
  state.SetBytesProcessed(state.iterations() * kSamples * Tag::kBytes);
  state.counters["x_realtime"] =
      benchmark::Counter(static_cast<double>(state.iterations()) * kSamples / kSamplesPerSecondOfAudio,
                         benchmark::Counter::kIsRate);
}

template <class Tag>
void BM_ConvertIn(benchmark::State& state) {
  std::vector<float> floats = Noise();
  std::vector<unsigned char> stored(static_cast<std::size_t>(kSamples * Tag::kBytes));
  ConvertSamplesOut<Tag>(stored.data(), floats.data(), kSamples);
  for (auto _ : state) {
    ConvertSamplesIn<Tag>(floats.data(), stored.data(), kSamples);
    benchmark::DoNotOptimize(floats.data());
    benchmark::ClobberMemory();
  }
  Rates<Tag>(state);
}

template <class Tag>
void BM_ConvertOut(benchmark::State& state) {
  std::vector<float> floats = Noise();
  std::vector<unsigned char> stored(static_cast<std::size_t>(kSamples * Tag::kBytes));
  for (auto _ : state) {
    ConvertSamplesOut<Tag>(stored.data(), floats.data(), kSamples);
    benchmark::DoNotOptimize(stored.data());
    benchmark::ClobberMemory();
  }
  Rates<Tag>(state);
}

#define SONVALE_BENCH_LAYOUT(Tag)                                                         \
  BENCHMARK_TEMPLATE(BM_ConvertIn, Tag)->UseRealTime()->Unit(benchmark::kMicrosecond); \
  BENCHMARK_TEMPLATE(BM_ConvertOut, Tag)->UseRealTime()->Unit(benchmark::kMicrosecond)

SONVALE_BENCH_LAYOUT(LSF16);
SONVALE_BENCH_LAYOUT(LSFBE16);
SONVALE_BENCH_LAYOUT(LSFLE24);
SONVALE_BENCH_LAYOUT(LSFBE24);
SONVALE_BENCH_LAYOUT(LSF32);
SONVALE_BENCH_LAYOUT(LSFBE32);
SONVALE_BENCH_LAYOUT(LSFU8);
SONVALE_BENCH_LAYOUT(LSFS8);
SONVALE_BENCH_LAYOUT(LSFBE8);
SONVALE_BENCH_LAYOUT(LSFF32);
SONVALE_BENCH_LAYOUT(LSFF64);
SONVALE_BENCH_LAYOUT(LSFFRE32);
SONVALE_BENCH_LAYOUT(LSFFRE64);
SONVALE_BENCH_LAYOUT(LSFALAW);
SONVALE_BENCH_LAYOUT(LSFULAW);

}  // namespace
