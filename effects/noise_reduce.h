#pragma once
// Noise reduction from a learned noise profile: LNoiseProfileLearn measures the
// noise's mean power per frequency bin; LSRCNoiseReduce lowers every bin whose
// level stays near that noise by the reduction and leaves bins well above it
// alone.
//
// Both cut the sound into spectra of 2048 frames that overlap by half (a square
// root Hann window before and after, so unchanged spectra add up to the input
// bit for bit but for rounding). A bin's level is its power averaged over the
// three bins either side and over time (each hop halves the old level's weight),
// which keeps lone noise peaks from opening and closing (the warbling "musical
// noise" of plain spectral subtraction). Its gain in dB is minus the reduction
// up to the noise level plus the sensitivity, rises linearly to 0 dB at 6 dB
// above that, opens at once and closes over about 100 ms.
#include <cstdint>
#include <memory>
#include <vector>

#include "effects/sound_process_base.h"

// Frames of one spectrum: the least noise a profile can be learned from.
inline constexpr long long kLNoiseSpectrumFrames = 2048;
inline constexpr double kLNoiseReduceDb = 12.0;
inline constexpr double kLNoiseReduceSensitivityDb = 6.0;

struct LNoiseProfile {
  std::uint32_t rate = 0;
  std::vector<double> power;  // mean power per bin, over all channels

  [[nodiscard]] bool IsEmpty() const { return power.empty(); }
};

// Reads noise from its position to its end. False, with profile unchanged, when
// the source is in error or holds less than one spectrum (2048 frames).
[[nodiscard]] bool LNoiseProfileLearn(LSoundSource& noise, LNoiseProfile& profile);

// The output is aligned with the input; the hops lie on a grid from frame 0 and
// a seek settles the levels over a pre-roll, so reading on after a seek sounds
// as reading straight through.
class LSRCNoiseReduce final : public LSoundProcessBase {
public:
  LSRCNoiseReduce(const LSoundSource& input, const LNoiseProfile& profile, double reductionDb = kLNoiseReduceDb,
                  double sensitivityDb = kLNoiseReduceSensitivityDb);
  ~LSRCNoiseReduce() override;

  void Read(float* buffer, long long frames) override;
  long long GetPositionSample() const override { return primed_ ? position_ : Input().GetPositionSample(); }
  void Seek(long long frame) override;

  struct Fft;

private:
  void NextHop();

  std::vector<double> threshold_;  // power per bin where the gain starts to rise
  double reduction_;
  double closeStep_;  // dB per hop
  bool primed_ = false;
  bool fresh_ = true;  // no level yet since the last seek
  long long position_ = 0;
  long long used_ = 0;
  std::vector<float> window_, in_, overlap_, out_, hop_;
  std::vector<double> power_, level_, gainDb_;
  std::unique_ptr<Fft> fft_;
};
