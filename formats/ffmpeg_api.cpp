#include "formats/ffmpeg_api.h"

#ifdef SONVALE_HAVE_FFMPEG

#include <mutex>

#include "base/shared_library.h"

namespace {

// Kept to the end of the process: decoders and encoders may be open anywhere.
struct Libraries {
  LSharedLibrary avutil, swresample, avcodec, avformat;
};
Libraries* gLibraries = nullptr;
LFFmpegApi gApi;

bool Bind() {
  gLibraries = new Libraries;
  Libraries& libs = *gLibraries;
  // Each library before the ones that use it.
  bool ok = libs.avutil.Load(SONVALE_AVUTIL_SONAME, "libavutil.so") &&
            libs.swresample.Load(SONVALE_SWRESAMPLE_SONAME, "libswresample.so") &&
            libs.avcodec.Load(SONVALE_AVCODEC_SONAME, "libavcodec.so") &&
            libs.avformat.Load(SONVALE_AVFORMAT_SONAME, "libavformat.so");
#define SONVALE_FROM_AVUTIL(name) ok = ok && libs.avutil.Bind(gApi.name, #name);
#define SONVALE_FROM_SWRESAMPLE(name) ok = ok && libs.swresample.Bind(gApi.name, #name);
#define SONVALE_FROM_AVCODEC(name) ok = ok && libs.avcodec.Bind(gApi.name, #name);
#define SONVALE_FROM_AVFORMAT(name) ok = ok && libs.avformat.Bind(gApi.name, #name);
  SONVALE_AVUTIL_FUNCTIONS(SONVALE_FROM_AVUTIL)
  SONVALE_SWRESAMPLE_FUNCTIONS(SONVALE_FROM_SWRESAMPLE)
  SONVALE_AVCODEC_FUNCTIONS(SONVALE_FROM_AVCODEC)
  SONVALE_AVFORMAT_FUNCTIONS(SONVALE_FROM_AVFORMAT)
#undef SONVALE_FROM_AVUTIL
#undef SONVALE_FROM_SWRESAMPLE
#undef SONVALE_FROM_AVCODEC
#undef SONVALE_FROM_AVFORMAT
  return ok;
}

}  // namespace

const LFFmpegApi* LFFmpegApi::loaded = nullptr;

bool LFFmpegApi::Load() {
  static std::once_flag once;
  std::call_once(once, [] {
    if (Bind()) loaded = &gApi;
  });
  return loaded != nullptr;
}

#endif
