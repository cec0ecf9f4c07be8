#include "audio/pulse_api.h"

#ifdef SONVALE_HAVE_PULSE

#include <mutex>

#include "base/shared_library.h"

namespace {

// Kept to the end of the process: a stream's thread may still be running.
LSharedLibrary* gLibrary = nullptr;
LPulseApi gApi;

}  // namespace

const LPulseApi* LPulseApi::loaded = nullptr;

bool LPulseApi::Load() {
  static std::once_flag once;
  std::call_once(once, [] {
    gLibrary = new LSharedLibrary;
    bool ok = gLibrary->Load(SONVALE_PULSE_SONAME, "libpulse.so");
#define SONVALE_PULSE_BIND(name) ok = ok && gLibrary->Bind(gApi.name, #name);
    SONVALE_PULSE_FUNCTIONS(SONVALE_PULSE_BIND)
#undef SONVALE_PULSE_BIND
    if (ok) loaded = &gApi;
  });
  return loaded != nullptr;
}

#endif
