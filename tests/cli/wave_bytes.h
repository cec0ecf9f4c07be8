#pragma once
// WAVE files made in code for the command's tests.
#include <cstdint>
#include <string>
#include <vector>

#include "support/file_bytes.h"

// Sample i holds i (mod 30000), so any misplaced sample names itself.
std::vector<std::int16_t> Staircase16(int samples);
// 16-bit PCM WAVE bytes of the given interleaved samples.
std::string WaveBytes16(const std::vector<std::int16_t>& samples, int channels, int rate);
// The samples of a 16-bit PCM WAVE file written by WaveBytes16 or by sonvale (44-byte header).
std::vector<std::int16_t> WaveSamples16(const std::string& bytes);
