#include "app/text_to_speech.h"

#include <cstring>
#include <mutex>

#include "base/array.h"
#include "base/child_process.h"
#include "base/environment.h"
#include "base/platform_file.h"

namespace {

constexpr const char* kProgramName = "espeak-ng";
// The voice matches the language of the program's texts.
constexpr const char* kVoice = "de";
// The speech goes to a file; the child is kept away from the sound server.
constexpr const char* kNoSoundServer = "PULSE_SERVER=/dev/null";
constexpr std::size_t kSoundServerNameLength = 13;  // "PULSE_SERVER="

std::mutex gMutex;
LStringLong gProgram;

bool IsExecutable(const LStringLong& path) { return LProgramIsRunnable(path.c_str()); }

LStringLong FindInPath(const char* name) {
  const char* path = LEnvironmentGet("PATH");
  LStringLong folders = path && *path ? path : "/usr/local/bin:/usr/bin:/bin";
  for (std::size_t from = 0; from <= folders.size();) {
    std::size_t colon = folders.find(':', from);
    if (colon == LStringLong::npos) colon = folders.size();
    LStringLong folder = folders.substr(from, colon - from);
    LStringLong candidate = (folder.empty() ? LStringLong(".") : folder) + "/" + name;
    if (IsExecutable(candidate)) return candidate;
    from = colon + 1;
  }
  return LStringLong();
}

}  // namespace

void SVTextToSpeechProgramSet(const char* program) {
  std::lock_guard<std::mutex> lock(gMutex);
  gProgram = program ? program : "";
}

LStringLong SVTextToSpeechProgram() {
  LStringLong program;
  {
    std::lock_guard<std::mutex> lock(gMutex);
    program = gProgram;
  }
  if (program.empty()) return FindInPath(kProgramName);
  return IsExecutable(program) ? program : LStringLong();
}

SVSpeechResult SVTextToSpeechToWaveFile(const char* text, const char* path) {
  const LStringLong program = SVTextToSpeechProgram();
  if (program.empty()) return SVSpeechResult::kMissing;
  // "--" ends the options, so a text starting with '-' is spoken, not parsed.
  char* argv[] = {const_cast<char*>(kProgramName), const_cast<char*>("-v"), const_cast<char*>(kVoice),
                  const_cast<char*>("-w"),         const_cast<char*>(path), const_cast<char*>("--"),
                  const_cast<char*>(text ? text : ""), nullptr};
  // espeak-ng opens its sound output even when it only writes a file, and the
  // sound server's client library then leaves a runtime folder in our temporary
  // folder. With no server to reach it makes none.
  LArray<char*> environment;
  for (char* const* variable = LEnvironmentVariables(); variable && *variable; ++variable) {
    if (std::strncmp(*variable, kNoSoundServer, kSoundServerNameLength) != 0) environment.push_back(*variable);
  }
  environment.push_back(const_cast<char*>(kNoSoundServer));
  environment.push_back(nullptr);
  const int child = LChildStartProgram(program.c_str(), argv, environment.data());
  LChildEnd end;
  if (child < 0 || !LChildWait(child, &end) || end.code != 0) return SVSpeechResult::kFailed;
  LFileDetails details;
  return LFileDetailsGet(path, &details) && details.size > 0 ? SVSpeechResult::kDone : SVSpeechResult::kFailed;
}
