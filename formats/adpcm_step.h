#pragma once
// The step shared by the 4-bit ADPCM codecs (IMA and Dialogic/OKI): a nibble of
// sign and three magnitude bits scales the current step size, the predictor
// moves by the result and the step index adapts.
#include <algorithm>
#include <cstdint>

// Step index changes for the three magnitude bits of a nibble.
inline constexpr std::int8_t kLAdpcmIndexShift[8] = {-1, -1, -1, -1, 2, 4, 6, 8};

struct LAdpcmState {
  int predictor = 0;
  int index = 0;
};

// Applies one nibble; steps is the codec's step table of stepCount entries and
// the predictor is kept within low .. high.
inline int LAdpcmDecodeNibble(LAdpcmState& s, int nibble, const std::int16_t* steps, int stepCount, int low, int high) {
  const int step = steps[s.index];
  int diff = step >> 3;
  if (nibble & 4) diff += step;
  if (nibble & 2) diff += step >> 1;
  if (nibble & 1) diff += step >> 2;
  s.predictor = std::clamp(nibble & 8 ? s.predictor - diff : s.predictor + diff, low, high);
  s.index = std::clamp(s.index + kLAdpcmIndexShift[nibble & 7], 0, stepCount - 1);
  return s.predictor;
}

// Chooses the nibble for sample and applies it, so that encoder and decoder
// states stay the same.
inline int LAdpcmEncodeNibble(LAdpcmState& s, int sample, const std::int16_t* steps, int stepCount, int low, int high) {
  int diff = sample - s.predictor;
  int nibble = 0;
  if (diff < 0) {
    nibble = 8;
    diff = -diff;
  }
  int step = steps[s.index];
  for (int bit = 4; bit > 0; bit >>= 1, step >>= 1) {
    if (diff >= step) {
      nibble |= bit;
      diff -= step;
    }
  }
  LAdpcmDecodeNibble(s, nibble, steps, stepCount, low, high);
  return nibble;
}
