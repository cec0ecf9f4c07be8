#pragma once
// LSPMixSimple: sums a second source into the one it is opened over, sample by
// sample, with no scaling and no clamping; LSRCMixSimple is its source. The edit
// operations use it to lay a processed band over the rest of a selection.
//
// The sum has the first input's format and length. Frames of the second source
// are read alongside through a scratch buffer of 32768 bytes per channel. A second
// source of another channel count is laid over as follows: a mono one goes into
// every channel, into a mono sum all its channels go averaged, otherwise channel
// by channel as far as both have them. Rates are not converted.
//
// The object holds a counted handle on the second source and cannot be saved
// (its type is 0, like the base).
#include "base/array.h"
#include "effects/sound_process.h"
#include "effects/sound_process_base.h"

// Scratch bytes per channel of the second source.
inline constexpr long long kLMixScratchBytesPerChannel = 32768;

class LSPMixSimple final : public LSoundProcess {
public:
  explicit LSPMixSimple(const LSoundSource& second) : second_(second) {}
  LSPMixSimple(const LSPMixSimple&) = default;

  // A source over input plus the second source (which it holds).
  [[nodiscard]] LSoundSource OpenSource(LSoundSource& input) override;
  [[nodiscard]] LSoundProcess* GetNewCopy() const override { return new LSPMixSimple(*this); }

private:
  LSoundSource second_;
};

class LSRCMixSimple final : public LSoundProcessBase {
public:
  LSRCMixSimple(const LSoundSource& input, const LSoundSource& second);

  void Read(float* buffer, long long frames) override;
  // Moves both inputs.
  void Seek(long long frame) override;

private:
  LSoundSource second_;
  long long scratchFrames_;
  LArray<float> scratch_;
};
