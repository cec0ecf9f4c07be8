// sonvale_open: opens a WAVE file into the sound cache (see cache_open.h), for
// bench/run.sh to time until the command has a verb for it. It uses the WAVE
// reader alone, so it does not load the decoders of other formats.
#include "bench/cache_open.h"
#include "formats/wave_file.h"

namespace {

LSoundSource OpenWave(const char* path) { return LWaveFile::OpenSource(path); }

}  // namespace

int main(int argc, char** argv) { return BenchOpenMain(argc, argv, "sonvale_open", OpenWave); }
