#pragma once
// LSoundProcessLatent: the base of processing sources that run as a stream with
// a fixed latency of whole frames (a look-ahead delay line, oversampling
// filters). The base reads that many frames ahead of what it hands out, so
// positions and length stay the input's; frames past the input's end read as
// silence and run the stream out. Sources without latency use it for its seek:
// state cleared, then a pre-roll read away before the target.
#include <vector>

#include "effects/sound_process_base.h"

class LSoundProcessLatent : public LSoundProcessBase {
public:
  LSoundProcessLatent(const LSoundSource& input, long long latency);

  void Read(float* buffer, long long frames) final;
  // Clears the state and reads the pre-roll away before `frame`.
  void Seek(long long frame) final;
  long long GetPositionSample() const override;

  long long Latency() const { return latency_; }

protected:
  // Runs input frames through the stream in place: what comes out is `latency`
  // frames late. `first` is the frame of the output that buffer[0] becomes (it
  // is before 0 while the look-ahead fills), for modulations tied to the timeline.
  virtual void Process(float* buffer, long long frames, long long first) = 0;
  // Back to the state of a new source.
  virtual void Reset() = 0;
  // Frames to read away before a seek target so that the state has settled.
  virtual long long Preroll() const;

private:
  long long latency_;
  bool primed_ = false;
  std::vector<float> scratch_;  // for the look-ahead, at most 4096 frames
};
