#include "formats/lame_api.h"

#ifdef SONVALE_HAVE_LAME

#include <mutex>

#include "base/shared_library.h"

namespace {

// Kept to the end of the process: encoders may be open anywhere.
LSharedLibrary* gLibrary = nullptr;
LLameApi gApi;

}  // namespace

const LLameApi* LLameApi::loaded = nullptr;

bool LLameApi::Load() {
  static std::once_flag once;
  std::call_once(once, [] {
    gLibrary = new LSharedLibrary;
    bool ok = gLibrary->Load(SONVALE_LAME_SONAME, "libmp3lame.so");
#define SONVALE_LAME_BIND(name) ok = ok && gLibrary->Bind(gApi.name, #name);
    SONVALE_LAME_FUNCTIONS(SONVALE_LAME_BIND)
#undef SONVALE_LAME_BIND
    if (ok) loaded = &gApi;
  });
  return loaded != nullptr;
}

#endif
