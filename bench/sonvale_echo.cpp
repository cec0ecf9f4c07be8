// sonvale_echo: the echo over a whole WAVE file, written as 32-bit float WAVE,
// for bench/run.sh to time until the command has an edit verb for effects.
//
//   sonvale_echo IN.wav OUT.wav [GAIN_PERCENT [TIME_MS]]
//
// Exit status 0 on success, 2 on failure.
#include <cstdio>
#include <cstdlib>

#include "base/process_interface.h"
#include "effects/echo.h"
#include "engine/source_to_sink.h"
#include "formats/wave_file.h"

namespace {

constexpr int kExitOK = 0;
constexpr int kExitFailed = 2;
constexpr int kDefaultGainPercent = 30;
constexpr long long kDefaultTimeMs = 1000;

}  // namespace

int main(int argc, char** argv) {
  if (argc < 3 || argc > 5) {
    std::fprintf(stderr, "Aufruf: sonvale_echo EIN.wav AUS.wav [ZUNAHME_PROZENT [ZEIT_MS]]\n");
    return kExitFailed;
  }
  LSPEcho echo;
  echo.SetGain(argc > 3 ? std::atoi(argv[3]) : kDefaultGainPercent);
  echo.SetTime(argc > 4 ? std::atoll(argv[4]) : kDefaultTimeMs);

  LSoundSource input = LWaveFile::OpenSource(argv[1]);
  if (input.IsError()) {
    std::fprintf(stderr, "sonvale_echo: \"%s\" kann nicht geöffnet werden (Code %d).\n", argv[1],
                 input.GetErrorCode());
    return kExitFailed;
  }
  LSoundSource output = echo.OpenSource(input);
  LSoundSink sink = LWaveFile::OpenSinkFloatExport(argv[2], static_cast<int>(output.GetSampleRate()),
                                                   output.GetChannels());
  if (sink.HasError()) {
    std::fprintf(stderr, "sonvale_echo: \"%s\" kann nicht geschrieben werden.\n", argv[2]);
    return kExitFailed;
  }
  LProcessInterfaceQuiet process;
  LPRSourceToSink job("Echo", output, sink, true);
  sink = LSoundSink();
  if (Process(process, job) != kLProcessSuccess) {
    std::fprintf(stderr, "sonvale_echo: \"%s\" wurde nicht vollständig geschrieben.\n", argv[2]);
    return kExitFailed;
  }
  return kExitOK;
}
