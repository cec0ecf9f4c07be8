#include "bench/target_reporter.h"

#include <algorithm>
#include <cstdio>

namespace {

double Median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  const std::size_t n = values.size();
  return n % 2 ? values[n / 2] : (values[n / 2 - 1] + values[n / 2]) / 2.0;
}

// A time in the unit that keeps three digits in front of the point at most.
std::string TimeText(double seconds) {
  char text[64];
  if (seconds < 1e-3)
    std::snprintf(text, sizeof text, "%.2f us", seconds * 1e6);
  else if (seconds < 1.0)
    std::snprintf(text, sizeof text, "%.3f ms", seconds * 1e3);
  else
    std::snprintf(text, sizeof text, "%.3f s", seconds);
  return text;
}

constexpr int kNameWidth = 58;

}  // namespace

std::vector<BenchTarget> BenchTargets() {
  using Kind = BenchTarget::Kind;
  return {
      {"BM_CutListDelete/segments:10000/", Kind::kMaxSeconds, 100e-6, "", "<= 100 us"},
      {"BM_CutListInsert/segments:10000/", Kind::kMaxSeconds, 100e-6, "", "<= 100 us"},
      {"BM_SaveForUndo/segments:10000/", Kind::kMaxSeconds, 2e-3, "", "<= 2 ms"},
      {"BM_GrfBufferGetHour/segments:1/", Kind::kMaxSeconds, 20e-3, "", "<= 20 ms"},
      {"BM_EqBand", Kind::kMinCounter, 50.0, "x_realtime", ">= 50x real time"},
      {"BM_ClickPopRemoval", Kind::kMinCounter, 50.0, "x_realtime", ">= 50x real time"},
      {"BM_NoiseReduce", Kind::kMinCounter, 20.0, "x_realtime", ">= 20x real time"},
  };
}

void TargetReporter::ReportRuns(const std::vector<Run>& runs) {
  for (const Run& run : runs) {
    if (run.run_type != Run::RT_Iteration || run.error_occurred) continue;
    const std::string name = run.benchmark_name();
    auto [it, added] = measured_.try_emplace(name);
    if (added) order_.push_back(name);
    const double unit = benchmark::GetTimeUnitMultiplier(run.time_unit);
    it->second.seconds.push_back(run.GetAdjustedRealTime() / unit);
    // Benchmarks that time only a part of each iteration count that part's processor time themselves.
    auto own = run.counters.find(kOpCpuCounter);
    it->second.cpuSeconds.push_back(own != run.counters.end() ? own->second.value * 1e-6
                                                              : run.GetAdjustedCPUTime() / unit);
    for (const auto& [key, counter] : run.counters) it->second.counters[key].push_back(counter.value);
  }
  ConsoleReporter::ReportRuns(runs);
}

void TargetReporter::Finalize() {
  ConsoleReporter::Finalize();
  std::FILE* out = stdout;
  std::fprintf(out, "\nTargets (wall time decides; processor time for comparison)\n");
  std::fprintf(out, "%-*s %12s %12s  %-18s %s\n", kNameWidth, "benchmark", "wall", "cpu", "target", "result");
  for (const BenchTarget& target : targets_) {
    bool any = false;
    for (const std::string& name : order_) {
      if (name.compare(0, target.namePrefix.size(), target.namePrefix) != 0) continue;
      const Measured& m = measured_[name];
      const double wall = Median(m.seconds);
      const double cpu = Median(m.cpuSeconds);
      std::string wallText;
      std::string cpuText;
      bool met = false;
      bool cpuMet = false;
      char how[112];
      if (target.kind == BenchTarget::Kind::kMaxSeconds) {
        wallText = TimeText(wall);
        cpuText = TimeText(cpu);
        met = wall <= target.limit;
        cpuMet = cpu <= target.limit;
        if (met)
          std::snprintf(how, sizeof how, "PASS (%.0f%% of the limit)", 100.0 * wall / target.limit);
        else
          std::snprintf(how, sizeof how, "FAIL (%.2fx the limit, %s over)", wall / target.limit,
                        TimeText(wall - target.limit).c_str());
      } else {
        auto found = m.counters.find(target.counter);
        if (found == m.counters.end()) continue;
        const double value = Median(found->second);
        // The same rate against processor time.
        const double cpuValue = cpu > 0.0 ? value * wall / cpu : 0.0;
        char text[64];
        std::snprintf(text, sizeof text, "%.1fx", value);
        wallText = text;
        std::snprintf(text, sizeof text, "%.1fx", cpuValue);
        cpuText = text;
        met = value >= target.limit;
        cpuMet = cpuValue >= target.limit;
        if (met)
          std::snprintf(how, sizeof how, "PASS (%.1fx the least)", value / target.limit);
        else
          std::snprintf(how, sizeof how, "FAIL (needs %.2fx faster)", target.limit / value);
      }
      std::string verdict = how;
      if (!met && cpuMet) verdict += "; processor time meets it: the machine was busy";
      allMet_ = allMet_ && met;
      std::fprintf(out, "%-*s %12s %12s  %-18s %s\n", kNameWidth, name.c_str(), wallText.c_str(), cpuText.c_str(),
                   target.text.c_str(), verdict.c_str());
      any = true;
    }
    if (!any)
      std::fprintf(out, "%-*s %12s %12s  %-18s %s\n", kNameWidth, (target.namePrefix + "*").c_str(), "-", "-",
                   target.text.c_str(), "not run");
  }
  std::fflush(out);
}
