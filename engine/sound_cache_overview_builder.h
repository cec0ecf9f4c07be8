#pragma once
// LSoundCacheOverviewBuilder: gathers the peaks of frames as they are written
// and codes one overview record per channel for every 256-frame block. The two
// sinks that write cache items share it, so their ".grf" files cannot differ.
#include <cstdint>
#include <vector>

#include "base/byte_stream.h"

class LSoundCacheOverviewBuilder {
public:
  explicit LSoundCacheOverviewBuilder(int channels);

  // Adds interleaved frames; every block they complete is coded.
  void Add(const float* buffer, long long frames);
  // Codes the block gathered so far (also a short one) and starts the next.
  void EndBlock();
  // Writes the coded records to the stream; lost records draw as silence, so a
  // failed write is not reported.
  void Flush(LByteStream& stream);
  // Starts over at a frame inside a block: the peaks are cleared.
  void Restart(long long framesIntoBlock);

  // Frames gathered in the current block (0 to 256).
  [[nodiscard]] long long BlockFrames() const { return blockFrames_; }

private:
  int channels_;
  long long blockFrames_ = 0;
  std::vector<float> positive_;        // per channel, never below 0
  std::vector<float> negative_;        // per channel, never above 0
  std::vector<unsigned char> records_;  // coded, not yet written
};
