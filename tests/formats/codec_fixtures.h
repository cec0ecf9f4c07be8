#pragma once
// Helpers of the codec tests: sound files made by ffmpeg and sox, decoded by
// ffmpeg as the judge. The tools are outside programs; tests skip when they
// are missing.
#include <string>
#include <vector>

#include "engine/sound_source.h"

// The path quoted for the shell.
std::string ShellQuote(const std::string& path);
// Runs ffmpeg quietly with the arguments (overwriting outputs); true on success.
bool FFmpegMake(const std::string& arguments);
// True when this ffmpeg has the encoder.
bool FFmpegHasEncoder(const char* name);
// What ffmpeg decodes from the file, as interleaved float at the rate and channel count;
// with sixteenBits as 16-bit values scaled as our 16-bit formats scale them.
std::vector<float> FFmpegDecode(const std::string& path, int channels, int rate, const std::string& scratch,
                                bool sixteenBits = false);
// The whole source from frame 0 in blocks of the given size.
std::vector<float> ReadWhole(LSoundSource& source, long long block = 8192);
// The largest difference between two runs of equal length (infinity when the lengths differ).
double MaxDifference(const std::vector<float>& a, const std::vector<float>& b);
// Interleaved float frames of a sine with the given peak, channel c shifted by c radians.
std::vector<float> SineFrames(long long frames, int channels, int rate, double hz, double peak = 0.5);

// A source over frames held in memory.
LSoundSource MemorySource(std::vector<float> frames, int channels, unsigned rate);
