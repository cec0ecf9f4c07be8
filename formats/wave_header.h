#pragma once
// The header that the WAVE writers put before their samples: the RIFF container,
// a fmt chunk of 16, 18 or 20 bytes, an optional fact chunk and the header of
// the (first) data chunk.
#include <cstdint>

#include "formats/wave_format.h"

struct LWaveHeaderLayout {
  std::uint16_t tag = kLWaveTagPCM;
  std::uint16_t channels = 1;
  std::uint32_t sampleRate = 44100;
  std::uint32_t bytesPerSecond = 0;
  std::uint16_t blockAlign = 0;
  std::uint16_t bitsPerSample = 16;
  // 16; 18 with an extra size of 0; 20 with an extra size of 2 holding the samples per block.
  int fmtBytes = 16;
  std::uint16_t samplesPerBlock = 0;
  bool fact = false;
};

// The longest header: fmt of 20 bytes and a fact chunk.
constexpr int kLWaveHeaderMaxBytes = 60;

[[nodiscard]] int LWaveHeaderBytes(const LWaveHeaderLayout& layout);

// Writes the header into out (LWaveHeaderBytes bytes) with the given sizes and,
// when the layout has one, the fact chunk's frame count.
void LWaveHeaderMake(const LWaveHeaderLayout& layout, std::uint32_t riffSize, std::uint32_t dataSize,
                     std::uint32_t factFrames, unsigned char* out);
