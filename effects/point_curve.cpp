#include "effects/point_curve.h"

#include <cstdio>

#include "base/string_long.h"

void LSPPointLabel(char* out, double x, const char* unit) {
  std::snprintf(out, kLPathMax, "%g %s", x, unit);
  // As Germans write it: "31,5 Hz".
  for (char* c = out; *c; ++c)
    if (*c == '.') *c = ',';
}
