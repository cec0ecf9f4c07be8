#include "support/faulty_stream.h"

bool FaultyStream::Fails(FaultCall call, long long& count) {
  ++count;
  if (plan_.call != call) return false;
  const bool fails = plan_.mode == FaultMode::kOnce ? count == plan_.nth : count >= plan_.nth;
  if (fails) counts_.faulted = true;
  return fails;
}

long long FaultyStream::Write(const void* buffer, long long n) {
  if (!Fails(FaultCall::kWrite, counts_.writes)) return inner_.Write(buffer, n);
  if (!plan_.partialWrite || n < 2) return -1;
  // The disk filled up half way through.
  return inner_.Write(buffer, n / 2);
}

bool FaultyStream::Seek(long long offset) {
  if (Fails(FaultCall::kSeek, counts_.seeks)) return false;
  return inner_.Seek(offset);
}

bool FaultyStream::Truncate(long long size) {
  if (Fails(FaultCall::kTruncate, counts_.truncates)) return false;
  return inner_.Truncate(size);
}

std::vector<FaultPlan> EveryFaultPlan(const FaultCounts& clean) {
  std::vector<FaultPlan> plans;
  for (FaultMode mode : {FaultMode::kOnce, FaultMode::kFromThenOn}) {
    for (long long n = 1; n <= clean.writes; ++n) {
      plans.push_back({FaultCall::kWrite, n, mode, false});
      plans.push_back({FaultCall::kWrite, n, mode, true});
    }
    for (long long n = 1; n <= clean.seeks; ++n) plans.push_back({FaultCall::kSeek, n, mode, false});
    for (long long n = 1; n <= clean.truncates; ++n) plans.push_back({FaultCall::kTruncate, n, mode, false});
  }
  return plans;
}

std::string Describe(const FaultPlan& plan) {
  const char* call = plan.call == FaultCall::kWrite  ? (plan.partialWrite ? "partial write" : "write")
                     : plan.call == FaultCall::kSeek ? "seek"
                     : plan.call == FaultCall::kTruncate ? "truncate"
                                                         : "nothing";
  return std::string(call) + " #" + std::to_string(plan.nth) +
         (plan.mode == FaultMode::kOnce ? " fails once" : " fails from then on");
}
