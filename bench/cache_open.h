#pragma once
// What sonvale_open and sonvale_open_any share: opening a sound file into the
// sound cache the way the editor does.
//
//   PROGRAM [--reuse] FILE
//
// Decodes FILE into a new cache item (".aud", ".grf", ".audinfo") and records it
// as the decoded copy of FILE. --reuse first looks for an item that already is
// the decoded copy of FILE as it is now and takes that instead. The cache folder
// comes from SONVALE_CACHE_DIR. Prints "item N frames F decoded|reused".
#include "engine/sound_source.h"

// Exit status of the programs.
inline constexpr int kBenchOpenOK = 0;
inline constexpr int kBenchOpenFailed = 2;

using BenchOpenFunction = LSoundSource (*)(const char* path);

[[nodiscard]] int BenchOpenMain(int argc, char** argv, const char* program, BenchOpenFunction open);
