#include "audio/alsa_api.h"

#ifdef SONVALE_HAVE_ALSA

#include <mutex>

#include "base/shared_library.h"

namespace {

// Kept to the end of the process: a stream's thread may still be running.
LSharedLibrary* gLibrary = nullptr;
LAlsaApi gApi;

}  // namespace

const LAlsaApi* LAlsaApi::loaded = nullptr;

bool LAlsaApi::Load() {
  static std::once_flag once;
  std::call_once(once, [] {
    gLibrary = new LSharedLibrary;
    bool ok = gLibrary->Load(SONVALE_ASOUND_SONAME, "libasound.so");
#define SONVALE_ALSA_BIND(name) ok = ok && gLibrary->Bind(gApi.name, #name);
    SONVALE_ALSA_FUNCTIONS(SONVALE_ALSA_BIND)
#undef SONVALE_ALSA_BIND
    if (ok) loaded = &gApi;
  });
  return loaded != nullptr;
}

#endif
