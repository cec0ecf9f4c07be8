#pragma once
// TargetReporter: the console reporter of Google Benchmark that also keeps what
// the runs measured and, at the end, prints every target with PASS or FAIL and
// by how much it is missed. A target names the benchmarks it applies to by the
// start of their names; a benchmark repeated gives the median of its runs.
//
// The verdict is on wall time, as the targets are meant. The processor time is
// shown beside it: on a shared machine the wall time also holds the time other
// processes had the core, and the two differing much says so.
#include <map>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

struct BenchTarget {
  enum class Kind { kMaxSeconds, kMinCounter };
  std::string namePrefix;  // every benchmark whose name starts so must meet it
  Kind kind;
  double limit;             // seconds per iteration, or the counter's least value
  std::string counter;      // for kMinCounter
  std::string text;         // how the target reads in the table
};

// The counter (microseconds per iteration) in which a benchmark that times
// only part of each iteration reports that part's processor time.
inline constexpr const char* kOpCpuCounter = "op_cpu_us";

// The targets set for the micro-benchmarks.
[[nodiscard]] std::vector<BenchTarget> BenchTargets();

class TargetReporter final : public benchmark::ConsoleReporter {
public:
  // color: the console's colours, for a terminal only.
  TargetReporter(std::vector<BenchTarget> targets, bool color)
      : ConsoleReporter(color ? OO_ColorTabular : OO_Tabular), targets_(std::move(targets)) {}

  void ReportRuns(const std::vector<Run>& runs) override;
  void Finalize() override;

  // True when every target that ran was met.
  [[nodiscard]] bool AllMet() const { return allMet_; }

private:
  struct Measured {
    std::vector<double> seconds;     // real time per iteration
    std::vector<double> cpuSeconds;  // processor time per iteration
    std::map<std::string, std::vector<double>> counters;
  };

  std::vector<BenchTarget> targets_;
  std::map<std::string, Measured> measured_;  // by benchmark name, in name order
  std::vector<std::string> order_;            // names in the order they ran
  bool allMet_ = true;
};
