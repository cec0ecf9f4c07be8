#pragma once
// LSPEq (type 9, "Equalizer"): the point-list equaliser that the equalizer effects
// and band selections use, and LSRCEq, its processing source.
//
// Settings: a gain in dB for every whole hertz from 0 Hz up (LPointList::
// MapPointListToEq fills it); between whole hertz the gain runs linearly, above
// the last entry it holds. Gains are limited to -60 dB (the floor: nothing is
// attenuated further) and +30 dB.
//
// The source is a linear-phase FIR filter designed on a frequency grid finer than
// 1 Hz, so a one-hertz step in the curve stays a step, and run by FFT overlap-save
// in large blocks. Its output is aligned with its input: the source reads ahead on
// the input by half the filter and answers positions and length of its own, equal
// to the input's. Frames before 0 and at or past the end read as silence.
//
// The curve may also be given as points (LSPPointCurve, straight between points
// over linear frequency, as LPointList): the points are then its parameters,
// labelled by their frequency, and every change maps them into the gains up to
// 48 kHz. Setting the gains directly forgets the points.
//
// Saved layout after the base container: 0x2001 blob of 4-byte floats, the gains
// from 0 Hz upward (points are not saved). A chain record drops type 9 on load,
// by design.
#include <memory>

#include "base/array.h"
#include "effects/point_curve.h"
#include "effects/point_list.h"
#include "effects/sound_process.h"
#include "effects/sound_process_base.h"

// Chunk id of the gain table. On disk: never change.
inline constexpr unsigned short kLSPEqChunkGains = 0x2001;

inline constexpr double kLEqFloorDb = -60.0;
inline constexpr double kLEqCeilingDb = 30.0;
// Most entries a loaded table may have (up to a rate of 2 MHz); longer data is damaged.
inline constexpr std::size_t kLEqMaxGains = 1u << 20;

// The rate the points are mapped for: gains up to half of it.
inline constexpr std::uint32_t kLEqPointsRate = 96000;

class LSPEq final : public LSoundProcess, public LSPPointCurve {
public:
  LSPEq() = default;
  LSPEq(const LSPEq&) = default;

  // Gains in dB for 0, 1, 2 ... Hz; limited to the floor and ceiling.
  void SetGains(LArray<float> gainsDb);
  const LArray<float>& GetGains() const { return gainsDb_; }
  // The curve at any frequency (0 dB when empty).
  double GainAt(double frequencyHz) const;
  // True when the curve leaves every frequency as it is.
  bool IsFlat() const;

  // A flat curve answers the input itself.
  [[nodiscard]] LSoundSource OpenSource(LSoundSource& input) override;
  char* GetName(char* buffer) const override;
  int GetSoundProcessType() const override;
  [[nodiscard]] LSoundProcess* GetNewCopy() const override { return new LSPEq(*this); }

  void SaveToSDF(LSDFWriter& writer) const override;
  void LoadFromSDF(LSDFReader& reader, LSDFReaderChunkIterator& iterator) override;
  void LoadFromSDF(LSDFReaderChunkIterator& iterator) override;
  void ResetToDefault() override;

  int GetNumParameters() const override { return static_cast<int>(points_.Count()); }
  // A double: the gain of point `index` in dB.
  void SetParameterByIndex(int index, void* value) override;
  void GetParameterByIndex(int index, LSoundProcessParameter* out) const override;

  const LSPCurveAxes& CurveAxes() const override;
  std::vector<LPoint> CurvePoints() const override;
  void SetCurvePoint(double frequencyHz, double gainDb) override;
  void ClearCurvePoints() override;

private:
  void MapPoints();

  LArray<float> gainsDb_;
  LPointList points_;
};

class LSRCEq final : public LSoundProcessBase {
public:
  LSRCEq(const LSoundSource& input, const LSPEq& eq);
  ~LSRCEq() override;

  void Read(float* buffer, long long frames) override;
  long long GetPositionSample() const override { return position_; }
  void Seek(long long frame) override;

  // Points of the design grid (the filter has this many taps); the grid spacing
  // is rate / GetFilterLength() Hz.
  long long GetFilterLength() const { return grid_; }

private:
  struct Fft;
  // Computes the output block that starts at frame `start`.
  void ComputeBlock(long long start);
  // Reads frames of the input from `frame` into the windows at `offset`; frames
  // before 0 are silence (the input is not asked for them).
  void ReadWindow(long long frame, long long frames, long long offset);

  long long grid_;        // N: design grid, taps, and frames per block
  long long position_ = 0;
  long long blockStart_ = 0;
  bool blockValid_ = false;
  std::unique_ptr<Fft> fft_;
};
