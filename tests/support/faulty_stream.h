#pragma once
// FaultyStream: an LByteStream over another one that fails the Nth write, seek
// or truncate, once or from then on, as a full disk or a vanished volume would.
// Writers own the stream they are given, so the inner stream and the counts
// live with the test and outlive the wrapper.
//
// A failing write moves nothing and answers -1, or, as a partial write, moves
// the first half of its bytes and answers that short count. A failing seek
// leaves the position; a failing truncate leaves the data.
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "base/byte_stream.h"
#include "base/memory_stream.h"

struct FaultCounts {
  long long writes = 0;
  long long seeks = 0;
  long long truncates = 0;
  // True once a call was made to fail.
  bool faulted = false;

  long long Calls() const { return writes + seeks + truncates; }
};

enum class FaultCall { kNone, kWrite, kSeek, kTruncate };
enum class FaultMode { kOnce, kFromThenOn };

struct FaultPlan {
  FaultCall call = FaultCall::kNone;
  long long nth = 0;  // counted from 1 among the calls of that kind
  FaultMode mode = FaultMode::kOnce;
  bool partialWrite = false;
};

class FaultyStream final : public LByteStream {
 public:
  FaultyStream(LByteStream& inner, FaultCounts& counts, FaultPlan plan = {})
      : inner_(inner), counts_(counts), plan_(plan) {}

  long long Read(void* buffer, long long n) override { return inner_.Read(buffer, n); }
  long long Write(const void* buffer, long long n) override;
  bool Seek(long long offset) override;
  long long Tell() override { return inner_.Tell(); }
  bool Truncate(long long size) override;
  long long Size() override { return inner_.Size(); }

 private:
  // Counts the call; true when it is to fail.
  bool Fails(FaultCall call, long long& count);

  LByteStream& inner_;
  FaultCounts& counts_;
  FaultPlan plan_;
};

// Every plan that fails one call of an operation whose fault-free run made the
// calls in `clean`: each write (whole and partial), seek and truncate, once and
// from then on.
[[nodiscard]] std::vector<FaultPlan> EveryFaultPlan(const FaultCounts& clean);

// Names a plan in a test's failure message.
[[nodiscard]] std::string Describe(const FaultPlan& plan);

// Runs write(stream) into memory once without faults, then once for every plan
// that fails one of its calls: each faulty run must answer false.
template <class Write>
void ExpectEveryFaultReported(Write&& write) {
  FaultCounts clean;
  {
    LMemoryStream target;
    FaultyStream stream(target, clean);
    ASSERT_TRUE(write(stream));
  }
  ASSERT_FALSE(clean.faulted);
  for (const FaultPlan& plan : EveryFaultPlan(clean)) {
    LMemoryStream target;
    FaultCounts counts;
    FaultyStream stream(target, counts, plan);
    const bool written = write(stream);
    ASSERT_TRUE(counts.faulted) << Describe(plan);
    EXPECT_FALSE(written) << Describe(plan) << " went unnoticed";
  }
}
