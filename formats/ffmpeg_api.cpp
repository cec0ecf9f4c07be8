#include "formats/ffmpeg_api.h"

#ifdef SONVALE_HAVE_FFMPEG

#include <mutex>
#include <string>

#include "base/shared_library.h"

namespace {

struct Libraries {
  LSharedLibrary avutil, swresample, avcodec, avformat;
  LFFmpegApi api;
  std::string error;
};

// The libraries stay loaded to the end of the process: decoders may be open anywhere.
Libraries* Bind() {
  auto* libs = new Libraries;
  bool ok = true;
  auto load = [&](LSharedLibrary& lib, const char* name, const char* fallback) {
    if (ok && !lib.Load(name, fallback)) {
      libs->error = lib.Error();
      ok = false;
    }
  };
  auto bind = [&](LSharedLibrary& lib, auto& f, const char* name) {
    if (ok && !lib.Bind(f, name)) {
      libs->error = lib.Error();
      ok = false;
    }
  };
  // Each before the ones that use it.
  load(libs->avutil, SONVALE_AVUTIL_SONAME, "libavutil.so");
  load(libs->swresample, SONVALE_SWRESAMPLE_SONAME, "libswresample.so");
  load(libs->avcodec, SONVALE_AVCODEC_SONAME, "libavcodec.so");
  load(libs->avformat, SONVALE_AVFORMAT_SONAME, "libavformat.so");
  LFFmpegApi& api = libs->api;
#define SONVALE_BIND(lib) [&](auto& f, const char* name) { bind(libs->lib, f, name); }
  auto fromAvutil = SONVALE_BIND(avutil);
  auto fromSwresample = SONVALE_BIND(swresample);
  auto fromAvcodec = SONVALE_BIND(avcodec);
  auto fromAvformat = SONVALE_BIND(avformat);
#undef SONVALE_BIND
#define SONVALE_AVUTIL(name) fromAvutil(api.name, #name);
#define SONVALE_SWRESAMPLE(name) fromSwresample(api.name, #name);
#define SONVALE_AVCODEC(name) fromAvcodec(api.name, #name);
#define SONVALE_AVFORMAT(name) fromAvformat(api.name, #name);
  SONVALE_AVUTIL_FUNCTIONS(SONVALE_AVUTIL)
  SONVALE_SWRESAMPLE_FUNCTIONS(SONVALE_SWRESAMPLE)
  SONVALE_AVCODEC_FUNCTIONS(SONVALE_AVCODEC)
  SONVALE_AVFORMAT_FUNCTIONS(SONVALE_AVFORMAT)
#undef SONVALE_AVUTIL
#undef SONVALE_SWRESAMPLE
#undef SONVALE_AVCODEC
#undef SONVALE_AVFORMAT
  return libs;
}

Libraries* gLibraries = nullptr;
std::once_flag gOnce;

}  // namespace

const LFFmpegApi* LFFmpegApi::loaded = nullptr;

bool LFFmpegApi::Load() {
  std::call_once(gOnce, [] {
    gLibraries = Bind();
    if (gLibraries->error.empty()) loaded = &gLibraries->api;
  });
  return loaded != nullptr;
}

const char* LFFmpegApi::Error() {
  (void)Load();
  return gLibraries->error.c_str();
}

#endif
