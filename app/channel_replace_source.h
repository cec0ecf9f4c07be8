#pragma once
// LSRCChannelReplace: a multi-channel source with one of its channels taken
// from a mono source instead. What puts an edited channel back into its file.
//
// Rate and channels are those of the whole source; the end is the later of the
// two ends, so a channel that grew is kept whole and the other channels read as
// silence past their end (and a shrunk channel as silence past its own).
#include "base/array.h"
#include "engine/sound_source.h"

class LSRCChannelReplace final : public LSoundSourceBase {
public:
  // channel is clamped to the channels of whole.
  LSRCChannelReplace(LSoundSource whole, LSoundSource channel, int index);

  void Read(float* buffer, long long frames) override;
  long long GetPositionSample() const override { return position_; }
  long long GetEndSample() const override { return end_; }
  void Seek(long long frame) override;

private:
  LSoundSource whole_;
  LSoundSource channel_;
  int index_;
  long long position_ = 0;
  long long end_;
  LArray<float> mono_;
};
