#include "base/shared_library.h"

#include <cstring>
#include <dlfcn.h>

#include "base/environment.h"

namespace {

// True when the variable names a prefix of name.
bool HiddenByEnvironment(const char* name) {
  const char* list = LEnvironmentGet("SONVALE_MISSING_LIBRARIES");
  if (!list) return false;
  while (*list) {
    const char* end = std::strchr(list, ':');
    const std::size_t n = end ? static_cast<std::size_t>(end - list) : std::strlen(list);
    if (n > 0 && std::strncmp(name, list, n) == 0) return true;
    if (!end) break;
    list = end + 1;
  }
  return false;
}

void* Open(const char* name) {
  if (!name || !*name || HiddenByEnvironment(name)) return nullptr;
  // Local: the symbols of one component never stand in for another's.
  return dlopen(name, RTLD_NOW | RTLD_LOCAL);
}

}  // namespace

LSharedLibrary::~LSharedLibrary() {
  if (handle_) dlclose(handle_);
}

bool LSharedLibrary::Load(const char* name, const char* fallback) {
  if (handle_) return true;
  name_ = name ? name : "";
  handle_ = Open(name);
  if (!handle_) handle_ = Open(fallback);
  if (!handle_) error_ = "Die Bibliothek \"" + name_ + "\" kann nicht geladen werden. Ist sie installiert?";
  return handle_ != nullptr;
}

void* LSharedLibrary::Symbol(const char* function) {
  void* address = handle_ && function ? dlsym(handle_, function) : nullptr;
  if (!address) {
    error_ = "Der Bibliothek \"" + name_ + "\" fehlt die Funktion \"" + (function ? function : "") + "\".";
  }
  return address;
}
