#pragma once
// LSRCReduceVocals: takes out of a stereo sound what is the same in both channels
// (a voice mixed to the middle) and keeps the bass, which is usually mixed to the
// middle too. Other channel counts pass through as they are.
//
// It works on overlapping spectra of 4096 frames: each bin is kept by how much
// its two channels differ (1 - similarity^4, similarity being 1 for equal
// channels and 0 for a sound in one channel alone); bins below the bass limit are
// kept whole. Its output is aligned with its input: the source reads ahead by half
// a spectrum and answers positions of its own; the hops lie on a grid from frame
// 0, so blocks of any size and a seek give the same sound.
#include <memory>
#include <vector>

#include "effects/sound_process_base.h"

inline constexpr double kLReduceVocalsBassHz = 150.0;

class LSRCReduceVocals final : public LSoundProcessBase {
public:
  explicit LSRCReduceVocals(const LSoundSource& input, double bassHz = kLReduceVocalsBassHz);
  ~LSRCReduceVocals() override;

  void Read(float* buffer, long long frames) override;
  long long GetPositionSample() const override;
  void Seek(long long frame) override;

private:
  struct Fft;
  // Reads the next hop of the input and makes the next hop of output.
  void NextHop();

  long long bassBins_;
  bool primed_ = false;
  long long position_ = 0;
  long long used_ = 0;  // frames of the current output hop already read
  std::vector<float> window_;
  std::vector<float> in_;       // two channels of one spectrum's frames, channel after channel
  std::vector<float> overlap_;  // two channels of the later half of the last spectrum
  std::vector<float> out_;      // the current hop, interleaved
  std::vector<float> fresh_;    // one hop of input, interleaved
  std::unique_ptr<Fft> fft_;
};
