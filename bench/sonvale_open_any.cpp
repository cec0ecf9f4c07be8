// sonvale_open_any: opens a sound file of any format into the sound cache (see
// cache_open.h) through the format dispatch, for bench/run.sh to time MP3 and
// FLAC until the command has a verb for it.
#include "bench/cache_open.h"
#include "formats/sound_file.h"

namespace {

LSoundSource OpenAny(const char* path) { return LSoundFile::OpenSource(path); }

}  // namespace

int main(int argc, char** argv) { return BenchOpenMain(argc, argv, "sonvale_open_any", OpenAny); }
