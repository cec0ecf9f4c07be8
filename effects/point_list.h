#pragma once
// LPointList: a gain curve given as points (frequency in Hz, gain in dB). Between
// two points the gain runs linearly in dB over linear frequency; below the first
// point and above the last it holds their gains. Points may be added in any
// order; at a frequency given twice the later point wins above it, so a vertical
// step can be drawn.
#include <cstdint>

#include "base/array.h"

class LSPEq;

struct LPoint {
  double frequency;  // Hz
  double gainDb;
};

class LPointList {
public:
  void Add(double frequencyHz, double gainDb);
  void Clear() { points_.clear(); }
  std::size_t Count() const { return points_.size(); }
  const LPoint& At(std::size_t i) const { return points_[i]; }

  // The curve's gain at a frequency; 0 dB for an empty list.
  double GainAt(double frequencyHz) const;

  // Fills the equaliser's gains for every whole hertz from 0 to half the sample
  // rate (a rate of 0 maps at 44100 Hz), limited to its floor and ceiling.
  void MapPointListToEq(LSPEq& eq, std::uint32_t sampleRate) const;

private:
  LArray<LPoint> points_;  // sorted by frequency; equal frequencies in the order added
};
