#include "engine/source_to_sink.h"

#include <algorithm>
#include <vector>

LProcessResult Process(LProcessInterface& process, LPRSourceToSink& job) {
  LSoundSource& source = job.source_;
  LSoundSink& sink = job.sink_;
  process.SetStatus(job.title_.c_str(), 0);
  const int channels = std::max<int>(1, source.GetChannels());
  std::vector<float> block(static_cast<size_t>(kLPumpBlockFrames) * channels);
  const long long start = source.GetPositionSample();
  job.done_ = 0;
  LProcessResult result = kLProcessSuccess;
  for (;;) {
    if (process.IsCancelled()) {
      result = kLProcessCancelled;
      break;
    }
    // A compressed file is counted while it is copied, not decoded twice.
    long long end = source.GetEndSampleKnown();
    long long at = source.GetPositionSample();
    if (at >= end) {
      // A streaming source is followed while it grows; a writer that died leaves
      // one that streams forever, so a wait without growth ends the job.
      if (!source.IsStreaming()) break;
      source.WaitForStreamingData(100);
      if (source.GetEndSampleKnown() <= at) break;
      continue;
    }
    long long frames = std::min(kLPumpBlockFrames, end - at);
    source.Read(block.data(), frames);
    sink.Write(block.data(), frames);
    job.done_ += frames;
    if (sink.HasError()) {
      result = kLProcessFailed;
      break;
    }
    const long long whole = std::max(end, source.GetEndSampleEstimate());
    if (whole > start) {
      process.SetProgress(std::min(1.0, static_cast<double>(at + frames - start) / static_cast<double>(whole - start)));
    }
  }
  if (result == kLProcessSuccess) process.SetProgress(1.0);
  if (job.closeSink_) {
    // Finished here, a failure of the file's last writes still reaches the result.
    if (sink.RefCount() == 1) sink.Complete();
    bool failed = sink.HasError();
    sink.Close();
    if (failed && result == kLProcessSuccess) result = kLProcessFailed;
  }
  return result;
}
