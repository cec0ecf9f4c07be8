#pragma once
// LSPReverb3 (type 8, "Hall"): a room's reverberation; LSRCReverb is its
// processing source.
//
// Settings: "Raumgröße" (%, the lengths of the room's paths), "Nachhallzeit" (s
// until an impulse has died away by 60 dB), "Dämpfung" (% by which the highs die
// sooner), "Vorverzögerung" (ms before the reverberation sets in), "Breite" (% of
// the two channels' difference kept) and "Mischung" (% of the reverberation in
// the output).
// Saved layout: as every LSoundProcessValues, chunks 0x2001 to 0x2006 in that order.
//
// The source is longer than its input by the tail: the pre-delay and the
// reverberation time, read from silence past the input's end.
#include <array>
#include <vector>

#include "effects/sound_process_latent.h"
#include "effects/sound_process_values.h"

inline constexpr int kLSPReverbSize = 0;
inline constexpr int kLSPReverbTime = 1;
inline constexpr int kLSPReverbDamping = 2;
inline constexpr int kLSPReverbPreDelay = 3;
inline constexpr int kLSPReverbWidth = 4;
inline constexpr int kLSPReverbMix = 5;

class LSPReverb3 final : public LSoundProcessValues {
public:
  LSPReverb3();
  LSPReverb3(const LSPReverb3&) = default;
  [[nodiscard]] LSoundSource OpenSource(LSoundSource& input) override;
  [[nodiscard]] LSoundProcess* GetNewCopy() const override { return new LSPReverb3(*this); }
};

struct LReverbSettings {
  double size, seconds, damping, preDelayMs, width, mix;  // size, damping, width, mix 0 ... 1
};

// A feedback delay network of eight lines mixed by an orthogonal matrix, each
// line losing per pass what the reverberation time asks for its length, the
// highs more by the damping. Left and right are fed through their own chains of
// diffusing all-passes and read from disjoint lines, so they are decorrelated.
// A mono input is fed to both sides and hears their average; with more than two
// channels the even ones are the left side and the odd ones the right.
class LSRCReverb final : public LSoundProcessLatent {
public:
  static constexpr int kLines = 8;
  static constexpr int kDiffusers = 4;

  LSRCReverb(const LSoundSource& input, const LReverbSettings& settings);

  long long GetEndSample() const override;
  long long GetEndSampleKnown() const override;
  long long GetEndSampleEstimate() const override { return GetEndSampleKnown(); }
  long long TailFrames() const { return tail_; }

protected:
  void Process(float* buffer, long long frames, long long first) override;
  void Reset() override;
  // The whole tail, so a seek hears what was ringing there.
  long long Preroll() const override { return tail_; }

private:
  struct Delay {
    std::vector<float> line;
    int at = 0;
    float Tap() const { return line[at]; }  // the sample written line.size() frames ago
    void Put(float x) {
      line[at] = x;
      if (++at == static_cast<int>(line.size())) at = 0;
    }
  };

  LReverbSettings s_;
  long long tail_;
  std::array<Delay, kLines> lines_;
  std::array<float, kLines> gain_{}, pole_{}, lowState_{};
  std::array<std::array<Delay, kDiffusers>, 2> diffusers_;
  std::array<Delay, 2> preDelay_;
};
