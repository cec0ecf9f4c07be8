#pragma once
// Text to speech through the espeak-ng program: the text is spoken in German
// into a WAVE file. The program is started directly (no shell), so the text is
// passed as it is, whatever characters it holds.
#include "base/string_long.h"

enum class SVSpeechResult {
  kDone,
  kMissing,  // no speech program installed
  kFailed,   // the program failed or wrote nothing
};

// The program to run; empty restores "espeak-ng" looked up in PATH. Tests point
// it elsewhere to act out a missing installation.
void SVTextToSpeechProgramSet(const char* program);
// The program's full path, empty when it is not installed.
[[nodiscard]] LStringLong SVTextToSpeechProgram();
// Speaks text into the WAVE file at path (created or replaced).
[[nodiscard]] SVSpeechResult SVTextToSpeechToWaveFile(const char* text, const char* path);
