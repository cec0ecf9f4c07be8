#pragma once
// LSPClickPopRemoval (type 32, "Click/Pop-Entfernung") and LSRCClickPopRemoval,
// its processing source; LClickRepair for a span the user marks by hand.
//
// Settings: "Empfindlichkeit" (%, higher finds quieter clicks) and "Maximale
// Länge" (ms; a louder run that lasts longer is taken for music and kept).
// Saved layout: as every LSoundProcessValues, chunks 0x2001 and 0x2002.
//
// A click is a run of samples that neither the samples before it nor those
// after it predict: an autoregressive model of the audio around it gives a
// forward and a backward prediction error per sample, and a sample is damaged
// where both are far above their usual size. A damaged run is rebuilt as the
// samples that make the model's prediction errors over it smallest (least
// squares), from the model fitted to the audio around the run. Every other
// sample is passed on bit for bit.
#include <vector>

#include "effects/sound_process_base.h"
#include "effects/sound_process_values.h"

inline constexpr int kLSPClickSensitivity = 0;
inline constexpr int kLSPClickMaxMs = 1;

class LSPClickPopRemoval final : public LSoundProcessValues {
public:
  LSPClickPopRemoval();
  LSPClickPopRemoval(const LSPClickPopRemoval&) = default;
  [[nodiscard]] LSoundSource OpenSource(LSoundSource& input) override;
  [[nodiscard]] LSoundProcess* GetNewCopy() const override { return new LSPClickPopRemoval(*this); }
};

// Rebuilds x[from, to) of one channel from the samples around it; x holds at
// least 32 samples either side of the span, better a few hundred. False, with x
// unchanged, when there is too little around it.
[[nodiscard]] bool LClickRepair(double* x, long long count, long long from, long long to);

// The output is aligned with the input. It is made in blocks on a grid from
// frame 0, each read with a margin either side, so a seek gives the same sound.
class LSRCClickPopRemoval final : public LSoundProcessBase {
public:
  LSRCClickPopRemoval(const LSoundSource& input, double sensitivity, double maxMs);

  void Read(float* buffer, long long frames) override;
  long long GetPositionSample() const override { return position_; }
  void Seek(long long frame) override { position_ = frame; }

  // Damaged runs repaired so far (for the caller's report and tests).
  [[nodiscard]] long long RepairedRuns() const { return repaired_; }

private:
  void MakeBlock(long long block);
  // Finds and repairs the clicks of one channel of the window; answers the runs repaired.
  long long Channel(int channel);

  double factor_;
  long long maxRun_;
  long long margin_;
  long long position_ = 0;
  long long block_ = -1;
  long long repaired_ = 0;
  std::vector<float> window_;  // interleaved, margin + block + margin frames
  std::vector<double> x_, ef_, eb_, work_;
  std::vector<char> bad_;
};
