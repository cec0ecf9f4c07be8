// sonvale_bench: the micro-benchmarks, with the targets checked at the end.
// Takes Google Benchmark's options (--benchmark_filter=..., --benchmark_repetitions=...).
#include <cstdio>
#include <unistd.h>

#include <benchmark/benchmark.h>

#include "bench/bench_support.h"
#include "bench/target_reporter.h"

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
  // Items made by the benchmarks live in a folder of their own, removed at the end.
  BenchCacheFolder folder;
  if (!folder.IsReady()) {
    std::fprintf(stderr, "sonvale_bench: no temporary folder for the sound cache\n");
    return 2;
  }
  TargetReporter reporter(BenchTargets(), ::isatty(STDOUT_FILENO) != 0);
  benchmark::RunSpecifiedBenchmarks(&reporter);
  benchmark::Shutdown();
  return 0;
}
