#include "base/environment.h"

#include <cstdlib>

extern char** environ;

const char* LEnvironmentGet(const char* name) { return name ? std::getenv(name) : nullptr; }

char* const* LEnvironmentVariables() { return environ; }
