#include "formats/lame_api.h"

#ifdef SONVALE_HAVE_LAME

#include <mutex>

#include "base/shared_library.h"

namespace {

struct Library {
  LSharedLibrary lame;
  LLameApi api;
  std::string error;
};

// Stays loaded to the end of the process, as encoders may be open anywhere.
Library* gLibrary = nullptr;
std::once_flag gOnce;

}  // namespace

const LLameApi* LLameApi::loaded = nullptr;

bool LLameApi::Load() {
  std::call_once(gOnce, [] {
    gLibrary = new Library;
    bool ok = gLibrary->lame.Load(SONVALE_LAME_SONAME, "libmp3lame.so");
#define SONVALE_LAME_BIND(name) ok = ok && gLibrary->lame.Bind(gLibrary->api.name, #name);
    SONVALE_LAME_FUNCTIONS(SONVALE_LAME_BIND)
#undef SONVALE_LAME_BIND
    if (ok) {
      loaded = &gLibrary->api;
    } else {
      gLibrary->error = gLibrary->lame.Error();
    }
  });
  return loaded != nullptr;
}

const char* LLameApi::Error() {
  (void)Load();
  return gLibrary->error.c_str();
}

#endif
